#include "ox/vcard/properties/uid.hpp"

#include <algorithm>
#include <utility>

#include "ox/base/text/utf8.hpp"
#include "ox/records/card_uid.hpp"
#include "ox/vcard/lines/ascii.hpp"
#include "ox/vcard/lines/decode.hpp"
#include "ox/vcard/lines/uri.hpp"
#include "ox/vcard/properties/each_property.hpp"

namespace ox::vcard {
namespace {

// Before a text that is no URI, with its percent escapes.
constexpr std::string_view kOwnScheme = "x-ox-uid:";
// Older cards of ours have this parameter where "urn:uuid:" is no part of the UID.
constexpr std::string_view kBareUid = "X-OX-BARE";

bool hasOwnScheme(std::string_view text) {
  return startsWithWord(text, "X-OX-UID:");
}

// A UID as MEMBER names it, which is a URI always: as it is when it is one. Before any other text
// "urn:uuid:" as in 3.0, which others take off again; one that could not stand in a URI so is
// "x-ox-uid:" and its text with percent escapes.
std::string memberUri(std::string_view uid) {
  if (isUri(uid) && !hasOwnScheme(uid)) return std::string(uid);
  auto urn = std::string(kUrnPrefix).append(uid);
  const bool hasPercent = uid.find('%') != std::string_view::npos;
  if (isUri(urn) && !hasPercent && !hasOwnScheme(uid)) return urn;
  std::string uri(kOwnScheme);
  appendPercentEncoded(uid, uri);
  return uri;
}

// The UID that a value of UID or MEMBER means: undoes "x-ox-uid:" and takes any other as it is.
std::string uidOfValue(std::string_view value) {
  if (!hasOwnScheme(value)) return std::string(value);
  return validUtf8(percentDecoded(value.substr(kOwnScheme.size())));
}

bool isOneLine(std::string_view uid) {
  return uid.empty() || (isPlain(uid) && uid.find('\n') == std::string_view::npos);
}

// As a line may hold it that is no URI: without control characters, and blanks around what is left.
// Borrows the UID, or the room where something is left out.
std::string_view plainUid(std::string_view uid, std::string& room) {
  if (isOneLine(uid)) return trimmed(uid);
  room = CardText(uid).view();
  std::erase(room, '\n');
  return trimmed(room);
}

bool isText(const ContentLine& line) {
  const auto* value = line.find(ParameterKind::Value);
  return value != nullptr && isWord(value->value, "TEXT");
}

std::string uidOf(const ContentLine& line, CardDraft& draft) {
  auto uid = trimmed(line.value);
  // Only 4.0 wants a URI of it, or to be told that it is none.
  std::string named;
  if (draft.facts.is40) {
    named = isText(line) ? unescaped(uid) : uidOfValue(uid);
    uid = named;
  }
  std::string room;
  if (!isOneLine(uid)) {
    const auto plain = plainUid(uid, room);
    if (plain.size() != uid.size()) draft.repaired(line, "UID with control characters");
    uid = plain;
  }
  const bool isBare =
      std::any_of(line.parameters.begin(), line.parameters.end(),
                  [](const Parameter& each) { return isWord(each.name, kBareUid); });
  return std::string(isBare ? uidKey(uid) : uid);
}

}  // namespace

bool readUid(const PropertyRow& /*row*/, const ContentLine& line, CardDraft& draft) {
  if (!draft.uid.empty()) return false;
  draft.uid = uidOf(line, draft);
  return true;
}

bool readMember(const PropertyRow& /*row*/, const ContentLine& line, CardDraft& draft) {
  auto member = std::string(uidKey(uidOf(line, draft)));
  if (draft.memberKeys.insert(member).second) draft.members.push_back(std::move(member));
  return true;
}

void writeUid(const PropertyRow& /*row*/, PropertyWriter& card) {
  writeUidLine(card);
}

void writeUidLine(PropertyWriter& card) {
  const auto* own = card.properties().text(property_id::kCardUid);
  const auto uid = own != nullptr ? std::string_view(*own) : card.fallbackUid();
  std::string room;
  const auto plain = plainUid(uid, room);
  if (plain.empty()) return;
  if (card.is30() || (isUri(plain) && !hasOwnScheme(plain))) {
    card.line().raw("UID:").raw(plain).end();
  } else {
    card.line().raw("UID;VALUE=text:").text(plain).end();
  }
}

void writeMember(std::string_view member, PropertyWriter& card) {
  std::string room;
  const auto uid = plainUid(member, room);
  if (!card.is30()) {
    card.line().raw("MEMBER:").raw(memberUri(uid)).end();
    return;
  }
  // 3.0 has it so whatever the UID is.
  card.line().raw("X-ADDRESSBOOKSERVER-MEMBER:");
  card.line().raw(schemeOf(uid).empty() ? kUrnPrefix : std::string_view()).raw(uid).end();
}

}  // namespace ox::vcard
