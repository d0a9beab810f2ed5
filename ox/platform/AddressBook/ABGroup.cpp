#include "ox/platform/AddressBook/ABGroup.hpp"

#include "ox/platform/AddressBook/answer.hpp"
#include "ox/platform/AddressBook/live_records.hpp"
#include "ox/platform/store/contact_source.hpp"

namespace ox {

std::vector<std::shared_ptr<ABPerson>> ABGroup::members() const {
  return answer(
      [&] { return live_records::persons(*recordSource().children(key(), RecordKind::Person)); });
}

std::vector<std::shared_ptr<ABGroup>> ABGroup::subgroups() const {
  return answer(
      [&] { return live_records::groups(*recordSource().children(key(), RecordKind::Group)); });
}

bool ABGroup::addMember(const std::shared_ptr<ABPerson>& person) {
  if (!person) return false;
  return answer([&] { return recordSource().link(key(), person->key(), RecordKind::Person); });
}

bool ABGroup::removeMember(const std::shared_ptr<ABPerson>& person) {
  if (!person) return false;
  return answer([&] { return recordSource().unlink(key(), person->key(), RecordKind::Person); });
}

bool ABGroup::addSubgroup(const std::shared_ptr<ABGroup>& group) {
  if (!group) return false;
  return answer([&] { return recordSource().link(key(), group->key(), RecordKind::Group); });
}

bool ABGroup::removeSubgroup(const std::shared_ptr<ABGroup>& group) {
  if (!group) return false;
  return answer([&] { return recordSource().unlink(key(), group->key(), RecordKind::Group); });
}

}  // namespace ox
