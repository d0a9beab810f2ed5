#include "ox/platform/Contacts/CNContactStore.hpp"

#include <exception>
#include <utility>

#include "ox/base/failures.hpp"
#include "ox/platform/store/contact_source.hpp"

namespace ox {
namespace {

using Kind = CNPredicate::Kind;

// The one place where a failing store meets the container database: noticed, handed to the
// caller who asked for it, and the answer is the empty one.
template <typename Question>
auto answer(std::string* error, Question question) -> decltype(question()) {
  try {
    return question();
  } catch (const std::exception& failure) {
    failures::notice(failure);
    if (error != nullptr) *error = failure.what();
    return decltype(question())();
  }
}

std::vector<ContainerPtr> containersFor(const CNPredicate& predicate) {
  std::vector<ContainerPtr> found;
  const auto kind =
      predicate.kind() == Kind::ContainerOfContact ? RecordKind::Person : RecordKind::Group;
  if (!predicate.key().isNone()) {
    if (auto container = containerSource().containerOf(predicate.key(), kind)) {
      found.push_back(std::move(container));
    }
  }
  for (const auto& identifier : predicate.identifiers()) {
    ContainerPtr container;
    if (predicate.kind() == Kind::ContainersWithIdentifiers) {
      container = containerSource().containerNamed(identifier);
    } else if (predicate.kind() == Kind::ContainerOfContact ||
               predicate.kind() == Kind::ContainerOfGroup) {
      container = containerSource().containerOf(identifier, kind);
    }
    if (container) found.push_back(std::move(container));
  }
  return found;
}

// The records that the predicate asks for, of that kind.
RecordKeys keysFor(const CNPredicate& predicate, RecordKind kind) {
  const bool byContainer =
      predicate.kind() ==
      (kind == RecordKind::Person ? Kind::ContactsInContainer : Kind::GroupsInContainer);
  const bool byId = predicate.kind() == (kind == RecordKind::Person ? Kind::ContactsWithIdentifiers
                                                                    : Kind::GroupsWithIdentifiers);
  RecordKeys keys;
  for (const auto& identifier : predicate.identifiers()) {
    if (byContainer) {
      const auto held = containerSource().recordsIn(identifier, kind);
      keys.insert(keys.end(), held.begin(), held.end());
    } else if (byId && containerSource().containerOf(identifier, kind)) {
      keys.push_back(RecordKey::of(identifier));
    }
  }
  return keys;
}

}  // namespace

std::shared_ptr<CNContactStore> CNContactStore::init() {
  return std::shared_ptr<CNContactStore>(new CNContactStore);
}

std::vector<CNContainerPtr> CNContactStore::containersMatchingPredicate_error(
    const std::optional<CNPredicate>& predicate, std::string* error) {
  return answer(error, [&] {
    std::vector<CNContainerPtr> containers;
    for (auto& info : predicate ? containersFor(*predicate) : containerSource().containers()) {
      containers.push_back(std::make_shared<const CNContainer>(std::move(info)));
    }
    return containers;
  });
}

void CNContactStore::fetchValues(CNContact& contact) {
  answer(nullptr, [&] {
    const auto values = containerSource().committedValues(contact.key_);
    if (!values) return;
    contact.image_ = containerSource().committedImage(contact.key_);
    contact.properties_ = *values;
    contact.hasValues_ = true;
  });
}

std::vector<CNContactPtr> CNContactStore::unifiedContactsMatchingPredicate_keysToFetch_error(
    const CNPredicate& predicate, const std::vector<std::string>& keys, std::string* error) {
  return answer(error, [&] {
    std::vector<CNContactPtr> contacts;
    for (const auto& key : keysFor(predicate, RecordKind::Person)) {
      std::shared_ptr<CNContact> contact(new CNContact(key));
      if (!keys.empty()) fetchValues(*contact);
      contacts.push_back(std::move(contact));
    }
    return contacts;
  });
}

std::vector<CNGroupPtr> CNContactStore::groupsMatchingPredicate_error(
    const std::optional<CNPredicate>& predicate, std::string* error) {
  return answer(error, [&] {
    RecordKeys keys;
    if (predicate) {
      keys = keysFor(*predicate, RecordKind::Group);
    } else {
      for (const auto& container : containerSource().containers()) {
        const auto held = containerSource().recordsIn(container->identifier, RecordKind::Group);
        keys.insert(keys.end(), held.begin(), held.end());
      }
    }
    std::vector<CNGroupPtr> groups;
    for (const auto& key : keys) {
      std::shared_ptr<CNGroup> group(new CNGroup(key));
      if (const auto values = containerSource().committedValues(key)) group->properties_ = *values;
      groups.push_back(std::move(group));
    }
    return groups;
  });
}

bool CNContactStore::executeSaveRequest_error(CNSaveRequest& request, std::string* error) {
  return answer(error, [&] {
    auto collected = request.collect();
    const auto refused = request.refusal();
    if (!refused && containerSource().execute(collected)) {
      request.takeKeys(collected);
      return true;
    }
    const auto& reason = refused ? *refused : collected.reason;
    failures::noticeRefusal(reason);
    if (error != nullptr) *error = reason;
    return false;
  });
}

}  // namespace ox
