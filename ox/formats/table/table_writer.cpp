#include "ox/formats/table/table_writer.hpp"

#include <algorithm>
#include <span>

#include "ox/formats/person/labels.hpp"
#include "ox/formats/table/joined_cells.hpp"

namespace ox::formats {
namespace {

struct SingleColumn {
  std::string_view name;
  Single single;
};

// The names that column_names.cpp reads. The entries stand between the two lists.
constexpr std::array kFront = {
    SingleColumn{"Full Name", Single::FullName},
    SingleColumn{"Prefix", Single::Prefix},
    SingleColumn{"First Name", Single::First},
    SingleColumn{"Middle Name", Single::Middle},
    SingleColumn{"Last Name", Single::Last},
    SingleColumn{"Suffix", Single::Suffix},
    SingleColumn{"Phonetic First Name", Single::FirstReading},
    SingleColumn{"Phonetic Middle Name", Single::MiddleReading},
    SingleColumn{"Phonetic Last Name", Single::LastReading},
    SingleColumn{"Nickname", Single::Nickname},
    SingleColumn{"Maiden Name", Single::MaidenName},
    SingleColumn{"Organization", Single::Organization},
    SingleColumn{"Department", Single::Department},
    SingleColumn{"Job Title", Single::JobTitle},
    SingleColumn{"Birthday", Single::Birthday},
};
constexpr std::array kBack = {
    SingleColumn{"Note", Single::Note},
    SingleColumn{"UID", Single::Uid},
};

struct PartColumn {
  std::string_view name;
  Part part;
};
constexpr std::array kValue = {PartColumn{"Value", Part::Value}};
constexpr std::array kName = {PartColumn{"Name", Part::Value}};
constexpr std::array kAddress = {
    PartColumn{"Street", Part::Street},     PartColumn{"PO Box", Part::Box},
    PartColumn{"Extended", Part::Extended}, PartColumn{"City", Part::City},
    PartColumn{"State", Part::State},       PartColumn{"ZIP", Part::Zip},
    PartColumn{"Country", Part::Country},   PartColumn{"Country Code", Part::CountryCode}};
constexpr std::array kMessage = {PartColumn{"Service", Part::Service},
                                 PartColumn{"User", Part::User}};
constexpr std::array kProfile = {PartColumn{"Service", Part::Service},
                                 PartColumn{"User", Part::User},
                                 PartColumn{"User ID", Part::UserId}, PartColumn{"URL", Part::Url}};

struct KindColumns {
  Kind kind;
  std::string_view name;
  std::span<const PartColumn> parts;
};
constexpr std::array kEntries = {
    KindColumns{Kind::Email, "Email", kValue},
    KindColumns{Kind::Phone, "Phone", kValue},
    KindColumns{Kind::Address, "Address", kAddress},
    KindColumns{Kind::Url, "URL", kValue},
    KindColumns{Kind::Message, "Message", kMessage},
    KindColumns{Kind::Profile, "Profile", kProfile},
    KindColumns{Kind::Related, "Related", kName},
    KindColumns{Kind::Date, "Date", kValue},
};

// Blanks at the ends are quoted too, since some readers take them off.
bool needsQuotes(std::string_view cell) {
  if (cell.empty()) return false;
  return cell.find_first_of(",;\"\t\r\n") != cell.npos || cell.front() == ' ' || cell.back() == ' ';
}

// Cells with commas between them.
class Row {
 public:
  void add(std::string_view cell) {
    if (!isFirst_) text_ += ',';
    isFirst_ = false;
    if (!needsQuotes(cell)) {
      text_ += cell;
      return;
    }
    text_ += '"';
    for (const char c : cell) text_.append(c == '"' ? 2 : 1, c);
    text_ += '"';
  }

  std::string end() { return std::move(text_.append("\r\n")); }

 private:
  std::string text_;
  bool isFirst_ = true;
};

std::vector<const FieldEntry*> entriesOf(const PersonFields& person, Kind kind) {
  std::vector<const FieldEntry*> entries;
  for (const auto& entry : person.entries) {
    if (entry.kind == kind) entries.push_back(&entry);
  }
  return entries;
}

std::string labelCell(const FieldEntry& entry) {
  auto word = wordOfLabel(entry.label);
  if (!entry.isMain) return word.starts_with('*') ? "*" + word : word;
  return word.empty() ? "*" : "* " + word;
}

void addEntry(const FieldEntry* entry, const KindColumns& columns, Row& row) {
  row.add(entry != nullptr ? labelCell(*entry) : std::string());
  for (const auto& column : columns.parts) {
    row.add(entry != nullptr ? (*entry)[column.part] : std::string());
  }
}

}  // namespace

void TableWriter::count(const PersonFields& person) {
  for (const auto& columns : kEntries) {
    auto& most = counts_[static_cast<std::size_t>(columns.kind)];
    most = std::max(most, entriesOf(person, columns.kind).size());
  }
}

std::string TableWriter::header() const {
  Row row;
  for (const auto& column : kFront) row.add(column.name);
  for (const auto& columns : kEntries) {
    for (std::size_t i = 1; i <= counts_[static_cast<std::size_t>(columns.kind)]; ++i) {
      const auto front = std::string(columns.name) + " " + std::to_string(i) + " - ";
      row.add(front + "Label");
      for (const auto& part : columns.parts) row.add(front + std::string(part.name));
    }
  }
  row.add("Tags");
  for (const auto& column : kBack) row.add(column.name);
  return row.end();
}

std::string TableWriter::row(const PersonFields& person) const {
  Row row;
  for (const auto& column : kFront) row.add(person[column.single]);
  for (const auto& columns : kEntries) {
    const auto entries = entriesOf(person, columns.kind);
    for (std::size_t i = 0; i < counts_[static_cast<std::size_t>(columns.kind)]; ++i) {
      addEntry(i < entries.size() ? entries[i] : nullptr, columns, row);
    }
  }
  row.add(joinedTags(person.tags));
  for (const auto& column : kBack) row.add(person[column.single]);
  return row.end();
}

}  // namespace ox::formats
