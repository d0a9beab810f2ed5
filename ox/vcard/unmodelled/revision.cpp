#include "ox/vcard/unmodelled/revision.hpp"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdint>

#include "ox/base/checksum.hpp"
#include "ox/records/card_uid.hpp"
#include "ox/records/fingerprint.hpp"

namespace ox::vcard {
namespace {

std::string hexadecimal(std::uint64_t number) {
  std::array<char, 16> digits{};
  const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), number, 16).ptr;
  return std::string(digits.data(), end);
}

}  // namespace

std::string digestOfValues(const PropertyBag& properties) {
  return hexadecimal(fingerprintWithout(property_id::kUnmodelledLines, properties));
}

std::string digestOfPicture(const Data& photo) {
  return photo && !photo->empty() ? hexadecimal(checksum64(*photo)) : "-";
}

std::string digestOfMembers(const std::vector<std::string>& members) {
  std::vector<std::string_view> keys;
  keys.reserve(members.size());
  for (const auto& member : members) keys.push_back(uidKey(member));
  std::sort(keys.begin(), keys.end());
  std::string all;
  for (const auto key : keys) (all += key) += '\n';
  return hexadecimal(checksum64(all));
}

}  // namespace ox::vcard
