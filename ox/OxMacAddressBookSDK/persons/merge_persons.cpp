#include "ox/OxMacAddressBookSDK/persons/merge_persons.hpp"

#include <algorithm>

#include "ox/OxAddressBookSDK/tags/OxTagManager.hpp"
#include "ox/OxMacAddressBookSDK/_ABGroup/_ABGroup.hpp"
#include "ox/OxMacAddressBookSDK/ground/host_records.hpp"
#include "ox/platform/AddressBook/ABAddressBook.hpp"

namespace ox {
namespace {

bool isIn(const auto& list, const auto& element) {
  return std::find(list.begin(), list.end(), element) != list.end();
}

// A book that held no record is not among those that persons are looked up in; its tags are.
void giveTags(const std::vector<std::string>& tags, _ABPerson& person, OxMacAddressBook& book) {
  if (tags.empty()) return;
  if (person.personAddressBook() || !book.tagManager()) {
    person.changeTags({}, tags);
  } else {
    book.tagManager()->setTags_forPersonID(tags, person.ID());
  }
}

}  // namespace

PersonMerge mergeOf(const _ABPerson& person, const _ABPerson& other) {
  PersonMerge merge;
  merge.values = joinedValues(person.allValues(), other.allValues());
  const auto picture = person.imageData();
  const auto otherPicture = other.imageData();
  merge.takesPicture = otherPicture && !picture;
  merge.leavesPicture = otherPicture && picture && *otherPicture != *picture;
  const auto tags = person.tagArray();
  for (const auto& tag : other.tagArray()) {
    if (!isIn(tags, tag)) merge.tags.push_back(tag);
  }
  std::vector<RecordKey> joined;
  for (const auto& group : person.parentGroups()) joined.push_back(group->key());
  const bool sameBook = person.addressBookID() == other.addressBookID();
  for (const auto& each : other.parentGroups()) {
    const auto group = hostGroup(each);
    if (!group || isIn(joined, group->key())) continue;
    (sameBook ? merge.groups : merge.groupsLeft).push_back(group);
  }
  return merge;
}

bool mergeInto(_ABPerson& person, const std::shared_ptr<_ABPerson>& other,
               const PersonMerge& merge) {
  bool done = person.setAllValues(merge.values.values);
  person.removeDisplayNameCache();
  if (merge.takesPicture) done = person.setImageData(other->imageData()) && done;
  if (!merge.tags.empty()) person.changeTags({}, merge.tags);
  const auto self = std::static_pointer_cast<_ABPerson>(person.shared_from_this());
  for (const auto& group : merge.groups) group->addPersons({self});
  return ABAddressBook::sharedAddressBook()->removeRecord(other) && done;
}

std::shared_ptr<_ABPerson> moveInto(OxMacAddressBook& book,
                                    const std::shared_ptr<_ABPerson>& person) {
  auto moved = recordOf(book.newPerson());
  if (!moved || !moved->setAllValues(person->allValues())) return nullptr;
  moved->removeDisplayNameCache();
  if (const auto picture = person->imageData(); picture && !moved->setImageData(picture)) {
    return nullptr;
  }
  giveTags(person->tagArray(), *moved, book);
  if (!ABAddressBook::sharedAddressBook()->removeRecord(person)) return nullptr;
  return moved;
}

}  // namespace ox
