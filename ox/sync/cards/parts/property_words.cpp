#include "ox/sync/cards/parts/property_words.hpp"

#include <algorithm>
#include <array>
#include <utility>

namespace ox::sync {
namespace {

using namespace property_id;

constexpr std::array kWords = {
    std::pair<PropertyId, std::string_view>{kFirst, "first name"},
    std::pair<PropertyId, std::string_view>{kMiddle, "middle name"},
    std::pair<PropertyId, std::string_view>{kLast, "last name"},
    std::pair<PropertyId, std::string_view>{kTitle, "title"},
    std::pair<PropertyId, std::string_view>{kSuffix, "suffix"},
    std::pair<PropertyId, std::string_view>{kMaidenName, "maiden name"},
    std::pair<PropertyId, std::string_view>{kNickname, "nickname"},
    std::pair<PropertyId, std::string_view>{kOrganization, "company"},
    std::pair<PropertyId, std::string_view>{kDepartment, "department"},
    std::pair<PropertyId, std::string_view>{kJobTitle, "job title"},
    std::pair<PropertyId, std::string_view>{kBirthday, "birthday"},
    std::pair<PropertyId, std::string_view>{kFirstPhonetic, "phonetic first name"},
    std::pair<PropertyId, std::string_view>{kMiddlePhonetic, "phonetic middle name"},
    std::pair<PropertyId, std::string_view>{kLastPhonetic, "phonetic last name"},
    std::pair<PropertyId, std::string_view>{kNote, "note"},
    std::pair<PropertyId, std::string_view>{kPhone, "phone"},
    std::pair<PropertyId, std::string_view>{kEmail, "email"},
    std::pair<PropertyId, std::string_view>{kURLs, "url"},
    std::pair<PropertyId, std::string_view>{kInstantMessage, "instant message"},
    std::pair<PropertyId, std::string_view>{kSocialProfile, "social profile"},
    std::pair<PropertyId, std::string_view>{kAddress, "address"},
    std::pair<PropertyId, std::string_view>{kRelatedNames, "related name"},
    std::pair<PropertyId, std::string_view>{kOtherDates, "date"},
    std::pair<PropertyId, std::string_view>{kGroupName, kGroupNameWord},
};

}  // namespace

std::string wordFor(PropertyId property) {
  const auto known = std::find_if(kWords.begin(), kWords.end(),
                                  [&](const auto& row) { return row.first == property; });
  return known != kWords.end() ? std::string(known->second) : property_table::nameOf(property);
}

std::string wordForLine(std::string_view name) {
  std::string word(name);
  std::transform(word.begin(), word.end(), word.begin(), [](char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
  });
  if (word == "fn") return "formatted name";
  // A second one of those is not the value.
  const bool isTaken = word == kPhotoWord || word == kGroupNameWord ||
                       std::any_of(kWords.begin(), kWords.end(),
                                   [&](const auto& row) { return row.second == word; });
  return isTaken ? word + " line" : word;
}

}  // namespace ox::sync
