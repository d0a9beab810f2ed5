#include "ox/OxMacAddressBookSDK/_ABPerson/tag_list.hpp"

namespace ox {

Object tagListObject(const std::vector<std::string>& tags) {
  return tags.empty() ? Object() : Object(Array(tags.begin(), tags.end()));
}

std::optional<std::vector<std::string>> tagsOfObject(const Object& object) {
  if (object.array() == nullptr) return std::nullopt;
  std::vector<std::string> tags;
  for (const auto& element : *object.array()) {
    if (element.text() != nullptr) tags.push_back(*element.text());
  }
  return tags;
}

}  // namespace ox
