#include "tests/platform/AddressBook/record_view.hpp"

#include <cstdio>

#include "tests/support/second_process.hpp"

namespace ox::record_view {

std::shared_ptr<ABAddressBook> book() {
  return ABAddressBook::sharedAddressBook();
}

std::shared_ptr<ABPerson> personNamed(const std::string& id) {
  return std::dynamic_pointer_cast<ABPerson>(book()->recordForUniqueId(id));
}

std::shared_ptr<ABGroup> groupNamed(const std::string& id) {
  return std::dynamic_pointer_cast<ABGroup>(book()->recordForUniqueId(id));
}

std::string firstName(const ABRecord& record) {
  const auto value = record.valueForProperty(kABFirstNameProperty);
  const auto* object = std::get_if<Object>(&value);
  return object != nullptr ? object->toText().value_or("-") : "-";
}

bool setFirst(const std::string& id, const std::string& name) {
  return personNamed(id)->setValue_forProperty(Object(name), kABFirstNameProperty);
}

std::string visible() {
  std::string text;
  for (const auto& person : book()->people()) text += firstName(*person) + ' ';
  for (const auto& group : book()->groups()) {
    text += '[' + *group->uniqueId() + ':';
    for (const auto& member : group->members()) text += ' ' + firstName(*member);
    for (const auto& below : group->subgroups()) text += " [" + *below->uniqueId() + ']';
    text += "] ";
  }
  return text;
}

namespace {

const support::SecondProcess tells("tells", [](const auto&) {
  std::printf("%s", visible().c_str());
  return 0;
});

}  // namespace

std::string elsewhere() {
  return tells.run().output;
}

}  // namespace ox::record_view
