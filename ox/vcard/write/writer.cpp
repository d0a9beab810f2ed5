#include "ox/vcard/write/writer.hpp"

#include <algorithm>

#include "ox/records/card_uid.hpp"
#include "ox/vcard/lines/ascii.hpp"
#include "ox/vcard/lines/content_line.hpp"
#include "ox/vcard/lines/uri.hpp"
#include "ox/vcard/properties/exact_values.hpp"
#include "ox/vcard/properties/type_words.hpp"
#include "ox/vcard/properties/uid.hpp"
#include "ox/vcard/read/card.hpp"
#include "ox/vcard/unmodelled/revision.hpp"
#include "ox/vcard/write/card_writer.hpp"

// The frame of a card and what is kept with it.

namespace ox::vcard {
namespace {

// A kept line that would make a group of a person.
bool saysGroup(const PropertyRow& row, std::string_view line) {
  return row.meaning == Meaning::Kind && isWord(trimmed(line.substr(line.rfind(':') + 1)), "GROUP");
}

// RFC 2426, section 3.1.4, by reference: no picture that a record could hold.
bool isPhotoReference(std::string_view text) {
  ContentLine line;
  const auto colon = parseHead(text, line);
  return colon != std::string_view::npos && line.encoding != Encoding::Base64 &&
         !startsWithWord(trimmed(text.substr(colon + 1)), "DATA:");
}

bool isReadingSound(std::string_view text) {
  ContentLine line;
  TypeWords words;
  if (parseHead(text, line) == std::string_view::npos) return false;
  readTypeWords(line, words);
  return std::any_of(words.unknown.begin(), words.unknown.end(),
                     [](std::string_view word) { return isWord(word, "X-IRMC-N"); });
}

}  // namespace

CardWriter::CardWriter(const PropertyBag& properties, const WriteOptions& options, std::string& out)
    : properties_(properties),
      options_(options),
      out_(out),
      line_(out),
      kept_(properties),
      nextItem_(kept_.firstFreeItem()) {
  for (const auto& [id, value] : properties.entries()) {
    if (id < values_.size()) values_[id] = &value;
    if (id >= kFirstCustomProperty) notExact(id);
  }
}

void CardWriter::notExact(PropertyId property) {
  if (std::find(inexact_.begin(), inexact_.end(), property) == inexact_.end()) {
    inexact_.push_back(property);
  }
}

void CardWriter::begin() {
  line_.raw("BEGIN:VCARD").end();
  line_.raw(is30() ? "VERSION:3.0" : "VERSION:4.0").end();
}

void CardWriter::end() {
  line_.raw("END:VCARD").end();
}

void CardWriter::uid() {
  const auto* own = properties_.text(property_id::kCardUid);
  const CardText text(own != nullptr ? std::string_view(*own) : options_.uid);
  if (text.view().empty()) return;
  line_.raw("UID");
  if (is30()) {
    line_.raw(":").raw(text.view()).end();
    return;
  }
  if (isUuid(text.view())) line_.raw(";").raw(kBareUid).raw("=TRUE");
  line_.raw(":").raw(uriOfUid(text.view())).end();
}

void CardWriter::wrapped(std::string_view line) {
  line_.raw(kKeptLineName).raw(":").percent(line).end();
}

// True for a kept second line whose first is gone: a reader would take it for the value.
bool CardWriter::wouldBeValue(const PropertyRow& row, std::string_view text) {
  switch (row.meaning) {
    case Meaning::Text:
      return textOf(row.property).empty();
    case Meaning::Note:
      return textOf(property_id::kNote).empty();
    case Meaning::Organization:
      return textOf(property_id::kOrganization).empty() && textOf(property_id::kDepartment).empty();
    case Meaning::Sound:
      return textOf(property_id::kLastPhonetic).empty() &&
             textOf(property_id::kFirstPhonetic).empty() && isReadingSound(text);
    case Meaning::Photo:
      return !photoWritten_ && !isPhotoReference(text);
    default:
      return false;
  }
}

// False when the line has to be wrapped.
bool CardWriter::keptLine(const KeptLine& kept) {
  const auto isName = [&](std::string_view other) { return isSameWord(kept.name(), other); };
  if (kept.isOnlyOnce() && std::any_of(onceWritten_.begin(), onceWritten_.end(), isName)) {
    return false;
  }
  const auto& row = propertyRow(kept.name());
  if (!isGroup_ && (saysGroup(row, kept.text()) || wouldBeValue(row, kept.text()))) return false;
  const auto line = kept.inVersion(options_.version, lineRoom_);
  if (!line) return false;
  line_.raw(*line).end();
  if (kept.isOnlyOnce()) onceWritten_.push_back(kept.name());
  return true;
}

// RFC 2426, section 3.5.4: a card as a text value.
bool CardWriter::nestedCard(std::string_view text) {
  const auto colon = text.substr(0, text.find('\n')).find(':');
  const CardText nested(text);
  if (colon == std::string_view::npos || nested.isChanged()) return false;
  const auto head = KeptLine(text.substr(0, colon + 1)).inVersion(options_.version, lineRoom_);
  if (!head) return false;
  auto card = text.substr(colon + 1);
  while (!card.empty() && isBlank(card.front())) card.remove_prefix(1);
  if (card.starts_with('\n')) card.remove_prefix(1);  // as older stores kept it
  line_.raw(*head).text(card).end();
  return true;
}

bool CardWriter::isRevisionTrue(std::string_view rest, bool isRestKnown) const {
  const auto kept = kept_.spellingOf(property_id::kUnmodelledLines, 0);
  if (kept.empty()) return true;  // from a store that kept no more than the line
  const auto colon = kept.find(':');
  if (colon == std::string_view::npos) return false;
  if (isRestKnown && kept.substr(colon + 1) != rest) return false;
  return kept.substr(0, colon) == digestOfValues(properties_);
}

void CardWriter::keptLines() {
  if (values_[property_id::kBirthday] != nullptr) onceWritten_.emplace_back("BDAY");
  if (anniversaryWritten_) onceWritten_.emplace_back("ANNIVERSARY");
  for (const auto text : kept_.lines()) {
    const KeptLine kept(text);
    if (nameChanged_ && isWord(kept.name(), "FN")) continue;
    if (revised_ && isWord(kept.name(), "REV")) continue;
    const bool isNested = text.find('\n') != std::string_view::npos;
    if (isNested && !options_.nestedCards) continue;
    if (!(isNested ? nestedCard(text) : keptLine(kept))) wrapped(text);
  }
}

// Parameters that could not stand in the line they belong to.
void CardWriter::keptParameters() {
  for (const auto& kept : kept_.parameters()) {
    if (kept.entry != 0 || areAdmitted(kept.said, options_.version)) continue;
    const bool held = kept.property < values_.size() && values_[kept.property] != nullptr;
    if (held || kept.property == kPhotoParameters) wrapped(kept.text());
  }
  for (const auto& text : entryParameters_) wrapped(text);
}

// The same of a group, which has N in 3.0 only.
void CardWriter::groupParameters(bool named) {
  for (const auto& kept : kept_.parameters()) {
    const bool ofName = kept.property == property_id::kGroupName;
    if (kept.entry != 0 || (!ofName && kept.property != property_id::kLast)) continue;
    const bool hasLine = ofName ? named : is30();
    if (!hasLine || !areAdmitted(kept.said, options_.version)) wrapped(kept.text());
  }
  for (const auto& text : entryParameters_) wrapped(text);
}

void CardWriter::exactValues() {
  if (inexact_.empty()) return;
  PropertyBag exact;
  for (const auto& [id, value] : properties_.entries()) {
    const bool wanted = std::find(inexact_.begin(), inexact_.end(), id) != inexact_.end();
    if (wanted && fitsType(value, property_table::typeOf(id))) exact.append(id, asNumbered(value));
  }
  if (exact.empty()) return;
  line_.raw(kExactValuesName).raw(":").raw(exactValuesText(exact)).end();
}

void CardWriter::person(const Data& picture) {
  // Whoever leaves nested cards out leaves the picture out as well.
  revised_ = !isRevisionTrue(digestOfPicture(picture), options_.nestedCards);
  begin();
  names();
  singleText(property_id::kNickname, "NICKNAME");
  singleText(property_id::kMaidenName, "X-MAIDENNAME");
  singleText(property_id::kFirstPhonetic, "X-PHONETIC-FIRST-NAME");
  singleText(property_id::kMiddlePhonetic, "X-PHONETIC-MIDDLE-NAME");
  singleText(property_id::kLastPhonetic, "X-PHONETIC-LAST-NAME");
  organization();
  singleText(property_id::kJobTitle, "TITLE");
  birthday();
  for (PropertyId id = kFirstMulti; id < kFirstMulti + kMultiCount; ++id) multi(id);
  singleText(property_id::kNote, "NOTE");
  photoWritten_ = picture && !picture->empty();
  if (photoWritten_) photo(picture);
  uid();
  keptLines();
  keptParameters();
  exactValues();
  end();
}

void CardWriter::group(const std::vector<std::string>& members) {
  isGroup_ = true;
  onceWritten_.emplace_back("KIND");
  revised_ = !isRevisionTrue(digestOfMembers(members), true);
  begin();
  const auto* name = properties_.text(property_id::kGroupName);
  const CardText text(name != nullptr ? std::string_view(*name) : std::string_view());
  if (is30()) {
    line_.raw("N");
    ownParameters(property_id::kLast);
    line_.raw(":").text(text.view()).raw(";;;;").end();
  }
  if (text.view().empty()) {
    line_.raw(is30() ? "FN;X-DERIVED=TRUE:?" : "FN;DERIVED=TRUE:?").end();
  } else {
    line_.raw("FN");
    ownParameters(property_id::kGroupName);
    line_.raw(":").text(text.view()).end();
  }
  line_.raw(is30() ? "X-ADDRESSBOOKSERVER-KIND:group" : "KIND:group").end();
  uid();
  for (const auto& member : members) {
    const CardText uid(member);
    if (!is30()) {
      line_.raw("MEMBER:").raw(uriOfUid(uid.view())).end();
      continue;
    }
    // 3.0 has it so whatever the UID is.
    line_.raw("X-ADDRESSBOOKSERVER-MEMBER:");
    line_.raw(schemeOf(uid.view()).empty() ? kUrnPrefix : std::string_view()).raw(uid.view()).end();
  }
  if (!kept_.fullNameLine().empty()) {
    if (!keptLine(KeptLine(kept_.fullNameLine()))) wrapped(kept_.fullNameLine());
  }
  keptLines();
  groupParameters(!text.view().empty());
  end();
}

void appendCard(const PropertyBag& properties, const Data& photo, const WriteOptions& options,
                std::string& out) {
  CardWriter(properties, options, out).person(photo);
}

std::string writeCard(const PropertyBag& properties, const Data& photo,
                      const WriteOptions& options) {
  std::string card;
  appendCard(properties, photo, options, card);
  return card;
}

void appendGroup(const PropertyBag& properties, const std::vector<std::string>& members,
                 const WriteOptions& options, std::string& out) {
  CardWriter(properties, options, out).group(members);
}

}  // namespace ox::vcard
