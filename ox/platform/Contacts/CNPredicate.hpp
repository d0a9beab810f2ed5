#pragma once

#include <string>
#include <utility>
#include <vector>

#include "ox/base/record_key.hpp"
#include "ox/base/text.hpp"

namespace ox {

// A question to the container database, made by the predicate operations of CNContainer, CNContact
// and CNGroup. A value.
struct CNPredicate {
  enum class Kind {
    ContainerOfContact,
    ContainerOfGroup,
    ContainersWithIdentifiers,
    ContactsInContainer,
    ContactsWithIdentifiers,
    GroupsInContainer,
    GroupsWithIdentifiers,
  };

  Kind kind;
  std::vector<std::string> identifiers;  // a missing identifier leaves the list empty
  // Instead of an identifier: a record at hand need not be looked for by its text.
  RecordKey key = {};

  static CNPredicate one(Kind kind, TextView identifier) {
    CNPredicate predicate{kind, {}, {}};
    if (identifier) predicate.identifiers.emplace_back(*identifier);
    return predicate;
  }
};

}  // namespace ox
