#include "ox/OxAddressBookSDK/general/OxAddressBookGeneral.hpp"

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

void OxAddressBookGeneral::addGroup(const std::shared_ptr<IOxGroup>& group) {
  auto identifier = group ? group->ID() : std::nullopt;
  if (!identifier) return;
  groups_.set(validUtf8(*std::move(identifier)),
              OxGeneralGroup::make(group->displayName(), identifiersOf(group->subGroups()),
                                   identifiersOf(group->persons())));
}

void OxAddressBookGeneral::addPerson(const std::shared_ptr<IOxPerson>& person) {
  if (!person) return;
  auto copy = OxGeneralPerson::copyOf(*person);
  if (const auto identifier = copy->ID()) persons_.set(*identifier, std::move(copy));
}

}  // namespace ox
