#include "ox/formats/table/columns.hpp"

#include <algorithm>
#include <array>
#include <utility>

#include "ox/base/text/ascii_case.hpp"
#include "ox/formats/person/labels.hpp"
#include "ox/formats/person/stored_fields.hpp"
#include "ox/formats/table/joined_cells.hpp"
#include "ox/vcard/lines/ascii.hpp"
#include "ox/vcard/lines/line_writer.hpp"

namespace ox::formats {
namespace {

using What = ColumnMeaning::What;
using Joined = ColumnMeaning::Joined;

constexpr std::array<std::string_view, kSingles> kSingleWords = {"full name",
                                                                 "prefix",
                                                                 "first name",
                                                                 "middle name",
                                                                 "last name",
                                                                 "suffix",
                                                                 "phonetic first name",
                                                                 "phonetic middle name",
                                                                 "phonetic last name",
                                                                 "nickname",
                                                                 "maiden name",
                                                                 "organization",
                                                                 "department",
                                                                 "job title",
                                                                 "birthday",
                                                                 "note",
                                                                 "UID"};
constexpr std::array<std::string_view, kKinds> kKindWords = {
    "email", "phone", "address", "URL", "message", "profile", "related name", "date"};
constexpr std::array<std::string_view, kParts> kPartWords = {
    "",        "street",       "PO box",  "extension", "city",    "state", "ZIP",
    "country", "country code", "service", "user",      "user ID", "URL"};

// How programs write that there is no date.
bool isNoDate(std::string_view cell) {
  return std::ranges::all_of(
      cell, [](char c) { return c == '0' || c == '/' || c == '.' || c == '-' || c == ' '; });
}

bool isDate(const ColumnMeaning& meaning) {
  return meaning.what == What::Single ? meaning.single == Single::Birthday
                                      : meaning.what == What::Part && meaning.kind == Kind::Date;
}

// A mark before the label of an entry tells that it is the main one; a label that begins with such
// a star itself has one more.
void takeLabel(std::string_view cell, FieldEntry& entry) {
  const vcard::CardText plain(cell);
  auto word = vcard::trimmed(plain.view());
  const bool isMarked = word == "*" || word.starts_with("* ");
  entry.isMain |= isMarked;
  if (isMarked || word.starts_with("**")) word.remove_prefix(1);
  entry.label = labelOfWord(word);
}

void append(std::string_view cell, std::string& text) {
  if (!text.empty()) text += '\n';
  text += cell;
}

bool namesPerson(const ColumnMeaning& meaning) {
  if (meaning.what == What::Single) return meaning.single <= Single::Organization;
  return meaning.what == What::Part && (meaning.kind == Kind::Email || meaning.kind == Kind::Phone);
}

}  // namespace

Columns::Columns(const std::vector<std::string>& header) {
  bool hasJobTitle = false;
  for (const auto& name : header) {
    const auto column = columnOfName(name);
    columns_.push_back({name, column.meaning, entryFor(column)});
    areOfGoogle_ |= column.meaning.isOfGoogle;
    areKnown_ |= namesPerson(column.meaning);
    hasJobTitle |= column.meaning.what == What::Single && column.meaning.single == Single::JobTitle;
  }
  // Where nothing else tells the position, "Title" does.
  for (auto& column : columns_) {
    if (!hasJobTitle && lowerCase(vcard::trimmed(column.name)) == "title") {
      column.meaning.single = Single::JobTitle;
    }
  }
}

std::size_t Columns::entryFor(const NamedColumn& column) {
  const auto& meaning = column.meaning;
  if (meaning.what != What::Label && meaning.what != What::Part) return 0;
  const auto number = meaning.joined == Joined::Lines ? 0 : column.number;
  const auto known = std::ranges::find_if(entries_, [&](const Entry& entry) {
    return entry.kind == meaning.kind && entry.label == meaning.label && entry.number == number;
  });
  if (known != entries_.end()) return static_cast<std::size_t>(known - entries_.begin());
  entries_.push_back({meaning.kind, meaning.label, number});
  return entries_.size() - 1;
}

std::vector<PropertyId> Columns::properties() const {
  std::vector<PropertyId> properties;
  const auto add = [&](PropertyId property) {
    if (std::ranges::find(properties, property) == properties.end()) properties.push_back(property);
  };
  for (const auto& column : columns_) {
    const auto& meaning = column.meaning;
    if (meaning.what == What::Part) add(propertyOf(meaning.kind));
    if (meaning.what == What::Single) {
      if (const auto property = propertyOf(meaning.single)) add(*property);
    }
  }
  return properties;
}

std::string Columns::whatBecomesOf(const Column& column) const {
  const auto& meaning = column.meaning;
  const auto kind = std::string(kKindWords[static_cast<std::size_t>(meaning.kind)]);
  switch (meaning.what) {
    case What::Single:
      return std::string(kSingleWords[static_cast<std::size_t>(meaning.single)]);
    case What::Tags:
      return "tags";
    case What::Label:
      return kind + " label";
    case What::Part:
      break;
    case What::LeftOut:
      return "left out";
    case What::Unknown:
      return "unknown, a line in the note";
  }
  const auto part = kPartWords[static_cast<std::size_t>(meaning.part)];
  const auto what = part.empty() ? kind : kind + " " + std::string(part);
  return meaning.label.empty() ? what : what + " (" + wordOfLabel(meaning.label) + ")";
}

PersonFields Columns::fieldsOf(const std::vector<std::string>& cells) const {
  PersonFields fields;
  std::vector<FieldEntry> entries(entries_.size());
  for (std::size_t i = 0; i < entries.size(); ++i) {
    entries[i].kind = entries_[i].kind;
    entries[i].label = entries_[i].label;
  }
  for (std::size_t i = 0; i < cells.size(); ++i) {
    if (vcard::trimmed(cells[i]).empty()) continue;
    if (i < columns_.size()) {
      takeCell(columns_[i], cells[i], fields, entries);
    } else {
      fields.others.push_back(cells[i]);
    }
  }
  for (auto& entry : entries) addEntry(std::move(entry), fields);
  return fields;
}

void Columns::takeCell(const Column& column, const std::string& cell, PersonFields& fields,
                       std::vector<FieldEntry>& entries) const {
  const auto& meaning = column.meaning;
  if (isDate(meaning) && isNoDate(cell)) return;
  switch (meaning.what) {
    case What::Unknown:
      return fields.others.push_back(column.name + ": " + cell);
    case What::LeftOut:
      return;
    case What::Tags:
      return addTags(cell, fields);
    case What::Single: {
      auto& text = fields[meaning.single];
      // A second column for the same must not take the place of the first.
      if (text.empty()) {
        text = cell;
      } else if (text != cell) {
        fields.others.push_back(column.name + ": " + cell);
      }
      return;
    }
    case What::Label:
      return takeLabel(cell, entries[column.entry]);
    case What::Part:
      return append(cell, entries[column.entry][meaning.part]);
  }
}

// Google's tables join the values of one label, and tell each address as a whole too.
void Columns::addEntry(FieldEntry entry, PersonFields& fields) const {
  for (auto& each : areOfGoogle_ ? partedEntries(entry) : std::vector{std::move(entry)}) {
    if (each.kind == Kind::Address) {
      auto whole = std::exchange(each[Part::Value], {});
      if (each.isEmpty()) each[Part::Street] = std::move(whole);
    }
    if (!each.isEmpty()) fields.entries.push_back(std::move(each));
  }
}

// Names of Google's own groups begin with a mark; everybody is in one of them.
void Columns::addTags(std::string_view cell, PersonFields& fields) const {
  for (auto& tag : partedTags(cell)) {
    if (areOfGoogle_ && tag.starts_with("* ")) tag.erase(0, 2);
    if (areOfGoogle_ && (tag == "myContacts" || tag == "My Contacts")) continue;
    fields.tags.push_back(std::move(tag));
  }
}

}  // namespace ox::formats
