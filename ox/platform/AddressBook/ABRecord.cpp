#include "ox/platform/AddressBook/ABRecord.hpp"

#include <utility>

#include "ox/platform/AddressBook/ABGroup.hpp"
#include "ox/platform/AddressBook/answer.hpp"
#include "ox/platform/AddressBook/live_records.hpp"
#include "ox/platform/store/contact_source.hpp"

namespace ox {

ABRecord::~ABRecord() {
  live_records::forget(*this);
}

Text ABRecord::uniqueId() const {
  return key_.text();
}

PropertyValue ABRecord::valueForProperty(TextView property) const {
  const auto id = property ? property_table::idOf(kind(), *property) : PropertyId{0};
  if (id == 0) return {};
  return answer([&] { return recordSource().value(key_, id); });
}

PropertyValue ABRecord::valueToChange(TextView property) const {
  const auto id = property ? property_table::idOf(kind(), *property) : PropertyId{0};
  if (id == 0) return {};
  return answer([&] { return recordSource().valueToChange(key_, id); });
}

bool ABRecord::setValue_forProperty(PropertyValue value, TextView property) {
  const auto id = property ? property_table::idOf(kind(), *property) : PropertyId{0};
  return answer([&] { return recordSource().setValue(key_, kind(), id, std::move(value)); });
}

bool ABRecord::removeValueForProperty(TextView property) {
  return setValue_forProperty({}, property);
}

Text ABRecord::description() const {
  return answer([&]() -> Text { return recordSource().description(key_, kind()); });
}

std::vector<std::shared_ptr<ABGroup>> ABRecord::parentGroups() const {
  return answer([&] { return live_records::groups(*recordSource().parents(key_)); });
}

}  // namespace ox
