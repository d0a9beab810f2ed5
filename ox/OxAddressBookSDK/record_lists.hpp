#pragma once

#include <memory>
#include <variant>
#include <vector>

namespace ox {

class IOxGroup;
class IOxPerson;

// Lists as every operation of the model gives and takes them, so that what one gives can be handed
// to another.
using Persons = std::vector<std::shared_ptr<IOxPerson>>;
using Groups = std::vector<std::shared_ptr<IOxGroup>>;

// A record of either kind.
using OxRecord = std::variant<std::shared_ptr<IOxPerson>, std::shared_ptr<IOxGroup>>;

// The person that the record is; null for a group.
inline std::shared_ptr<IOxPerson> personOf(const OxRecord& record) {
  const auto* const person = std::get_if<std::shared_ptr<IOxPerson>>(&record);
  return person != nullptr ? *person : nullptr;
}

// The group that the record is; null for a person.
inline std::shared_ptr<IOxGroup> groupOf(const OxRecord& record) {
  const auto* const group = std::get_if<std::shared_ptr<IOxGroup>>(&record);
  return group != nullptr ? *group : nullptr;
}

}  // namespace ox
