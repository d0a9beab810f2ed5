#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "ox/base/export.hpp"
#include "ox/platform/Contacts/CNContact.hpp"
#include "ox/platform/Contacts/CNContainer.hpp"
#include "ox/platform/Contacts/CNGroup.hpp"
#include "ox/platform/Contacts/CNSaveRequest.hpp"

namespace ox {

// The container database: committed records by container. A cheap handle on the one store; safe
// from any thread. A query that fails is noticed (ox/base/failures.hpp) and answers an empty list;
// the error text, asked for or not, says why.
class OX_EXPORT CNContactStore {
 public:
  static std::shared_ptr<CNContactStore> init();

  // Without a predicate every container: the local one first, then in creation order.
  std::vector<CNContainerPtr> containersMatchingPredicate_error(
      const std::optional<CNPredicate>& predicate, std::string* error);
  // Without keys to fetch only identifiers are read; with any, every value.
  std::vector<CNContactPtr> unifiedContactsMatchingPredicate_keysToFetch_error(
      const CNPredicate& predicate, const std::vector<std::string>& keys, std::string* error);
  std::vector<CNGroupPtr> groupsMatchingPredicate_error(const std::optional<CNPredicate>& predicate,
                                                        std::string* error);
  // One transaction, whole or not at all, committed at once. False when nothing was written: an
  // unknown container, a refused removal, a failing store.
  bool executeSaveRequest_error(CNSaveRequest& request, std::string* error);

 private:
  friend class CNMutableContact;
  CNContactStore() = default;
  // Every committed value and the picture of the contact; none when the store fails.
  static void fetchValues(CNContact& contact);
};

}  // namespace ox
