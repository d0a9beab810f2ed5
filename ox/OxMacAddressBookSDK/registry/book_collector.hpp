#pragma once

#include <deque>
#include <vector>

#include "ox/OxMacAddressBookSDK/OxMacAddressBook.hpp"
#include "ox/platform/Contacts/CNContainer.hpp"

namespace ox {

// What stands for the local book in the rule that it is always listed.
enum class LocalBookRule { LocalBook, LocalOrICloudBook };

// The list of books while it is being built: local books at the front, the others behind in the
// order in which they were found. Used by one build on one thread.
class BookCollector {
 public:
  explicit BookCollector(LocalBookRule rule) : rule_(rule) {}

  // The book of that container.
  void add(const OxMacAddressBookPtr& book, const CNContainer& container);
  bool localBookMissing() const { return localBookMissing_; }
  std::vector<OxMacAddressBookPtr> books() const { return {books_.begin(), books_.end()}; }

 private:
  LocalBookRule rule_;
  bool localBookMissing_ = true;
  std::deque<OxMacAddressBookPtr> books_;
};

inline bool isLocal(const CNContainer& container) {
  return container.type() == CNContainerTypeLocal;
}

}  // namespace ox
