// How the identifiers of containers, records and books match.
#include "ox/OxMacAddressBookSDK/OxMacAddressBook.hpp"
#include "ox/OxMacAddressBookSDK/ground/containers.hpp"
#include "ox/OxMacAddressBookSDK/ground/service_types.hpp"
#include "ox/platform/AddressBook/ABAddressBook.hpp"

namespace ox {
namespace {

constexpr std::string_view kAccountSuffix = ":ABAccount";
constexpr std::string_view kPersonSuffix = ":ABPerson";
constexpr std::string_view kGroupSuffix = ":ABGroup";

bool contains(std::string_view text, std::string_view part) {
  return text.find(part) != std::string_view::npos;
}

// The first item that the record database knows, or that bears its suffix, decides; the others are
// passed over.
template <typename Items>
bool firstTellingItemIsKnown(const Items& items, ABAddressBook& records, std::string_view suffix) {
  for (const auto& item : items) {
    if (records.recordForKey(item->key())) return true;
    const Text identifier = item->identifier();
    if (identifier && contains(*identifier, suffix)) return false;
  }
  return false;
}

}  // namespace

Text OxMacAddressBook::standID(TextView identifier) {
  return identifier ? Text(withoutAll(*identifier, kAccountSuffix)) : std::nullopt;
}

Text OxMacAddressBook::standABPersonID(TextView identifier) {
  if (!identifier || contains(*identifier, kPersonSuffix)) return identifier.toText();
  return std::string(*identifier).append(kPersonSuffix);
}

bool OxMacAddressBook::needAddAdreessBook_ab_store(const CNContainerPtr& container,
                                                   const std::shared_ptr<ABAddressBook>& ab,
                                                   const std::shared_ptr<CNContactStore>& store) {
  if (!container || !ab || !store) return false;
  const auto groups = store->groupsMatchingPredicate_error(
      CNGroup::predicateForGroupsInContainerWithIdentifier(container->identifier()), nullptr);
  // A container that has groups is judged by them alone.
  if (!groups.empty()) return firstTellingItemIsKnown(groups, *ab, kGroupSuffix);
  return firstTellingItemIsKnown(contactsIn(*store, *container), *ab, kPersonSuffix);
}

bool OxMacAddressBook::hasContainerArray_addressArray(
    const std::vector<CNContainerPtr>& containers, const std::shared_ptr<OxMacAddressBook>& book) {
  if (!book) return false;
  if (book->serverType() == services::kLocal) return true;
  const Text bookID = book->ID();
  for (const auto& container : containers) {
    if (container && bookID && bookID == standID(container->identifier())) return true;
  }
  return false;
}

bool OxMacAddressBook::hasAddress_container(const BookList& books,
                                            const CNContainerPtr& container) {
  if (!container) return false;
  if (container->type() == CNContainerTypeLocal) return true;
  const Text identifier = standID(container->identifier());
  for (const auto& book : books) {
    if (book && identifier && book->ID() == identifier) return true;
  }
  return false;
}

}  // namespace ox
