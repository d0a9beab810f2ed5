#pragma once

#include <memory>
#include <string>
#include <vector>

#include "ox/base/export.hpp"
#include "ox/platform/Contacts/CNContact.hpp"
#include "ox/platform/Contacts/CNGroup.hpp"
#include "ox/platform/store/values/container_info.hpp"

namespace ox {

struct SaveRequest;

// A set of changes for the container database, executed as one transaction by
// CNContactStore::executeSaveRequest_error. Holds the contacts and groups given to it; their values
// are read when it is executed. Used by one thread at a time.
class OX_EXPORT CNSaveRequest {
 public:
  static std::shared_ptr<CNSaveRequest> init();

  void addContact_toContainerWithIdentifier(std::shared_ptr<CNMutableContact> contact,
                                            TextView identifier);
  // Replaces every value and the picture of a stored contact.
  void updateContact(std::shared_ptr<CNMutableContact> contact);
  void addGroup_toContainerWithIdentifier(std::shared_ptr<CNMutableGroup> group,
                                          TextView identifier);
  // Links by identifier; both must be stored already or be added by this request. A link that
  // exists is left alone.
  void addMember_toGroup(TextView contactIdentifier, TextView groupIdentifier);
  void addSubgroup_toGroup(TextView subgroupIdentifier, TextView groupIdentifier);
  // Refused when there is a container of the same standard id (the identifier without every
  // ":ABAccount") already, or when that is empty.
  void addContainer(ContainerInfo container);
  // Without force, refused while the container holds records. The first local container is never
  // removed.
  void removeContainerWithIdentifier_force(TextView identifier, bool force);

 private:
  friend class CNContactStore;
  CNSaveRequest() = default;
  SaveRequest collect() const;
  // Why the request cannot be executed as it stands; missing when it can.
  Text refusal() const;
  // Gives contacts and groups the identifiers they were stored under.
  void takeKeys(const SaveRequest& executed);

  struct Addition {
    std::shared_ptr<CNMutableContact> contact;  // or
    std::shared_ptr<CNMutableGroup> group;
    std::string container;
  };
  struct LinkByText {
    std::string group;
    std::string child;
  };
  struct Removal {
    std::string container;
    bool withRecords = false;
  };
  std::vector<Addition> additions_;
  std::vector<std::shared_ptr<CNMutableContact>> updates_;
  std::vector<LinkByText> links_;
  std::vector<ContainerInfo> newContainers_;
  std::vector<Removal> removedContainers_;
};

}  // namespace ox
