#include "ox/records/card_uid.hpp"

#include <algorithm>

#include "ox/base/text/case.hpp"

namespace ox {
namespace {

constexpr std::string_view kBlanks = " \t";
constexpr std::size_t kUuidLength = 36;

}  // namespace

std::string_view uidKey(std::string_view uid) {
  uid.remove_prefix(std::min(uid.find_first_not_of(kBlanks), uid.size()));
  uid = uid.substr(0, uid.find_last_not_of(kBlanks) + 1);
  const bool isUrn = equalsIgnoringCase(uid.substr(0, kUrnPrefix.size()), kUrnPrefix);
  return isUrn ? uid.substr(kUrnPrefix.size()) : uid;
}

std::string uidOfRecord(const RecordKey& key) {
  auto identifier = key.text();
  if (!key.isPacked()) return identifier;
  identifier.resize(kUuidLength);
  return std::string(kUrnPrefix) += identifier;
}

std::string recordOfUid(std::string_view uid, RecordKind kind) {
  const auto plain = uidKey(uid);
  if (plain.size() != kUuidLength) return std::string(plain);
  return std::string(plain) += kind == RecordKind::Person ? ":ABPerson" : ":ABGroup";
}

}  // namespace ox
