#include "ox/vcard/properties/uid.hpp"

#include <algorithm>
#include <utility>

#include "ox/base/text/utf8.hpp"
#include "ox/records/card_uid.hpp"
#include "ox/vcard/lines/ascii.hpp"
#include "ox/vcard/lines/uri.hpp"
#include "ox/vcard/properties/each_property.hpp"

namespace ox::vcard {
namespace {

constexpr std::string_view kOwnScheme = "x-ox-uid:";
// The parameter of a UID in 4.0 that is a UUID without "urn:uuid:" in the record.
constexpr std::string_view kBareUid = "X-OX-BARE";

bool hasOwnScheme(std::string_view text) {
  return startsWithWord(text, "X-OX-UID:");
}

bool isHexDigit(char c) {
  return isDigit(c) || (upper(c) >= 'A' && upper(c) <= 'F');
}

// True for the 36 characters of RFC 4122, section 3.
bool isUuid(std::string_view text) {
  constexpr std::string_view kForm = "xxxxxxxx-xxxx-xxxx-xxxx-xxxxxxxxxxxx";
  return text.size() == kForm.size() &&
         std::equal(text.begin(), text.end(), kForm.begin(),
                    [](char c, char form) { return form == 'x' ? isHexDigit(c) : c == form; });
}

// A UID as a URI: as it is when it is one, "urn:uuid:" before a UUID, else "x-ox-uid:" and its text
// with percent escapes.
std::string uriOfUid(std::string_view uid) {
  if (isUri(uid) && !hasOwnScheme(uid)) return std::string(uid);
  if (isUuid(uid)) return std::string(kUrnPrefix).append(uid);
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

std::string uidOf(const ContentLine& line, CardDraft& draft) {
  auto uid = trimmed(line.value);
  // Only 4.0 wants a URI of it.
  std::string named;
  if (draft.facts.is40) uid = named = uidOfValue(uid);
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
  if (card.is30()) {
    std::string room;
    const auto plain = plainUid(uid, room);
    if (!plain.empty()) card.line().raw("UID:").raw(plain).end();
    return;
  }
  const CardText text(uid);
  if (text.view().empty()) return;
  card.line().raw("UID");
  if (isUuid(text.view())) card.line().raw(";").raw(kBareUid).raw("=TRUE");
  card.line().raw(":").raw(uriOfUid(text.view())).end();
}

void writeMember(std::string_view member, PropertyWriter& card) {
  if (!card.is30()) {
    card.line().raw("MEMBER:").raw(uriOfUid(CardText(member).view())).end();
    return;
  }
  // 3.0 has it so whatever the UID is.
  std::string room;
  const auto uid = plainUid(member, room);
  card.line().raw("X-ADDRESSBOOKSERVER-MEMBER:");
  card.line().raw(schemeOf(uid).empty() ? kUrnPrefix : std::string_view()).raw(uid).end();
}

}  // namespace ox::vcard
