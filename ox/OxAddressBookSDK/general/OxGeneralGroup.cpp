#include "ox/OxAddressBookSDK/general/OxGeneralGroup.hpp"

#include "ox/OxAddressBookSDK/IOxPerson.hpp"
#include "ox/base/text/utf8.hpp"

namespace ox {
namespace {

template <typename Record>
OxGeneralGroup::Keys identifiersOf(const std::vector<std::shared_ptr<Record>>& records) {
  OxGeneralGroup::Keys result;
  result.reserve(records.size());
  for (const auto& record : records) {
    if (auto identifier = record ? record->ID() : std::nullopt) {
      result.push_back(validUtf8(*std::move(identifier)));
    }
  }
  return result;
}

}  // namespace

std::shared_ptr<OxGeneralGroup> OxGeneralGroup::copyOf(const IOxGroup& group) {
  return make(group.displayName(), identifiersOf(group.subGroups()),
              identifiersOf(group.persons()));
}

}  // namespace ox
