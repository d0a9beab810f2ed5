#pragma once

#include <cstdint>
#include <optional>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "ox/platform/store/values/record_keys.hpp"
#include "ox/platform/store/values/unsaved_changes.hpp"

namespace ox {

class CommittedRecords;

// Unsaved link edits of the record view, and the lists of members and sub-groups as that view sees
// them: the committed ones without the links that were taken away, then the links that were added.
// The edits are what a save writes; the lists follow from them and from what is committed, and are
// thrown away when the committed links change. Every edit costs the same however long the lists
// are; a list is put together anew only when it is asked for after an edit. Used under its owner's
// lock.
class PendingLinks {
 public:
  explicit PendingLinks(CommittedRecords& committed) : committed_(committed) {}

  bool isLinked(const RecordKey& group, const RecordKey& child, RecordKind childKind);
  // The link must not exist (must exist) in the record view.
  void add(const RecordKey& group, const RecordKey& child, RecordKind childKind);
  void remove(const RecordKey& group, const RecordKey& child, RecordKind childKind);
  // A removed record disappears from every list.
  void forgetRecord(const RecordKey& key);

  RecordKeysPtr children(const RecordKey& group, RecordKind kind);
  RecordKeysPtr parents(const RecordKey& child);

  bool empty() const { return added_.empty() && removed_.empty(); }
  // In the order in which they were made.
  std::vector<Link> addedLinks() const;
  std::vector<Link> removedLinks() const;
  void clear();

 private:
  struct Pair {
    RecordKey group;
    RecordKey child;
    bool operator==(const Pair&) const = default;
  };
  struct PairHash {
    std::size_t operator()(const Pair& pair) const {
      return pair.group.hash() * 31 + pair.child.hash();
    }
  };
  // Link edits with the number that tells their order, which is the order of the lists too: taking
  // a link away and adding it again gives it a new number, and the place at the end that goes with
  // it.
  using Edits = std::unordered_map<Pair, std::uint64_t, PairHash>;

  // One list as the record view sees it. A link that is taken away leaves a hole, so that the
  // others keep their places; the holes are closed when the list is asked for.
  struct Place {
    std::size_t index = 0;
    bool committed = false;
  };
  struct List {
    RecordKeys order;
    std::unordered_map<RecordKey, Place> places;
    RecordKeysPtr snapshot;  // null when an edit has made it stale

    void append(const RecordKey& child, bool committed);
    // Leaves a hole; true when the child stood there by a committed link.
    bool take(const RecordKey& child);
    void closeHoles();
  };
  // An addition, valid while added_ holds the same number for it. One that was taken back is not
  // looked for in its list; it is passed over, and cleared away when half of the list is such.
  struct Addition {
    std::uint64_t number = 0;
    RecordKey child;
    RecordKind kind = RecordKind::Person;
  };
  struct Additions {
    std::vector<Addition> list;
    std::size_t stale = 0;  // those that are no longer valid
  };
  using Lists = std::unordered_map<RecordKey, List>;

  Lists& lists(RecordKind kind) { return kind == RecordKind::Person ? memberLists_ : groupLists_; }
  List& list(const RecordKey& group, RecordKind kind);
  bool isValid(const RecordKey& group, const Addition& addition) const;
  void followStore();
  std::vector<Link> inOrder(const Edits& edits) const;

  CommittedRecords& committed_;
  std::uint64_t seenGeneration_ = 0;
  std::uint64_t nextEdit_ = 1;
  Edits added_;
  Edits removed_;
  std::unordered_map<RecordKey, std::vector<RecordKey>> addedParents_;
  std::unordered_map<RecordKey, Additions> addedChildren_;
  std::unordered_set<RecordKey> editedGroups_;
  std::unordered_set<RecordKey> goneRecords_;
  Lists memberLists_;
  Lists groupLists_;
};

}  // namespace ox
