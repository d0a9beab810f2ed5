#include "tests/OxMacAddressBookSDK/book/same_records.hpp"

#include <algorithm>
#include <cstddef>
#include <optional>
#include <utility>
#include <vector>

#include "ox/OxAddressBookSDK/objects/OxObjectPersonName.hpp"
#include "ox/OxAddressBookSDK/values/OxMutableSingleValue.hpp"

namespace ox::test {
namespace {

// The places of the keys in the list; its size for one that is not there.
template <typename T>
std::vector<std::ptrdiff_t> places(const OxGeneralGroup::Keys& keys, const KeyedList<T>& list) {
  std::vector<std::ptrdiff_t> result;
  for (const auto& key : keys) {
    const auto found = std::find_if(list.begin(), list.end(),
                                    [&](const auto& entry) { return entry.first == key; });
    result.push_back(found - list.begin());
  }
  return result;
}

OxValuePtr nameWithoutParts() {
  const auto property = OxProperty::propertyWithName(OxProPertyName);
  auto label = OxLabel::init();
  label->setName(property->displayName());
  label->setDisplayName(property->displayName());
  auto name = OxMutableSingleValue::init();
  name->setType(property->valueType());
  name->setValue(
      OxObjectPersonName::initWithFirst_middle_last(std::nullopt, std::nullopt, std::nullopt));
  name->setLabel(std::move(label));
  return name;
}

// The first property whose values differ; null when none does.
OxPropertyPtr difference(const OxGeneralPerson& expected, const OxGeneralPerson& actual) {
  for (const auto& property : OxProperty::StandardPropertyArray()) {
    auto wanted = expected.valueByProperty(property);
    if (!wanted && property->name() == OxProPertyName) wanted = nameWithoutParts();
    const auto found = actual.valueByProperty(property);
    if (wanted && found ? !wanted->equals(*found) : wanted != found) return property;
  }
  return nullptr;
}

}  // namespace

testing::AssertionResult holdTheSame(const OxAddressBookGeneral& expected,
                                     const OxAddressBookGeneral& actual) {
  if (expected.personsDic().count() != actual.personsDic().count() ||
      expected.groupsDic().count() != actual.groupsDic().count()) {
    return testing::AssertionFailure() << "other counts";
  }
  auto otherPerson = actual.personsDic().begin();
  for (const auto& [key, person] : expected.personsDic()) {
    const auto property = difference(*person, *otherPerson++->second);
    if (property) return testing::AssertionFailure() << property->name() << " of person " << key;
  }
  auto otherGroup = actual.groupsDic().begin();
  for (const auto& [key, group] : expected.groupsDic()) {
    const auto& other = *otherGroup++->second;
    if (group->title() != other.title()) {
      return testing::AssertionFailure() << "title of group " << key;
    }
    if (places(group->subArray(), expected.groupsDic()) !=
        places(other.subArray(), actual.groupsDic())) {
      return testing::AssertionFailure() << "sub-groups of group " << key;
    }
    if (places(group->persons(), expected.personsDic()) !=
        places(other.persons(), actual.personsDic())) {
      return testing::AssertionFailure() << "members of group " << key;
    }
  }
  return testing::AssertionSuccess();
}

}  // namespace ox::test
