// The tags of a person, which the tag store of the person's book keeps.
#include "ox/OxAddressBookSDK/tags/OxTagManager.hpp"
#include "ox/OxMacAddressBookSDK/OxMacAddressBook.hpp"
#include "ox/OxMacAddressBookSDK/_ABPerson/_ABPerson.hpp"
#include "ox/OxMacAddressBookSDK/_ABPerson/tag_list.hpp"
#include "ox/OxMacAddressBookSDK/ground/tag_acts.hpp"
#include "ox/base/failures.hpp"

namespace ox {
namespace {

// Null when no discovered book holds the person: then there is nowhere to keep tags.
std::shared_ptr<OxTagManager> tagManagerOf(const _ABPerson& person) {
  const auto book = person.personAddressBook();
  return book ? book->tagManager() : nullptr;
}

}  // namespace

std::vector<std::string> _ABPerson::tagArray() const {
  const auto manager = tagManagerOf(*this);
  return manager ? manager->tagsByPersonID(ID()).value_or(std::vector<std::string>())
                 : std::vector<std::string>();
}

void _ABPerson::addTag(TextView tag) {
  const auto manager = tagManagerOf(*this);
  if (manager) ox::changeTags([&] { manager->addPersonID_forTag(ID(), tag); });
}

void _ABPerson::removeTag(TextView tag) {
  const auto manager = tagManagerOf(*this);
  if (manager) ox::changeTags([&] { manager->removePersonID_fromTag(ID(), tag); });
}

void _ABPerson::setTags(const std::optional<std::vector<std::string>>& tags) {
  const auto manager = tagManagerOf(*this);
  if (!manager) return;
  ox::changeTags(
      [&] { manager->setTags_forPersonID(tags ? *tags : std::vector<std::string>(), ID()); });
}

void _ABPerson::changeTags(const std::vector<std::string>& removed,
                           const std::vector<std::string>& added) {
  const auto manager = tagManagerOf(*this);
  if (manager) ox::changeTags([&] { manager->changeTags(removed, added, ID()); });
}

std::shared_ptr<OxMutableSingleValue> _ABPerson::tagsValue() const {
  return singleValueByMacValue_property(tagListObject(tagArray()),
                                        OxProperty::propertyWithName(OxProPertyTags));
}

void _ABPerson::setTagsValue(const std::shared_ptr<OxMutableSingleValue>& value) {
  const auto tags = value ? tagsOfObject(value->value()) : std::nullopt;
  if (!tags && value && !value->value().isMissing()) {
    return failures::noticeRefusal("tags must be a list of texts", key().text());
  }
  setTags(tags);
}

}  // namespace ox
