#include "ox/formats/json/contact_rows.hpp"

#include <algorithm>
#include <array>

#include "ox/base/text/ascii_case.hpp"
#include "ox/formats/json/extended_date.hpp"
#include "ox/vcard/lines/ascii.hpp"
#include "ox/vcard/lines/name_table.hpp"
#include "ox/vcard/lines/structured_value.hpp"
#include "ox/vcard/lines/uri.hpp"

namespace ox::formats {
namespace {

using vcard::ContentLine;
using vcard::isWord;

struct Word {
  std::string_view text;
  std::string_view meaning;
};

// Writes an object of those words that the parameter has, each true, and takes them away.
template <typename Words>
void writeWords(std::string_view member, std::string_view parameter, const Words& words,
                ContactEntry& entry) {
  bool isOpen = false;
  for (const auto& word : words) {
    if (!entry.parameters.takeWord(parameter, word.text)) continue;
    if (!isOpen) {
      entry.out.writeName(member);
      entry.out.beginObject();
      isOpen = true;
    }
    entry.out.writeName(word.meaning);
    entry.out.writeBoolean(true);
  }
  if (isOpen) entry.out.endObject();
}

void writeTaken(std::string_view member, std::string_view parameter, ContactEntry& entry) {
  entry.out.writeMember(member, entry.parameters.take(parameter));
}

void writeNickname(ContactEntry& entry) {
  entry.out.writeMember("name", entry.text());
}

// SORT-AS has a word for each component.
void writeOrganization(ContactEntry& entry) {
  const auto parts = vcard::partsOf(entry.value, ';');
  const auto sortAs = entry.parameters.takeAll("sort-as");
  if (!parts[0].empty()) entry.out.writeMember("name", textOf(parts[0]));
  if (!sortAs.empty() && !parts[0].empty()) entry.out.writeMember("sortAs", sortAs[0]);
  if (parts.size() == 1) return;
  entry.out.writeName("units");
  entry.out.beginArray();
  for (std::size_t i = 1; i < parts.size(); ++i) {
    entry.out.beginObject();
    entry.out.writeMember("name", textOf(parts[i]));
    if (i < sortAs.size()) entry.out.writeMember("sortAs", sortAs[i]);
    entry.out.endObject();
  }
  entry.out.endArray();
}

void writeTitle(ContactEntry& entry) {
  entry.out.writeMember("name", entry.text());
  if (isWord(entry.line.name, "ROLE")) entry.out.writeMember("kind", "role");
}

void writePronouns(ContactEntry& entry) {
  entry.out.writeMember("pronouns", entry.text());
}

void writeEmail(ContactEntry& entry) {
  entry.out.writeMember("address", entry.text());
}

void writePhone(ContactEntry& entry) {
  constexpr std::array kFeatures = {
      Word{"voice", "voice"},         Word{"fax", "fax"},
      Word{"cell", "mobile"},         Word{"video", "video"},
      Word{"pager", "pager"},         Word{"text", "text"},
      Word{"textphone", "textphone"}, Word{"main-number", "main-number"}};
  entry.out.writeMember("number", entry.text());
  writeWords("features", "type", kFeatures, entry);
}

void writeService(ContactEntry& entry) {
  auto service = entry.parameters.take("service-type");
  if (!service) service = entry.parameters.take("x-service-type");
  entry.out.writeMember("service", service);
}

void writeMessage(ContactEntry& entry) {
  writeService(entry);
  entry.out.writeMember("uri", entry.text());
  writeTaken("user", "username", entry);
  entry.out.writeMember("vCardName", "impp");
}

void writeProfile(ContactEntry& entry) {
  writeService(entry);
  const bool isUser = entry.parameters.valueType() == "text";
  entry.out.writeMember(isUser ? "user" : "uri", entry.text());
  if (!isUser) writeTaken("user", "username", entry);
}

// Ours from before there was a standard one: its service is a TYPE, and the scheme x-apple: tells
// that there is no address of a page.
void writeSocialProfile(ContactEntry& entry) {
  const auto isPlace = [](const std::string& word) {
    const auto lower = lowerCase(word);
    return lower == "home" || lower == "work" || lower == "pref" || lower == "other";
  };
  auto words = entry.parameters;
  for (const auto& word : words.takeAll("type")) {
    if (isPlace(word)) continue;
    entry.out.writeMember("service", word);
    entry.parameters.takeWord("type", word);
    break;
  }
  const auto uri = entry.text();
  const bool isUri = !vcard::startsWithWord(uri, "X-APPLE:");
  if (isUri) entry.out.writeMember("uri", uri);
  auto user = entry.parameters.take("x-user");
  if (!user && !isUri) user = vcard::percentDecoded(std::string_view(uri).substr(8));
  entry.out.writeMember("user", user);
  entry.out.writeMember("vCardName", "x-socialprofile");
}

void writeLanguage(ContactEntry& entry) {
  entry.out.writeMember("language", entry.text());
}

struct KindRow {
  std::string_view name;
  std::string_view kind;
};

// What tells apart the resources of one member.
constexpr std::array kKinds = {
    KindRow{"CALURI", "calendar"},     KindRow{"FBURL", "freeBusy"},
    KindRow{"SOURCE", "entry"},        KindRow{"ORG-DIRECTORY", "directory"},
    KindRow{"CONTACT-URI", "contact"}, KindRow{"PHOTO", "photo"},
    KindRow{"LOGO", "logo"},           KindRow{"SOUND", "sound"},
    KindRow{"EXPERTISE", "expertise"}, KindRow{"HOBBY", "hobby"},
    KindRow{"INTEREST", "interest"},
};

void writeKind(ContactEntry& entry) {
  for (const auto& row : kKinds) {
    if (isWord(entry.line.name, row.name)) entry.out.writeMember("kind", row.kind);
  }
}

// INDEX, a place in a list from 1 on; what is no number stays a parameter.
void writeListPlace(ContactEntry& entry) {
  auto parameters = entry.parameters;
  const auto index = parameters.take("index");
  const bool isNumber = index && !index->empty() && index->size() < 10 &&
                        std::ranges::all_of(*index, vcard::isDigit) && index->front() != '0';
  if (!isNumber) return;
  entry.out.writeMember("listAs", std::int64_t{std::stoi(*index)});
  entry.parameters = std::move(parameters);
}

void writeResource(ContactEntry& entry) {
  writeKind(entry);
  entry.out.writeMember("uri", entry.text());
  writeTaken("mediaType", "mediatype", entry);
  if (isWord(entry.line.name, "ORG-DIRECTORY")) writeListPlace(entry);
}

// A resource may be told by a text in vCard, in JSContact by a URI alone.
bool isResource(const ContactLines& /*card*/, const ContentLine& line) {
  return Parameters(line).valueType() != "text";
}

void writeNote(ContactEntry& entry) {
  entry.out.writeMember("note", entry.text());
  if (const auto created = entry.parameters.take("created")) {
    entry.out.writeMember("created", extendedDateTime(*created));
  }
  if (!entry.parameters.has("author") && !entry.parameters.has("author-name")) return;
  entry.out.writeName("author");
  entry.out.beginObject();
  writeTaken("name", "author-name", entry);
  writeTaken("uri", "author", entry);
  entry.out.endObject();
}

void writeInfo(ContactEntry& entry) {
  constexpr std::array kLevels = {Word{"beginner", "low"},  Word{"average", "medium"},
                                  Word{"expert", "high"},   Word{"low", "low"},
                                  Word{"medium", "medium"}, Word{"high", "high"}};
  writeKind(entry);
  entry.out.writeMember("value", entry.text());
  for (const auto& level : kLevels) {
    if (!entry.parameters.takeWord("level", level.text)) continue;
    entry.out.writeMember("level", level.meaning);
    break;
  }
  writeListPlace(entry);
}

bool isFirst(const ContactLines& card, const ContentLine& line) {
  for (const auto& other : card.lines()) {
    if (vcard::isSameWord(other.name, line.name)) return &other == &line;
  }
  return false;
}

bool isFirstMoment(const ContactLines& card, const ContentLine& line) {
  return isFirst(card, line) && !utcMoment(line.value).empty();
}

using Values = ContactRow::Values;
using Label = ContactRow::Label;

constexpr ContactRow resource(std::string_view name, std::string_view member) {
  return {name, member, writeResource, isResource};
}

constexpr std::array kEntries = {
    ContactRow{"NICKNAME", "nicknames", writeNickname, nullptr, Values::List, Label::None},
    ContactRow{"ORG", "organizations", writeOrganization, nullptr, Values::One, Label::None},
    ContactRow{"TITLE", "titles", writeTitle, nullptr, Values::One, Label::None},
    ContactRow{"ROLE", "titles", writeTitle, nullptr, Values::One, Label::None},
    ContactRow{"EMAIL", "emails", writeEmail},
    ContactRow{"TEL", "phones", writePhone},
    ContactRow{"IMPP", "onlineServices", writeMessage},
    ContactRow{"SOCIALPROFILE", "onlineServices", writeProfile},
    ContactRow{"X-SOCIALPROFILE", "onlineServices", writeSocialProfile},
    ContactRow{"LANG", "preferredLanguages", writeLanguage, nullptr, Values::One, Label::None},
    ContactRow{"ADR", "addresses", writeContactAddress, nullptr, Values::One, Label::None},
    ContactRow{"GEO", "addresses", writeContactPlace, isContactPlace, Values::One, Label::None},
    ContactRow{"TZ", "addresses", writeContactPlace, isContactPlace, Values::One, Label::None},
    resource("CALURI", "calendars"),
    resource("FBURL", "calendars"),
    resource("CALADRURI", "schedulingAddresses"),
    resource("KEY", "cryptoKeys"),
    resource("SOURCE", "directories"),
    resource("ORG-DIRECTORY", "directories"),
    resource("URL", "links"),
    resource("CONTACT-URI", "links"),
    resource("PHOTO", "media"),
    resource("LOGO", "media"),
    resource("SOUND", "media"),
    ContactRow{"BDAY", "anniversaries", writeContactDate, isContactDate, Values::One, Label::None},
    ContactRow{"ANNIVERSARY", "anniversaries", writeContactDate, isContactDate, Values::One,
               Label::None},
    ContactRow{"DEATHDATE", "anniversaries", writeContactDate, isContactDate, Values::One,
               Label::None},
    ContactRow{"NOTE", "notes", writeNote, nullptr, Values::One, Label::None},
    ContactRow{"EXPERTISE", "personalInfo", writeInfo},
    ContactRow{"HOBBY", "personalInfo", writeInfo},
    ContactRow{"INTEREST", "personalInfo", writeInfo},
};

// Those that are no objects: written by name.
constexpr ContactRow single(std::string_view name, std::string_view member,
                            bool (*accepts)(const ContactLines&, const ContentLine&) = isFirst) {
  return {name, member, nullptr, accepts, Values::One, Label::None};
}

constexpr bool (*kEach)(const ContactLines&, const ContentLine&) = nullptr;

constexpr std::array kSingles = {
    single("UID", "uid"),
    single("KIND", "kind"),
    single("PRODID", "prodId"),
    single("LANGUAGE", "language"),
    single("CREATED", "created", isFirstMoment),
    single("REV", "updated", isFirstMoment),
    single("N", "name"),
    single("FN", "name"),
    single("X-PHONETIC-FIRST-NAME", "name", isReadingOfName),
    single("X-PHONETIC-MIDDLE-NAME", "name", isReadingOfName),
    single("X-PHONETIC-LAST-NAME", "name", isReadingOfName),
    single("GRAMGENDER", "speakToAs"),
    ContactRow{"PRONOUNS", "speakToAs", writePronouns, nullptr, Values::One, Label::None},
    single("MEMBER", "members", kEach),
    single("RELATED", "relatedTo", kEach),
    single("CATEGORIES", "keywords", kEach),
    single("BIRTHPLACE", "anniversaries", isPlaceOfDate),
    single("DEATHPLACE", "anniversaries", isPlaceOfDate),
};

constexpr vcard::NameTable kEntryTable(kEntries);
constexpr vcard::NameTable kSingleTable(kSingles);

}  // namespace

std::span<const ContactRow> contactEntryRows() {
  return kEntries;
}

const ContactRow* findContactRow(std::string_view name) {
  const auto* entry = kEntryTable.find(name);
  return entry != nullptr ? entry : kSingleTable.find(name);
}

std::string utcMoment(std::string_view value) {
  constexpr std::string_view kForm = "0000-00-00T00:00:00Z";
  auto moment = extendedDateTime(value);
  const bool hasForm = moment.size() == kForm.size() &&
                       std::equal(moment.begin(), moment.end(), kForm.begin(), [](char c, char f) {
                         return f == '0' ? vcard::isDigit(c) : c == f;
                       });
  return hasForm ? moment : std::string();
}

}  // namespace ox::formats
