#include "oxcontacts/output/person_json.hpp"

#include "ox/OxMacAddressBookSDK/_ABGroup/_ABGroup.hpp"
#include "oxcontacts/output/shown_value.hpp"
#include "oxcontacts/output/value_json.hpp"

namespace ox::program {
namespace {

Json propertyJson(const OxProperty& property, const OxValue& value) {
  Json json = {{"name", property.name()},
               {"displayName", property.displayName()},
               {"type", property.valueType()}};
  json.update(jsonOf(value));
  return json;
}

}  // namespace

Json personJson(const _ABPerson& person) {
  Json groups = Json::array();
  for (const auto& group : person.groups()) {
    groups.push_back({{"ID", jsonOf(group->ID())}, {"displayName", jsonOf(group->displayName())}});
  }
  Json properties = Json::array();
  for (const auto& property : person.notNullValueProperty()) {
    const auto value = shownValue(person, property);
    if (value) properties.push_back(propertyJson(*property, *value));
  }
  return {{"ID", jsonOf(person.ID())},
          {"addressBookID", jsonOf(person.addressBookID())},
          {"displayName", jsonOf(person.displayName())},
          {"nameChineesPinyin", jsonOf(person.nameChineesPinyin())},
          {"groups", std::move(groups)},
          {"tags", person.tagArray()},
          {"properties", std::move(properties)}};
}

}  // namespace ox::program
