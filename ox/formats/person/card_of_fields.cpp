// The card of a person that is imported.
#include <array>
#include <string_view>
#include <utility>

#include "ox/formats/person/person_fields.hpp"
#include "ox/formats/person/stored_fields.hpp"
#include "ox/records/card_uid.hpp"
#include "ox/vcard/lines/ascii.hpp"
#include "ox/vcard/lines/line_writer.hpp"
#include "ox/vcard/properties/card_date.hpp"
#include "ox/vcard/read/card_builder.hpp"

namespace ox::formats {
namespace {

using vcard::LineWriter;

// With line breaks as records have them, and no other control characters.
std::string plain(std::string_view text) {
  return std::string(vcard::CardText(text).view());
}

// Gives a reader of cards the lines of a text.
void addLines(std::string_view text, std::size_t number, vcard::CardBuilder& builder) {
  constexpr std::string_view kBreak = "\r\n";
  while (!text.empty()) {
    const auto whole = text.substr(0, text.find(kBreak));
    text.remove_prefix(whole.size() + kBreak.size());
    vcard::ContentLine line;
    const auto colon = parseHead(whole, line);
    line.value = whole.substr(colon + 1);
    line.number = number;
    builder.add(line);
  }
}

// The parts of a name and the whole depend on each other, and tags on who takes them: those are
// read as from a card.
std::string namesAndTags(const PersonFields& fields) {
  constexpr std::array kParts = {Single::Last, Single::First, Single::Middle, Single::Prefix,
                                 Single::Suffix};
  std::string text;
  LineWriter line(text, vcard::Folding::No);
  bool hasParts = false;
  for (const auto part : kParts) hasParts |= !fields[part].empty();
  if (hasParts) {
    std::string_view separator = "N:";
    for (const auto part : kParts) {
      line.raw(separator).text(plain(fields[part]));
      separator = ";";
    }
    line.end();
  }
  if (!fields[Single::FullName].empty()) {
    line.raw("FN:").text(plain(fields[Single::FullName])).end();
  }
  // A formatted name that is the organization's is no name of the person.
  if (!fields[Single::Organization].empty()) {
    line.raw("ORG:").text(plain(fields[Single::Organization])).end();
  }
  std::string_view separator = "CATEGORIES:";
  for (const auto& tag : fields.tags) {
    line.raw(separator).text(plain(tag));
    separator = ",";
  }
  if (!fields.tags.empty()) line.end();
  return text;
}

bool isOfName(Single single) {
  return single >= Single::Prefix && single <= Single::Suffix;
}

// A record in the making.
class Filling {
 public:
  Filling(const PersonFields& fields, vcard::Card& card)
      : fields_(fields), card_(card), others_(fields.others) {}

  void fill() {
    for (const auto& [single, property] : storedSingles()) {
      if (isOfName(single) || single == Single::Note || fields_[single].empty()) continue;
      set(property, plain(fields_[single]));
    }
    const auto birthday = dateOf(fields_[Single::Birthday], "Birthday");
    if (birthday) card_.properties.set(property_id::kBirthday, Object(*birthday));
    for (const auto& row : storedKinds()) addEntries(row);
    addNote();
    card_.photo = fields_.photo;
  }

 private:
  void set(PropertyId property, std::string text) {
    if (saysNothing(text)) return;
    card_.properties.set(property, Object(std::move(text)));
  }

  std::optional<Date> dateOf(const std::string& text, std::string_view name) {
    if (text.empty()) return std::nullopt;
    const auto read = vcard::readCardDate(text, {});
    if (read) return read->date;
    repaired(std::string(name) + " is no readable date, kept in the note");
    others_.push_back(std::string(name) + ": " + text);
    return std::nullopt;
  }

  void repaired(std::string reason) { card_.repairs.push_back({card_.line, std::move(reason)}); }

  void addEntries(const StoredKind& row) {
    auto multi = std::make_shared<MultiValue>();
    for (const auto& entry : fields_.entries) {
      if (entry.kind != row.kind) continue;
      auto value = valueOf(entry);
      if (value.isMissing()) continue;
      const auto identifier = multi->entries.size() + 1;
      const auto label = plain(entry.label);
      multi->entries.push_back(
          {identifier, label.empty() ? Text() : Text(label), std::move(value)});
      if (entry.isMain && multi->primary == 0) multi->primary = identifier;
    }
    if (!multi->entries.empty())
      card_.properties.set(row.property, MultiValuePtr(std::move(multi)));
  }

  // Missing when there is nothing to hold.
  Object valueOf(const FieldEntry& entry) {
    const auto parts = partsOf(entry.kind);
    if (!parts.empty()) return dictionaryOf(entry, parts);
    auto text = plain(entry[Part::Value]);
    if (saysNothing(text)) return {};
    if (entry.kind != Kind::Date) return Object(std::move(text));
    const auto date = dateOf(text, entry.label.empty() ? "Date" : entry.label);
    return date ? Object(*date) : Object();
  }

  static Object dictionaryOf(const FieldEntry& entry, std::span<const StoredPart> parts) {
    Dictionary dictionary;
    for (const auto& [part, key] : parts) {
      auto text = plain(part == Part::Street ? wholeStreet(entry) : entry[part]);
      if (!text.empty()) dictionary.set(key, std::move(text));
    }
    return dictionary.empty() ? Object() : Object(std::move(dictionary));
  }

  static std::string wholeStreet(const FieldEntry& entry) {
    std::string street;
    for (const auto part : {Part::Box, Part::Extended, Part::Street}) {
      if (entry[part].empty()) continue;
      if (!street.empty()) street += '\n';
      street += entry[part];
    }
    return street;
  }

  void addNote() {
    auto note = plain(fields_[Single::Note]);
    for (const auto& other : others_) {
      if (!note.empty()) note += '\n';
      note += plain(other);
    }
    set(property_id::kNote, std::move(note));
  }

  const PersonFields& fields_;
  vcard::Card& card_;
  std::vector<std::string> others_;
};

}  // namespace

vcard::Card cardOf(const PersonFields& fields, std::size_t line) {
  vcard::CardBuilder builder;
  builder.start(line, {.hasVersion = true, .is40 = true});
  addLines(namesAndTags(fields), line, builder);
  auto card = builder.finish();
  Filling(fields, card).fill();
  return card;
}

vcard::Card cardOf(const GroupFields& group, std::size_t line) {
  vcard::Card card;
  card.isGroup = true;
  card.line = line;
  card.properties.set(property_id::kGroupName, Object(plain(group.name)));
  if (!group.uid.empty()) card.properties.set(property_id::kCardUid, Object(plain(group.uid)));
  for (const auto& member : group.members) {
    const auto uid = plain(member);
    if (!saysNothing(uid)) card.members.emplace_back(uidKey(uid));
  }
  return card;
}

}  // namespace ox::formats
