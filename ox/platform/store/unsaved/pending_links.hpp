#pragma once

#include <cstdint>
#include <optional>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "ox/platform/store/values/act_ids.hpp"
#include "ox/platform/store/values/record_keys.hpp"
#include "ox/platform/store/values/unsaved_changes.hpp"

namespace ox {

class CommittedRecords;
class PendingValues;

// Unsaved link edits of the record view, each of an act, and the lists of members and sub-groups as
// that view sees them: the committed ones without the links that were taken away, then the links
// that were added, all without removed records. The edits stand in the order in which they were
// made; what a save writes, and the lists, follow from them and from what is committed. The lists
// are thrown away when the committed links change. Every edit costs the same however long the lists
// are; a list is put together anew only when it is asked for after an edit. Used under its owner's
// lock.
class PendingLinks {
 public:
  PendingLinks(CommittedRecords& committed, const PendingValues& values)
      : committed_(committed), values_(values) {}

  bool isLinked(const RecordKey& group, const RecordKey& child, RecordKind childKind);
  // Whether the link stands, or is gone, by an edit of none of these acts. That edit may be taken
  // back, so it spares nobody an edit of his own.
  bool isLinkedByOthers(const ActIds& acts, const RecordKey& group, const RecordKey& child);
  bool isUnlinkedByOthers(const ActIds& acts, const RecordKey& group, const RecordKey& child);
  // The link must not exist (must exist) in the record view, but by an edit of others.
  void add(ActId act, const RecordKey& group, const RecordKey& child, RecordKind childKind);
  void remove(ActId act, const RecordKey& group, const RecordKey& child, RecordKind childKind);
  // Takes the act's latest addition back, which is the latest edit of that link.
  void takeBackAddition(ActId act, const RecordKey& group, const RecordKey& child,
                        RecordKind childKind);
  // To be called before the record is marked as removed, whereby it disappears from every list.
  void forgetRecord(const RecordKey& key);

  RecordKeysPtr children(const RecordKey& group, RecordKind kind);
  RecordKeysPtr parents(const RecordKey& child);

  bool empty() const { return edits_.empty(); }
  // In the order in which they were made; without those of records that these acts removed.
  std::vector<Link> addedLinks(const ActIds& acts) const;
  std::vector<Link> removedLinks(const ActIds& acts) const;
  void clear(const ActIds& acts) noexcept;
  // To be called when the removal of records was taken back or has been written.
  void forgetLists() noexcept;

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
  enum class What : std::uint8_t { Add, Remove, TakenBack };
  // Taking a link away and adding it again makes a new edit, and gives the link the place at the
  // end that goes with it. An addition that its own act takes away again is taken back; another
  // act's is followed by a removal, for either act may be written or taken back without the other.
  struct Edit {
    Pair link;
    ActId act = kNobodysAct;
    RecordKind childKind = RecordKind::Person;
    What what = What::Add;
    bool isOverOthers = false;  // an addition of a link that stood by another act's
  };
  using EditIndex = std::uint32_t;
  using LatestEdits = std::unordered_map<Pair, EditIndex, PairHash>;

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
  // The additions to a group, valid while added_ names the same edit. One that was taken back is
  // not looked for in its list; it is passed over, and cleared away when half of the list is such.
  struct Additions {
    std::vector<EditIndex> list;
    std::size_t stale = 0;  // those that are no longer valid
  };
  using Lists = std::unordered_map<RecordKey, List>;

  Lists& lists(RecordKind kind) { return kind == RecordKind::Person ? memberLists_ : groupLists_; }
  List& list(const RecordKey& group, RecordKind kind);
  bool isValid(EditIndex addition) const;
  void push(const Edit& edit);
  void index(EditIndex edit);
  void indexAddition(EditIndex addition);
  // True when there was a valid one, which must be of that act to be taken back for good.
  bool dropAddition(const Pair& link, ActId act);
  void follow();
  void forgetIndex() noexcept;
  bool isWritten(const Edit& edit, const ActIds& acts) const;

  CommittedRecords& committed_;
  const PendingValues& values_;
  std::uint64_t seenGeneration_ = 0;
  std::vector<Edit> edits_;
  std::size_t takenBack_ = 0;

  // What follows from the edits.
  bool indexed_ = true;
  LatestEdits added_;    // links that stand by an unsaved addition
  LatestEdits removed_;  // links that were taken away, whether or not they were added again
  std::unordered_map<RecordKey, std::vector<RecordKey>> addedParents_;
  std::unordered_map<RecordKey, Additions> addedChildren_;
  std::unordered_set<RecordKey> editedGroups_;
  Lists memberLists_;
  Lists groupLists_;
};

}  // namespace ox
