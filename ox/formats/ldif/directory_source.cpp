#include "ox/formats/ldif/directory_source.hpp"

#include <algorithm>
#include <array>
#include <utility>

#include "ox/base/date.hpp"
#include "ox/base/text/ascii_case.hpp"
#include "ox/formats/ldif/attribute_names.hpp"
#include "ox/formats/ldif/distinguished_name.hpp"
#include "ox/formats/person/labels.hpp"
#include "ox/vcard/lines/ascii.hpp"

namespace ox::formats {
namespace {

using vcard::isSameWord;

// What a directory says of its entry, and not of a person.
constexpr std::array<std::string_view, 14> kOfDirectory = {
    "objectclass",        "modifytimestamp",
    "createtimestamp",    "creatorsname",
    "modifiersname",      "entryuuid",
    "entrycsn",           "entrydn",
    "userpassword",       "structuralobjectclass",
    "subschemasubentry",  "hassubordinates",
    "mozillausehtmlmail", "xmozillausehtmlmail"};

bool isGroup(const LdifRecord& record) {
  return record.has("objectclass", "groupofnames") ||
         record.has("objectclass", "groupofuniquenames");
}

// A person in the making.
class Reading {
 public:
  explicit Reading(const LdifRecord& record) : record_(record) {}

  PersonFields fields() {
    home_.kind = work_.kind = Kind::Address;
    home_.label = kABHomeLabel;
    work_.label = kABWorkLabel;
    for (const auto& attribute : record_.attributes) {
      if (vcard::trimmed(attribute.value).empty()) continue;
      take(attribute);
    }
    for (auto* address : addresses_) addAddress(*address);
    addBirthday();
    dropStandIns();
    fields_[Single::Uid] = uidOfName(record_.dn);
    return std::move(fields_);
  }

  const std::vector<std::string>& unplaced() const { return unplaced_; }
  const std::vector<std::string>& leftOut() const { return leftOut_; }

 private:
  void take(const LdifAttribute& attribute) {
    const auto& [name, value] = attribute;
    const bool isPlaced = takeName(name, value) || takeSingle(name, value) ||
                          takeEntry(name, value) || takeAddress(name, value) ||
                          takeOther(name, value);
    if (isPlaced) return;
    if (std::ranges::find(kOfDirectory, name) != kOfDirectory.end()) {
      if (name == "userpassword") leftOut_.push_back(name);
      return;
    }
    unplaced_.push_back(name);
    fields_.others.push_back(name + ": " + value);
  }

  bool takeName(const std::string& name, const std::string& value) {
    if (name != "cn" && name != "commonname" && name != "displayname") return false;
    auto& full = fields_[Single::FullName];
    if (full.empty()) {
      full = value;
    } else if (full != value) {
      fields_.others.push_back(name + ": " + value);
    }
    return true;
  }

  bool takeSingle(const std::string& name, const std::string& value) {
    for (const auto& row : kSingleAttributes) {
      if (!isSameWord(name, row.name)) continue;
      auto& text = fields_[row.single];
      const bool isNote = row.single == Single::Note;
      if (text.empty()) {
        text = value;
      } else if (isNote) {
        text += "\n" + value;
      } else if (text != value) {
        fields_.others.push_back(name + ": " + value);
      }
      return true;
    }
    return false;
  }

  bool takeEntry(const std::string& name, const std::string& value) {
    for (const auto& row : kEntryAttributes) {
      if (!isSameWord(name, row.name)) continue;
      FieldEntry entry;
      entry.kind = row.kind;
      entry.label = row.label;
      if (row.kind == Kind::Message) {
        entry[Part::User] = value;
        entry[Part::Service] = row.service;
      } else if (row.name == "labeledURI") {
        const auto blank = value.find(' ');
        entry[Part::Value] = value.substr(0, blank);
        if (blank != std::string::npos) entry.label = labelOfWord(value.substr(blank));
      } else {
        entry[Part::Value] = value;
      }
      fields_.entries.push_back(std::move(entry));
      return true;
    }
    return false;
  }

  bool takeAddress(const std::string& name, const std::string& value) {
    for (const auto& row : kAddressAttributes) {
      if (!isSameWord(name, row.name)) continue;
      auto& address = row.label == kABHomeLabel ? home_ : work_;
      if (address.isEmpty()) addresses_.push_back(&address);
      // Some write the country's name where its code belongs.
      const bool isCode = row.part == Part::CountryCode && value.size() == 2;
      const auto part = row.part == Part::CountryCode && !isCode ? Part::Country : row.part;
      auto& text = address[part];
      if (!text.empty()) text += '\n';
      text += value;
      return true;
    }
    return false;
  }

  bool takeOther(const std::string& name, const std::string& value) {
    if (name == "jpegphoto") {
      fields_.photo = makeData(value);
    } else if (name == "birthyear") {
      year_ = value;
    } else if (name == "birthmonth") {
      month_ = value;
    } else if (name == "birthday") {
      day_ = value;
    } else if (name == "uid" && isNameOfUid(record_.dn)) {
      return true;
    } else {
      return false;
    }
    return true;
  }

  // A postal address (RFC 4517, section 3.3.28) tells as lines what the other attributes part.
  void addAddress(FieldEntry& address) {
    auto whole = std::exchange(address[Part::Value], {});
    std::ranges::replace(whole, '$', '\n');
    if (address[Part::Street].empty()) {
      address[Part::Street] = std::move(whole);
    } else if (!whole.empty() && whole != address[Part::Street]) {
      fields_.others.push_back("postalAddress: " + whole);
    }
    if (!address.isEmpty()) fields_.entries.push_back(std::move(address));
  }

  static std::string twoDigits(const std::string& number) {
    return number.size() == 1 ? "0" + number : number;
  }

  void addBirthday() {
    if (year_.empty() && month_.empty() && day_.empty()) return;
    auto text = year_.empty() ? "-" : year_;
    if (!month_.empty()) {
      text += "-" + twoDigits(month_);
    } else if (year_.empty()) {
      text += "-";
    }
    if (!day_.empty()) text += "-" + twoDigits(day_);
    fields_[Single::Birthday] = text;
  }

  // Every entry has cn and sn: our own writes something else there for a person who has none.
  void dropStandIns() {
    auto& full = fields_[Single::FullName];
    auto& last = fields_[Single::Last];
    if (last != full) return;
    if (!fields_[Single::First].empty()) last.clear();
    const bool isEmail = std::ranges::any_of(fields_.entries, [&](const FieldEntry& entry) {
      return entry.kind == Kind::Email && entry[Part::Value] == full;
    });
    const bool isOther =
        full == fields_[Single::Organization] || full == fields_[Single::Nickname] || full == "?";
    if (!isEmail && !isOther) return;
    full.clear();
    last.clear();
  }

  const LdifRecord& record_;
  PersonFields fields_;
  FieldEntry home_;
  FieldEntry work_;
  std::vector<FieldEntry*> addresses_;  // of both those that are there, in their order
  std::string year_;
  std::string month_;
  std::string day_;
  std::vector<std::string> unplaced_;
  std::vector<std::string> leftOut_;
};

std::vector<std::string> membersOf(const LdifRecord& record) {
  std::vector<std::string> members;
  for (const auto& [name, value] : record.attributes) {
    if (name != "member" && name != "uniquemember") continue;
    auto uid = uidOfName(value);
    if (!uid.empty()) members.push_back(std::move(uid));
  }
  return members;
}

std::vector<PropertyId> propertiesIn(const vcard::Card& card) {
  std::vector<PropertyId> properties;
  for (const auto& [id, value] : card.properties.entries()) {
    if (id <= property_id::kLastMulti) properties.push_back(id);
  }
  return properties;
}

}  // namespace

std::optional<vcard::CardResult> DirectorySource::next() {
  if (!reader_.next(record_)) {
    if (!reader_.hasBegun()) throw FormatError("is empty");
    return std::nullopt;
  }
  return cardOfRecord();
}

void DirectorySource::remarkAttribute(const std::string& name, std::string_view what) {
  if (!told_.insert(name).second) return;
  remark(record_.line, "attribute " + name + ": " + std::string(what));
}

vcard::CardResult DirectorySource::cardOfRecord() {
  if (record_.dn.empty() && record_.refusal.empty()) record_.refusal = "no dn in front";
  if (!record_.refusal.empty()) return vcard::Refusal{record_.line, record_.refusal};
  if (isGroup(record_)) {
    const auto* name = record_.find("cn");
    return cardOf(GroupFields{name != nullptr ? *name : std::string(), uidOfName(record_.dn),
                              membersOf(record_)},
                  record_.line);
  }
  Reading reading(record_);
  const auto fields = reading.fields();
  for (const auto& name : reading.unplaced()) {
    remarkAttribute(name, "not understood, kept as lines in the note");
  }
  for (const auto& name : reading.leftOut()) remarkAttribute(name, "left out");
  auto card = cardOf(fields, record_.line);
  named_ = std::make_shared<const std::vector<PropertyId>>(propertiesIn(card));
  for (const auto& name : record_.references) {
    card.repairs.push_back({record_.line, name + " refers to a file, which is not read"});
  }
  return card;
}

}  // namespace ox::formats
