// The predicate operations of CNContainer, CNContact and CNGroup.

#include <utility>

#include "ox/platform/Contacts/CNContact.hpp"
#include "ox/platform/Contacts/CNContainer.hpp"
#include "ox/platform/Contacts/CNGroup.hpp"

namespace ox {

using Kind = CNPredicate::Kind;

CNPredicate CNContainer::predicateForContainerOfContactWithIdentifier(TextView identifier) {
  return CNPredicate::one(Kind::ContainerOfContact, identifier);
}

CNPredicate CNContainer::predicateForContainerOfGroupWithIdentifier(TextView identifier) {
  return CNPredicate::one(Kind::ContainerOfGroup, identifier);
}

CNPredicate CNContainer::predicateForContainerOfRecord(const RecordKey& key, RecordKind kind) {
  return {kind == RecordKind::Person ? Kind::ContainerOfContact : Kind::ContainerOfGroup, {}, key};
}

CNPredicate CNContainer::predicateForContainersWithIdentifiers(
    std::vector<std::string> identifiers) {
  return {Kind::ContainersWithIdentifiers, std::move(identifiers), {}};
}

CNPredicate CNContact::predicateForContactsInContainerWithIdentifier(TextView identifier) {
  return CNPredicate::one(Kind::ContactsInContainer, identifier);
}

CNPredicate CNContact::predicateForContactsWithIdentifiers(std::vector<std::string> identifiers) {
  return {Kind::ContactsWithIdentifiers, std::move(identifiers), {}};
}

CNPredicate CNGroup::predicateForGroupsInContainerWithIdentifier(TextView identifier) {
  return CNPredicate::one(Kind::GroupsInContainer, identifier);
}

CNPredicate CNGroup::predicateForGroupsWithIdentifiers(std::vector<std::string> identifiers) {
  return {Kind::GroupsWithIdentifiers, std::move(identifiers), {}};
}

}  // namespace ox
