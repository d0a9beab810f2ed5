#include "ox/OxMacAddressBookSDK/admin/store_repair.hpp"

#include <algorithm>
#include <set>

#include "ox/OxAddressBookSDK/tags/OxTagManager.hpp"
#include "ox/OxAddressBookSDK/tags/tag_schema.hpp"
#include "ox/OxAddressBookSDK/tags/tag_store.hpp"
#include "ox/OxAddressBookSDK/tags/tag_table.hpp"
#include "ox/OxMacAddressBookSDK/admin/whole_act.hpp"
#include "ox/base/store_location.hpp"
#include "ox/platform/store/contact_source.hpp"
#include "ox/platform/store/schema/kept_copies.hpp"
#include "ox/platform/store/upkeep/repair.hpp"
#include "ox/platform/store/values/store_error.hpp"

namespace ox {
namespace {

void append(std::vector<std::string>& list, std::vector<std::string> more) {
  std::ranges::move(more, std::back_inserter(list));
}

// One for all steps.
void keepCopyFor(RepairReport& report) {
  if (report.copy.empty()) report.copy = keepCopy(contactStorePath(), "repair");
}

struct Leftovers {
  std::vector<RecordEntry> blank;
  std::vector<std::string> persons;  // that have tags, and were removed from this store
};

Leftovers leftoversNow() {
  followTags();  // what is owed to the tags belongs to them
  std::set<std::string> tagged;
  for (const auto& [who, tags] : allTagsIn(tagStorePath())) tagged.insert(who.second);
  Leftovers left;
  left.blank = blankRecordsIn(contactStorePath());
  std::erase_if(left.blank,
                [&](const RecordEntry& record) { return tagged.contains(record.key.text()); });
  const std::vector<std::string> persons(tagged.begin(), tagged.end());
  const auto records = recordSource().recordsWith(persons);
  // A tag file may serve other stores too, and a store may have lost a record without having
  // removed it: then its tags are still somebody's.
  const auto removed = removedRecordsIn(contactStorePath());
  for (std::size_t i = 0; i < persons.size(); ++i) {
    if (!records[i] && removed.contains(persons[i])) left.persons.push_back(persons[i]);
  }
  return left;
}

void removeLeftovers(RepairReport& report) {
  const auto isNothing = [](const Leftovers& left) {
    return left.blank.empty() && left.persons.empty();
  };
  if (isNothing(leftoversNow())) return;
  keepCopyFor(report);
  // Looked for once more: a copy takes its time, in which others go on.
  const auto left = leftoversNow();
  if (isNothing(left)) return;
  WholeAct act;
  for (const auto& record : left.blank) recordSource().remove(record.key, record.kind);
  for (const auto& person : left.persons) TagStore::shared().holdWithoutTags(person);
  const auto saved = act.save();
  if (!saved.contacts.done) {
    const auto& [kind, reason, subject] = saved.contacts.failure;
    throw StoreError(kind, reason, subject);
  }
  for (const auto& record : left.blank) {
    report.mended.push_back("removed " + record.key.text() + ", which holds nothing");
  }
  for (const auto& person : left.persons) {
    report.mended.push_back("removed the tags of " + person + ", which is no record any more");
  }
}

}  // namespace

RepairReport repairStoreAndTags() {
  auto report = repairStore(contactStorePath());
  append(report.mended, mendTagFile(tagStorePath(), [&] { keepCopyFor(report); }));
  append(report.left, OxTagManager::problems());
  // What looks as if it were of no use may belong to what is damaged.
  if (report.left.empty()) removeLeftovers(report);
  return report;
}

}  // namespace ox
