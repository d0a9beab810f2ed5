#include "ox/formats/ldif/ldif_writer.hpp"

#include <algorithm>
#include <optional>

#include "ox/base/base64.hpp"
#include "ox/base/date.hpp"
#include "ox/formats/ldif/attribute_names.hpp"
#include "ox/formats/ldif/distinguished_name.hpp"
#include "ox/formats/person/labels.hpp"

namespace ox::formats {
namespace {

constexpr std::size_t kLineBytes = 76;

// RFC 2849: what may stand behind a single colon.
bool isSafe(std::string_view value) {
  if (value.empty()) return true;
  const auto first = value.front();
  if (first == ' ' || first == ':' || first == '<' || value.back() == ' ') return false;
  return std::ranges::all_of(value, [](char c) {
    return static_cast<unsigned char>(c) < 0x80U && c != '\0' && c != '\n' && c != '\r';
  });
}

// An entry in the making.
class Entry {
 public:
  Entry() : text_("\n") {}

  void add(std::string_view name, std::string_view value) {
    if (isSafe(value)) {
      fold(std::string(name).append(value.empty() ? ":" : ": ").append(value));
    } else {
      addBytes(name, value);
    }
  }

  void addBytes(std::string_view name, std::string_view bytes) {
    fold(std::string(name).append(":: ").append(base64(bytes)));
  }

  // Nothing of an empty value.
  void addText(std::string_view name, std::string_view value) {
    if (!value.empty()) add(name, value);
  }

  std::string& text() { return text_; }

 private:
  void fold(std::string_view line) {
    auto room = kLineBytes;
    while (line.size() > room) {
      text_.append(line.substr(0, room)).append("\n ");
      line.remove_prefix(room);
      room = kLineBytes - 1;
    }
    text_.append(line) += '\n';
  }

  std::string text_;
};

const FieldEntry* firstOf(const PersonFields& person, Kind kind) {
  const auto found = std::ranges::find(person.entries, kind, &FieldEntry::kind);
  return found == person.entries.end() ? nullptr : &*found;
}

// An entry has to have a name; what stands for one here is known again by its other attribute.
std::string commonNameOf(const PersonFields& person) {
  if (!person[Single::FullName].empty()) return person[Single::FullName];
  std::string name = person[Single::First];
  if (!name.empty() && !person[Single::Last].empty()) name += ' ';
  name += person[Single::Last];
  if (name.empty()) name = person[Single::Organization];
  if (name.empty()) name = person[Single::Nickname];
  if (const auto* email = firstOf(person, Kind::Email); name.empty() && email != nullptr) {
    name = (*email)[Part::Value];
  }
  return name.empty() ? "?" : name;
}

void addNames(const PersonFields& person, Entry& entry) {
  const auto name = commonNameOf(person);
  entry.add("cn", name);
  entry.add("sn", person[Single::Last].empty() ? name : person[Single::Last]);
  std::string_view written = "sn";
  auto last = Single::Last;
  for (const auto& row : kSingleAttributes) {
    if (row.single == last) continue;
    last = row.single;
    written = row.name;
    entry.addText(written, person[row.single]);
  }
}

std::string_view attributeOf(const FieldEntry& entry, std::size_t number) {
  if (entry.kind == Kind::Email) return number == 1 ? "mozillaSecondEmail" : "mail";
  std::string_view first;
  for (const auto& row : kEntryAttributes) {
    if (row.kind != entry.kind) continue;
    if (first.empty()) first = row.name;
    if (row.label == entry.label && !row.label.empty()) return row.name;
  }
  return first;
}

// The URI, a blank and its label (RFC 2079): a blank of the URI's own stands as %20.
std::string labeledUri(const FieldEntry& entry) {
  std::string text;
  for (const char c : entry[Part::Value]) {
    if (c == ' ') {
      text += "%20";
    } else {
      text += c;
    }
  }
  const auto word = wordOfLabel(entry.label);
  return word.empty() ? text : text.append(" ").append(word);
}

void addEntries(const PersonFields& person, Entry& out) {
  std::array<std::size_t, kKinds> counts{};
  for (const auto& entry : person.entries) {
    const auto number = counts[static_cast<std::size_t>(entry.kind)]++;
    switch (entry.kind) {
      case Kind::Email:
      case Kind::Phone:
        out.addText(attributeOf(entry, number), entry[Part::Value]);
        break;
      case Kind::Url: {
        const auto name = attributeOf(entry, number);
        out.addText(name, name == "labeledURI" ? labeledUri(entry) : entry[Part::Value]);
        break;
      }
      case Kind::Message:
        if (entry[Part::Service] == kABInstantMessageServiceAIM) {
          out.addText("nsAIMid", entry[Part::User]);
        }
        break;
      default:
        break;
    }
  }
}

void addAddress(const FieldEntry& address, std::string_view label, Entry& out) {
  auto last = Part::Value;
  for (const auto& row : kAddressAttributes) {
    if (row.label != label || row.part == last || row.part == Part::Value) continue;
    last = row.part;
    out.addText(row.name, address[row.part]);
  }
}

// One at home and one elsewhere: there are no attributes for more.
void addAddresses(const PersonFields& person, Entry& out) {
  bool hasHome = false;
  bool hasWork = false;
  for (const auto& entry : person.entries) {
    if (entry.kind != Kind::Address) continue;
    const bool isHome = entry.label == kABHomeLabel;
    auto& has = isHome ? hasHome : hasWork;
    if (has) continue;
    has = true;
    addAddress(entry, isHome ? kABHomeLabel : kABWorkLabel, out);
  }
}

void addBirthday(const PersonFields& person, Entry& out) {
  const auto date = Date::fromText(person[Single::Birthday]);
  if (!date) return;
  Date yearAlone;
  yearAlone.year = date->year;
  if (date->year) out.add("birthyear", yearAlone.toText());
  if (date->month) out.add("birthmonth", std::to_string(unsigned{*date->month}));
  if (date->day) out.add("birthday", std::to_string(unsigned{*date->day}));
}

}  // namespace

std::string ldifOf(const PersonFields& person) {
  Entry entry;
  entry.add("dn", nameOfUid(person[Single::Uid]));
  for (const auto* name :
       {"top", "person", "organizationalPerson", "inetOrgPerson", "mozillaAbPersonAlpha"}) {
    entry.add("objectClass", name);
  }
  addNames(person, entry);
  addEntries(person, entry);
  addAddresses(person, entry);
  addBirthday(person, entry);
  constexpr std::string_view kJpeg = "\xFF\xD8\xFF";
  if (person.photo && person.photo->starts_with(kJpeg)) {
    entry.addBytes("jpegPhoto", *person.photo);
  }
  return std::move(entry.text());
}

std::string ldifOf(const GroupFields& group) {
  Entry entry;
  entry.add("dn", nameOfUid(group.uid));
  entry.add("objectClass", "top");
  entry.add("objectClass", "groupOfNames");
  entry.add("cn", group.name.empty() ? "?" : group.name);
  for (const auto& member : group.members) entry.add("member", nameOfUid(member));
  // The class wants one at least.
  if (group.members.empty()) entry.add("member", "");
  return std::move(entry.text());
}

}  // namespace ox::formats
