#pragma once

#include <memory>
#include <string>
#include <vector>

#include "ox/base/export.hpp"
#include "ox/platform/AddressBook/ABGroup.hpp"
#include "ox/platform/AddressBook/ABPerson.hpp"
#include "ox/platform/store/values/unsaved_changes.hpp"
#include "ox/records/tag_change.hpp"

namespace ox {

// The record database: every person and group of every account, as committed, plus this process's
// unsaved changes. One for the process, never destroyed, safe from any thread. A store that fails
// is noticed (ox/base/failures.hpp) and answers empty.
class OX_EXPORT ABAddressBook {
 public:
  static std::shared_ptr<ABAddressBook> sharedAddressBook();

  // In creation order.
  std::vector<std::shared_ptr<ABPerson>> people();
  std::vector<std::shared_ptr<ABGroup>> groups();
  // The persons in whom every word of the text occurs, in any order and whatever the case and the
  // accents, in what they are known by: names (also in Latin letters), company, nickname, e-mail,
  // town, note, and telephone numbers by their digits. `field:word` looks into one field of any
  // (docs/finding.md names them). In creation order; none for a text without words. By an index
  // beside the store, which the first search after others have written brings up to date.
  std::vector<std::shared_ptr<ABPerson>> peopleMatching(TextView words);
  // The same in names and nicknames alone, where no word names a field.
  std::vector<std::shared_ptr<ABPerson>> peopleNamed(TextView words);
  // Null when there is no such record, or it was removed.
  std::shared_ptr<ABRecord> recordForUniqueId(TextView uniqueId);
  // The same for whoever has the key at hand.
  std::shared_ptr<ABRecord> recordForKey(const RecordKey& key);
  // The same for each of them: the store is asked once.
  std::vector<std::shared_ptr<ABRecord>> recordsForUniqueIds(
      const std::vector<std::string>& uniqueIds);
  std::vector<std::shared_ptr<ABRecord>> recordsForKeys(const std::vector<RecordKey>& keys);
  // Those of that kind whose identifier, where it is one of ours, begins with the text in either
  // case: what people type of it. At most so many; what is not committed is not among them.
  std::vector<std::shared_ptr<ABRecord>> recordsStartingWith(TextView beginning, RecordKind kind,
                                                             std::size_t atMost);
  // Marks the record and its links as removed; the store follows at the save. False when refused.
  bool removeRecord(const std::shared_ptr<ABRecord>& record);

  // These are about the unsaved changes of this thread's acts and of nobody's act. What acts of
  // other threads have changed (a load, a WholeAct) is seen, but is theirs to save.

  // Writes every unsaved change in one durable transaction; false when it failed, and then nothing
  // was written and the changes are kept for the next try.
  bool save();
  // The same, with the reason, with what a removal elsewhere has overtaken, and with what this save
  // has won over. Changes of tags are written with them, for the tag file to follow.
  SaveReport saveAndReturnError(const std::vector<TagChange>& tags = std::vector<TagChange>());
  bool hasUnsavedChanges();
  UnsavedChanges unsavedChanges();
  // Forgets every unsaved change.
  void revert();

 private:
  ABAddressBook() = default;
};

}  // namespace ox
