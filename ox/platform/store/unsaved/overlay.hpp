#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "ox/platform/store/committed/committed_records.hpp"
#include "ox/platform/store/unsaved/pending_additions.hpp"
#include "ox/platform/store/unsaved/pending_links.hpp"
#include "ox/platform/store/unsaved/pending_values.hpp"
#include "ox/platform/store/values/act_ids.hpp"
#include "ox/platform/store/values/record_changes.hpp"
#include "ox/records/search_query.hpp"

namespace ox {

// The committed records with this process's unsaved changes over them, each of which belongs to an
// act, or to nobody's. An unsaved change that equals what is committed is dropped, so that setting
// a value and setting it back leaves nothing to save. Used under its owner's lock.
class Overlay {
 public:
  explicit Overlay(CommittedRecords& committed)
      : committed_(committed), links_(committed, values_) {}

  // Committed, or created by a running act; also when its removal is unsaved.
  std::optional<RecordEntry> find(const RecordKey& key);
  std::optional<RecordEntry> find(std::string_view identifier);
  // Created by a running act alone.
  std::optional<RecordEntry> findCreated(const RecordKey& key) const;
  std::optional<RecordEntry> findCreated(std::string_view identifier) const;
  // As find, for each of them.
  std::vector<std::optional<RecordEntry>> find(std::span<const RecordKey> keys);
  std::vector<std::optional<RecordEntry>> find(std::span<const std::string> identifiers);
  // The act that has created the record; nobody's when it is committed.
  ActId creatorOf(const RecordKey& key) const;
  bool isRemoved(const RecordKey& key) const { return values_.isRemoved(key); }
  bool isWritable(const RecordKey& key) { return !isRemoved(key) && find(key).has_value(); }

  // The record view.
  RecordKeys records(RecordKind kind);
  // Of committed records those in these rows, rising, match; of those with unsaved values it is
  // found out. In creation order.
  RecordKeys personsMatching(const SearchQuery& query, const std::vector<std::int64_t>& rows);
  PropertyValue value(const RecordKey& key, PropertyId property);
  // See RecordSource.
  PropertyValue valueToChange(const RecordKey& key, PropertyId property);
  Data image(const RecordKey& key);
  RecordKeysPtr children(const RecordKey& group, RecordKind kind) {
    return links_.children(group, kind);
  }
  RecordKeysPtr parents(const RecordKey& record);

  // The container view: without the edits, with the records of running acts as they were created.
  RecordKeys recordsIn(std::string_view containerIdentifier, RecordKind kind);
  std::shared_ptr<const PropertyBag> storedValues(const RecordKey& key);
  Data storedImage(const RecordKey& key);
  RecordKeysPtr storedChildren(const RecordKey& group, RecordKind kind);
  // Of many at once; see ContainerSource.
  std::vector<RecordContent> storedContents(std::span<const RecordKey> keys, std::size_t bytes);
  std::vector<RecordKeysPtr> storedChildren(std::span<const RecordKey> groups, RecordKind kind);

  // The record must be writable.
  void setValue(ActId act, const RecordKey& key, RecordKind kind, PropertyId property,
                PropertyValue value);
  void setImage(ActId act, const RecordKey& key, Data image);
  void remove(ActId act, const RecordKey& key);
  // Why that link cannot be made; empty when it can. One that stands by an addition of none of
  // these acts can.
  std::string refusalOfLink(const ActIds& acts, const RecordKey& group, const RecordKey& child,
                            RecordKind childKind);
  // Whether there is anything to take away for these acts.
  bool canUnlink(const ActIds& acts, const RecordKey& group, const RecordKey& child,
                 RecordKind childKind) {
    return links_.isLinked(group, child, childKind) ||
           links_.isUnlinkedByOthers(acts, group, child);
  }
  // The link must be one that can be made (taken away).
  void link(ActId act, const RecordKey& group, const RecordKey& child, RecordKind childKind);
  void unlink(ActId act, const RecordKey& group, const RecordKey& child, RecordKind childKind);
  // Creates the records of the request, and its links, for that act. Additions whose identifier is
  // taken get a new one, written into the request; its links mean them. False with a reason in the
  // request when it is refused, as a whole. `acts`: those that are written together with it.
  bool create(ActId act, const ActIds& acts, SaveRequest& request);

  // What these acts want written, in the order in which it was done.
  RecordChanges changes(const ActIds& acts) const;
  std::vector<RecordKey> removals(const ActIds& acts) const;
  UnsavedChanges unsavedChanges(const ActIds& acts) const;
  // To be called once that is written.
  void noteWritten(const ActIds& acts);
  void takeBack(const ActIds& acts);

 private:
  void clear(const ActIds& acts);
  template <typename Id>
  std::vector<std::optional<RecordEntry>> withCreated(std::vector<std::optional<RecordEntry>> found,
                                                      std::span<const Id> ids) const;
  PropertyBag visibleValues(const RecordKey& key);
  bool isPicture(Data (Overlay::*read)(const RecordKey&), const RecordKey& key, const Data& image);
  bool wouldBeBelowItself(const RecordKey& group, const RecordKey& child);
  bool createLinks(ActId act, const ActIds& acts, SaveRequest& request);
  PropertyValue storedValue(const RecordKey& key, PropertyId property);
  PropertyValue knownValue(const RecordKey& key, PropertyId property);

  CommittedRecords& committed_;
  PendingValues values_;
  PendingAdditions additions_;
  PendingLinks links_;
};

}  // namespace ox
