#include "ox/OxMacAddressBookSDK/admin/past.hpp"

#include <filesystem>

#include "ox/OxAddressBookSDK/tags/tag_store.hpp"
#include "ox/OxAddressBookSDK/tags/tag_table.hpp"
#include "ox/OxMacAddressBookSDK/ground/contacts_and_tags.hpp"
#include "ox/base/store_location.hpp"
#include "ox/platform/journal/journal.hpp"
#include "ox/platform/store/contact_source.hpp"
#include "ox/platform/store/journal/store_journal.hpp"
#include "ox/platform/store/schema/kept_copies.hpp"
#include "ox/platform/store/upkeep/eraser.hpp"
#include "ox/platform/store/values/store_error.hpp"

namespace ox {
namespace {

// What makes the tags of the one file those of the other.
std::vector<TagChange> differenceOf(const AllTags& now, const AllTags& then) {
  std::vector<TagChange> changes;
  for (const auto& [who, tags] : now) {
    const auto found = then.find(who);
    const auto after = found != then.end() ? found->second : std::vector<std::string>();
    if (tags != after) changes.push_back({who.first, who.second, tags, after});
  }
  for (const auto& [who, tags] : then) {
    if (!now.contains(who)) changes.push_back({who.first, who.second, {}, tags});
  }
  return changes;
}

// The rest goes on when one file fails: nothing of her must stay for the sake of another one.
template <typename Step>
bool erasedBy(Step step, ForgetReport& report) {
  try {
    return step();
  } catch (const std::exception& error) {
    report.left.emplace_back(error.what());
    return false;
  }
}

}  // namespace

UndoReport undoCommand(std::optional<std::int64_t> number) {
  auto report = journal::undo(number);
  followTags();
  return report;
}

UndoReport redoCommand() {
  auto report = journal::redo();
  followTags();
  return report;
}

UndoReport restoreStoreCopy(const std::string& name) {
  followTags();
  for (const auto& path : pathsOfCopies(contactStorePath())) {
    if (std::filesystem::path(path).stem() != name) continue;
    const auto tags = differenceOf(allTagsIn(tagStorePath()), allTagsIn(path + ".tags"));
    auto report = contactSource().journal().returnToCopy(path, tags);
    followTags();
    return report;
  }
  UndoReport report;
  report.reason = "there is no copy \"" + name + "\"";
  return report;
}

// The store comes last: whoever is killed before finds her there, and forgets her again.
ForgetReport forgetPerson(const RecordKey& person, const std::string& name) {
  ForgetReport report;
  const auto identifier = person.text();
  const auto before = journal::moment().number;
  followTags();  // what is owed of her shall not come back later
  for (const auto& copy : pathsOfCopies(contactStorePath())) {
    const bool held = erasedBy([&] { return eraseRecord(copy, person, name); }, report);
    const bool tagged = erasedBy([&] { return eraseTagsIn(copy + ".tags", identifier); }, report);
    if (held || tagged) ++report.copies;
  }
  TagStore::shared().leaveMoment();
  const bool tagged = erasedBy([&] { return eraseTagsIn(tagStorePath(), identifier); }, report);
  const bool held =
      erasedBy([&] { return contactSource().journal().erase(person, name, before); }, report);
  // Last: a copy that is begun from here on does not hold her.
  for (const auto& copy : sweepUnfinishedCopies(contactStorePath())) {
    report.left.push_back(copy + ": another program is making this copy; she may be in it");
  }
  report.found = held || tagged || report.copies > 0 || !report.left.empty();
  return report;
}

}  // namespace ox
