#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "ox/base/data.hpp"
#include "ox/platform/store/values/act_ids.hpp"
#include "ox/platform/store/values/container_info.hpp"
#include "ox/platform/store/values/record_keys.hpp"
#include "ox/platform/store/values/store_error.hpp"
#include "ox/platform/store/values/unsaved_changes.hpp"
#include "ox/records/property_bag.hpp"
#include "ox/records/search_query.hpp"
#include "ox/records/tag_change.hpp"

namespace ox {

// What is known of a stored record without its values.
struct RecordInfo {
  RecordKey key;
  RecordKind kind = RecordKind::Person;
  ContainerPtr container;
};

// What the record view asks of the store below it, which answers with the committed rows and this
// process's unsaved changes. Every operation is safe from any thread and throws StoreError when the
// store itself fails; a refused edit is noticed (ox/base/failures.hpp) and answers false.
class RecordSource {
 public:
  RecordSource() = default;
  RecordSource(const RecordSource&) = delete;
  RecordSource& operator=(const RecordSource&) = delete;
  virtual ~RecordSource() = default;

  virtual RecordKeys records(RecordKind kind) = 0;
  // Persons that match, in creation order.
  virtual RecordKeys personsMatching(const SearchQuery& query) = 0;
  // Committed ones whose own identifiers begin with the text; at most so many.
  virtual RecordKeys recordsStartingWith(std::string_view beginning, RecordKind kind,
                                         std::size_t atMost) = 0;
  // Missing when there is no such record or it was removed, unsaved removals included.
  virtual std::optional<RecordInfo> record(std::string_view identifier) = 0;
  virtual std::optional<RecordInfo> record(const RecordKey& key) = 0;
  // The same for each of them.
  virtual std::vector<std::optional<RecordInfo>> recordsWith(
      std::span<const std::string> identifiers) = 0;
  virtual std::vector<std::optional<RecordInfo>> recordsWith(std::span<const RecordKey> keys) = 0;
  // A removed record keeps its values until the save; a missing object afterwards.
  virtual PropertyValue value(const RecordKey& key, PropertyId property) = 0;
  // The type of a custom property by its name; kABErrorInProperty when the store does not know it.
  virtual ABPropertyType storedType(std::string_view custom) = 0;
  // The same as this process knows it: for whoever reads it only to write it anew. What others have
  // changed since it was last read by value() is not in it, so that it is no change of whoever
  // writes.
  virtual PropertyValue valueToChange(const RecordKey& key, PropertyId property) = 0;
  virtual bool setValue(const RecordKey& key, RecordKind kind, PropertyId property,
                        PropertyValue value) = 0;
  // Null without an image. May throw ImageReadError.
  virtual Data imageData(const RecordKey& key) = 0;
  virtual bool setImageData(const RecordKey& key, Data image) = 0;
  virtual RecordKeysPtr children(const RecordKey& group, RecordKind kind) = 0;
  virtual RecordKeysPtr parents(const RecordKey& record) = 0;
  // Refused: a link that exists already, crosses containers or closes a circle.
  virtual bool link(const RecordKey& group, const RecordKey& child, RecordKind childKind) = 0;
  virtual bool unlink(const RecordKey& group, const RecordKey& child, RecordKind childKind) = 0;
  virtual bool remove(const RecordKey& key, RecordKind kind) = 0;
  // The record as text, for people and for finding the store file it lies in.
  virtual std::string description(const RecordKey& key, RecordKind kind) = 0;
  // Writes nobody's unsaved changes and those of the acts that run on this thread (RunningAct);
  // what acts of other threads have changed is seen, but neither written nor reverted nor told.
  // The changes of tags are written with them.
  virtual SaveReport save(std::vector<TagChange> tags) = 0;
  SaveReport save() { return save({}); }
  // The records that such a save removes.
  virtual RecordKeys unsavedRemovals() = 0;
  virtual UnsavedChanges unsavedChanges() = 0;
  virtual void revert() = 0;
  // Forgets what these acts have changed and created, and nothing else.
  virtual void takeBack(const ActIds& acts) = 0;
};

}  // namespace ox
