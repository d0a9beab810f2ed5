#pragma once

#include <string>
#include <utility>
#include <vector>

#include "ox/base/record_key.hpp"
#include "ox/base/text.hpp"

namespace ox {

// A question to the container database, made by the predicate operations of CNContainer, CNContact
// and CNGroup. A value.
class CNPredicate {
 public:
  enum class Kind {
    ContainerOfContact,
    ContainerOfGroup,
    ContainersWithIdentifiers,
    ContactsInContainer,
    ContactsWithIdentifiers,
    GroupsInContainer,
    GroupsWithIdentifiers,
  };

  CNPredicate(Kind kind, std::vector<std::string> identifiers, const RecordKey& key = {})
      : kind_(kind), identifiers_(std::move(identifiers)), key_(key) {}
  // A missing identifier leaves the list empty.
  static CNPredicate one(Kind kind, TextView identifier) {
    CNPredicate predicate(kind, {});
    if (identifier) predicate.identifiers_.emplace_back(*identifier);
    return predicate;
  }

  Kind kind() const { return kind_; }
  const std::vector<std::string>& identifiers() const { return identifiers_; }
  // Instead of an identifier: a record at hand need not be looked for by its text.
  const RecordKey& key() const { return key_; }

 private:
  Kind kind_;
  std::vector<std::string> identifiers_;
  RecordKey key_;
};

}  // namespace ox
