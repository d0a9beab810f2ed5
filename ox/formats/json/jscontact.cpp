#include "ox/formats/json/jscontact.hpp"

#include <algorithm>
#include <array>
#include <unordered_map>
#include <unordered_set>

#include "ox/base/text/ascii_case.hpp"
#include "ox/formats/json/contact_rows.hpp"
#include "ox/formats/json/jcard.hpp"
#include "ox/vcard/lines/ascii.hpp"
#include "ox/vcard/lines/structured_value.hpp"
#include "ox/vcard/lines/uri.hpp"

namespace ox::formats {
namespace {

using vcard::ContentLine;

constexpr std::string_view kUrn = "urn:uuid:";
constexpr std::string_view kOwnScheme = "x-ox-uid:";

bool isUuid(std::string_view text) {
  constexpr std::string_view kForm = "xxxxxxxx-xxxx-xxxx-xxxx-xxxxxxxxxxxx";
  return text.size() == kForm.size() &&
         std::equal(text.begin(), text.end(), kForm.begin(), [](char c, char form) {
           const char letter = vcard::upper(c);
           const bool isHex = vcard::isDigit(c) || (letter >= 'A' && letter <= 'F');
           return form == 'x' ? isHex : c == form;
         });
}

// A UID in the one form that names a record alike in its own object and in those of its groups,
// where vCard has a text here and a URI there: a UUID as URN, any other text as it is.
std::string commonUid(std::string_view value) {
  auto uid = textOf(value);
  if (uid.starts_with(kOwnScheme)) {
    return vcard::percentDecoded(std::string_view(uid).substr(kOwnScheme.size()));
  }
  if (isUuid(uid)) return std::string(kUrn).append(uid);
  const bool isOfText = uid.starts_with(kUrn) && !isUuid(std::string_view(uid).substr(kUrn.size()));
  return isOfText ? uid.substr(kUrn.size()) : uid;
}

// Parameters of a line that has no object which could hold them, but for what only says how a value
// of ours is written.
bool hasOwnParameters(const ContentLine& line) {
  Parameters parameters(line);
  if (vcard::isWord(line.name, "UID")) parameters.take("x-ox-bare");
  if (vcard::isWord(line.name, "FN")) parameters.take("derived");
  if (vcard::isWord(line.name, "RELATED")) parameters.take("type");
  return !parameters.empty();
}

std::vector<std::string_view> valuesOf(const ContentLine& line) {
  if (vcard::isWord(line.name, "CATEGORIES")) return vcard::partsOf(line.value, ',');
  return {line.value};
}

// A Card object in the making.
class Contact {
 public:
  Contact(const WrittenCard& card, JsonWriter& out) : card_(card), out_(out) {}

  void write() {
    out_.beginObject();
    out_.writeMember("@type", "Card");
    out_.writeMember("version", "1.0");
    writeSingles();
    writeContactName(card_, out_);
    writeEntries();
    writeSpeakToAs();
    writeSet("members", "MEMBER");
    writeRelations();
    writeSet("keywords", "CATEGORIES");
    writeRest();
    out_.endObject();
  }

 private:
  void writeSingles() {
    if (const auto* uid = card_.placed("UID")) out_.writeMember("uid", commonUid(uid->value));
    if (const auto* kind = card_.placed("KIND")) {
      out_.writeMember("kind", lowerCase(textOf(kind->value)));
    }
    if (const auto* product = card_.placed("PRODID")) {
      out_.writeMember("prodId", textOf(product->value));
    }
    if (const auto* made = card_.placed("CREATED")) {
      out_.writeMember("created", utcMoment(made->value));
    }
    if (const auto* revised = card_.placed("REV")) {
      out_.writeMember("updated", utcMoment(revised->value));
    }
    if (const auto* language = card_.placed("LANGUAGE")) {
      out_.writeMember("language", textOf(language->value));
    }
  }

  // Rows of one member stand together.
  void writeEntries() {
    std::string_view before;
    for (const auto& row : contactEntryRows()) {
      if (row.member != before) writeMember(row.member);
      before = row.member;
    }
  }

  void writeMember(std::string_view member) {
    std::size_t count = 0;
    for (const auto& line : card_.lines()) {
      const auto* row = card_.rowOf(line);
      if (row == nullptr || row->member != member || row->write == nullptr) continue;
      writeEntriesOf(line, *row, count);
    }
    if (count > 0) out_.endObject();
  }

  void writeEntriesOf(const ContentLine& line, const ContactRow& row, std::size_t& count) {
    if (row.values == ContactRow::Values::One) return writeEntry(line, row, line.value, count);
    for (const auto value : vcard::partsOf(line.value, ',')) writeEntry(line, row, value, count);
  }

  // The first one opens the member. Its objects are numbered: "phones": {"p1": {...}, "p2": ...}.
  void writeEntry(const ContentLine& line, const ContactRow& row, std::string_view value,
                  std::size_t& count) {
    if (count++ == 0) {
      out_.writeName(row.member);
      out_.beginObject();
    }
    out_.writeName(std::string(1, row.member.front()) + std::to_string(count));
    out_.beginObject();
    ContactEntry entry{card_, line, value, Parameters(line), out_};
    row.write(entry);
    writeCommon(entry, row);
    out_.endObject();
  }

  void writeCommon(ContactEntry& entry, const ContactRow& row) {
    writeContexts(entry);
    writePreference(entry);
    if (row.label == ContactRow::Label::Has) {
      const auto label = card_.labelOf(entry.line);
      if (!label.empty()) out_.writeMember("label", label);
    }
    if (card_.needsGroup(entry.line)) entry.parameters.addGroup(entry.line.group);
    if (entry.parameters.empty()) return;
    out_.writeName("vCardParams");
    entry.parameters.write(out_);
  }

  void writeContexts(ContactEntry& entry) {
    struct ContextRow {
      std::string_view word;
      std::string_view context;
      bool isOfAddress = false;
    };
    constexpr std::array kContexts = {ContextRow{"home", "private"}, ContextRow{"work", "work"},
                                      ContextRow{"billing", "billing", true},
                                      ContextRow{"delivery", "delivery", true}};
    const bool isAddress = vcard::isWord(entry.line.name, "ADR");
    bool isOpen = false;
    for (const auto& row : kContexts) {
      if (row.isOfAddress && !isAddress) continue;
      if (!entry.parameters.takeWord("type", row.word)) continue;
      if (!isOpen) {
        out_.writeName("contexts");
        out_.beginObject();
        isOpen = true;
      }
      out_.writeName(row.context);
      out_.writeBoolean(true);
    }
    if (isOpen) out_.endObject();
  }

  // From 1 to 100; what is no such number stays a parameter.
  void writePreference(ContactEntry& entry) {
    auto parameters = entry.parameters;
    const auto rank = parameters.take("pref");
    const bool isNumber =
        rank && !rank->empty() && rank->size() <= 3 && std::ranges::all_of(*rank, vcard::isDigit);
    if (!isNumber) return;
    const auto number = std::stoi(*rank);
    if (number < 1 || number > 100) return;
    out_.writeMember("pref", std::int64_t{number});
    entry.parameters = std::move(parameters);
  }

  // RFC 9555, section 2.5.4.
  void writeSpeakToAs() {
    const auto* gender = card_.placed("GRAMGENDER");
    const auto* pronouns = card_.placed("PRONOUNS");
    if (gender == nullptr && pronouns == nullptr) return;
    out_.writeName("speakToAs");
    out_.beginObject();
    if (gender != nullptr) {
      out_.writeMember("grammaticalGender", lowerCase(textOf(gender->value)));
    }
    if (pronouns != nullptr) {
      std::size_t count = 0;
      auto row = *card_.rowOf(*pronouns);
      row.member = "pronouns";
      for (const auto& line : card_.lines()) {
        if (vcard::isWord(line.name, "PRONOUNS")) writeEntry(line, row, line.value, count);
      }
      out_.endObject();
    }
    out_.endObject();
  }

  // {"a": true, "b": true}: each once.
  void writeSet(std::string_view member, std::string_view name) {
    std::unordered_set<std::string> written;
    for (const auto& line : card_.lines()) {
      if (!vcard::isWord(line.name, name)) continue;
      for (const auto part : valuesOf(line)) {
        auto text = name == "MEMBER" ? commonUid(part) : textOf(part);
        if (text.empty() || written.contains(text)) continue;
        if (written.empty()) {
          out_.writeName(member);
          out_.beginObject();
        }
        out_.writeName(text);
        out_.writeBoolean(true);
        written.insert(std::move(text));
      }
    }
    if (!written.empty()) out_.endObject();
  }

  // By person: what is said of one twice comes together.
  void writeRelations() {
    std::vector<std::string> persons;
    std::unordered_map<std::string, std::vector<std::string>> relations;
    for (const auto& line : card_.lines()) {
      if (!vcard::isWord(line.name, "RELATED")) continue;
      const auto person = textOf(line.value);
      const auto [known, isNew] = relations.try_emplace(person);
      if (isNew) persons.push_back(person);
      for (const auto& word : Parameters(line).takeAll("type")) {
        auto lower = lowerCase(word);
        if (std::ranges::find(known->second, lower) == known->second.end()) {
          known->second.push_back(std::move(lower));
        }
      }
    }
    if (persons.empty()) return;
    out_.writeName("relatedTo");
    out_.beginObject();
    for (const auto& person : persons) writeRelation(person, relations.at(person));
    out_.endObject();
  }

  void writeRelation(const std::string& person, const std::vector<std::string>& words) {
    out_.writeName(person);
    out_.beginObject();
    if (!words.empty()) {
      out_.writeName("relation");
      out_.beginObject();
      for (const auto& word : words) {
        out_.writeName(word);
        out_.writeBoolean(true);
      }
      out_.endObject();
    }
    out_.endObject();
  }

  // Members that are no objects have no room for parameters and groups: there the property is told
  // too.
  bool isToldAsProperty(const ContentLine& line) const {
    if (card_.isLeft(line)) return true;
    const auto* row = card_.rowOf(line);
    if (row == nullptr || row->write != nullptr || vcard::isWord(line.name, "N")) return false;
    return hasOwnParameters(line) || card_.needsGroup(line);
  }

  // RFC 9555, section 2.15.
  void writeRest() {
    bool isOpen = false;
    for (const auto& line : card_.lines()) {
      if (!isToldAsProperty(line)) continue;
      if (!isOpen) {
        out_.writeName("vCardProps");
        out_.beginArray();
        isOpen = true;
      }
      writeJCardProperty(line, out_);
    }
    if (isOpen) out_.endArray();
  }

  ContactLines card_;
  JsonWriter& out_;
};

}  // namespace

void writeJsContact(const WrittenCard& card, JsonWriter& out) {
  Contact(card, out).write();
}

}  // namespace ox::formats
