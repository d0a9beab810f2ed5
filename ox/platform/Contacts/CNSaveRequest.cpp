#include "ox/platform/Contacts/CNSaveRequest.hpp"

#include <utility>

#include "ox/platform/Contacts/CNContactStore.hpp"
#include "ox/platform/store/values/save_request.hpp"

namespace ox {

std::shared_ptr<CNMutableContact> CNMutableContact::init() {
  std::shared_ptr<CNMutableContact> contact(
      new CNMutableContact(RecordKey::make(RecordKind::Person)));
  contact->hasValues_ = true;
  return contact;
}

std::shared_ptr<CNMutableContact> CNMutableContact::mutableCopy(const CNContact& source) {
  std::shared_ptr<CNMutableContact> copy(new CNMutableContact(source.key()));
  copy->properties_ = source.properties();
  copy->image_ = source.imageData();
  copy->hasValues_ = source.hasValues_;
  if (!source.hasValues_) CNContactStore::fetchValues(*copy);
  return copy;
}

Text CNGroup::name() const {
  const auto* name = properties_.text(property_id::kGroupName);
  return name != nullptr ? Text(*name) : std::nullopt;
}

void CNMutableGroup::setName(const Text& name) {
  properties_.set(property_id::kGroupName, Object(name));
}

std::shared_ptr<CNMutableGroup> CNMutableGroup::init() {
  return std::shared_ptr<CNMutableGroup>(new CNMutableGroup(RecordKey::make(RecordKind::Group)));
}

std::shared_ptr<CNSaveRequest> CNSaveRequest::init() {
  return std::shared_ptr<CNSaveRequest>(new CNSaveRequest);
}

void CNSaveRequest::addContact_toContainerWithIdentifier(std::shared_ptr<CNMutableContact> contact,
                                                         TextView identifier) {
  if (!contact) return;
  additions_.push_back({std::move(contact), nullptr, identifier.toText().value_or("")});
}

void CNSaveRequest::updateContact(std::shared_ptr<CNMutableContact> contact) {
  if (contact) updates_.push_back(std::move(contact));
}

void CNSaveRequest::addGroup_toContainerWithIdentifier(std::shared_ptr<CNMutableGroup> group,
                                                       TextView identifier) {
  if (!group) return;
  additions_.push_back({nullptr, std::move(group), identifier.toText().value_or("")});
}

void CNSaveRequest::addMember_toGroup(TextView contactIdentifier, TextView groupIdentifier) {
  links_.push_back(
      {groupIdentifier.toText().value_or(""), contactIdentifier.toText().value_or("")});
}

void CNSaveRequest::addSubgroup_toGroup(TextView subgroupIdentifier, TextView groupIdentifier) {
  addMember_toGroup(subgroupIdentifier, groupIdentifier);
}

void CNSaveRequest::addContainer(ContainerInfo container) {
  newContainers_.push_back(std::move(container));
}

void CNSaveRequest::removeContainerWithIdentifier_force(TextView identifier, bool force) {
  removedContainers_.push_back({identifier.toText().value_or(""), force});
}

Text CNSaveRequest::refusal() const {
  const auto check = [](const CNMutableContact& contact) -> Text {
    if (contact.hasValues_) return std::nullopt;
    return "the values of the contact " + contact.key_.text() + " are not known";
  };
  for (const auto& addition : additions_) {
    if (!addition.contact) continue;
    if (auto why = check(*addition.contact)) return why;
  }
  for (const auto& contact : updates_) {
    if (auto why = check(*contact)) return why;
  }
  return std::nullopt;
}

SaveRequest CNSaveRequest::collect() const {
  SaveRequest request;
  request.newContainers = newContainers_;
  for (const auto& removal : removedContainers_) {
    request.removedContainers.push_back({removal.container, removal.withRecords});
  }
  request.additions.reserve(additions_.size());
  for (const auto& addition : additions_) {
    if (addition.contact) {
      request.additions.push_back({addition.contact->key_, RecordKind::Person, addition.container,
                                   addition.contact->properties_, addition.contact->image_});
    } else {
      request.additions.push_back({addition.group->key_, RecordKind::Group, addition.container,
                                   addition.group->properties(), nullptr});
    }
  }
  for (const auto& contact : updates_) {
    request.replacements.push_back({contact->key_, contact->properties_, contact->image_});
  }
  for (const auto& link : links_) {
    request.links.push_back({RecordKey::of(link.group), RecordKey::of(link.child)});
  }
  return request;
}

void CNSaveRequest::takeKeys(const SaveRequest& executed) {
  for (std::size_t i = 0; i < additions_.size(); ++i) {
    if (additions_[i].contact) {
      additions_[i].contact->key_ = executed.additions[i].key;
    } else {
      additions_[i].group->key_ = executed.additions[i].key;
    }
  }
}

}  // namespace ox
