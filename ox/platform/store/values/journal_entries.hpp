#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "ox/base/failure.hpp"
#include "ox/base/record_key.hpp"
#include "ox/platform/store/values/container_info.hpp"
#include "ox/platform/store/values/origin.hpp"
#include "ox/platform/store/values/store_moment.hpp"
#include "ox/records/property_bag.hpp"
#include "ox/records/tag_change.hpp"

namespace ox {

// What a person calls one act: one commit, or all commits of an origin whose acts belong together.
struct JournalCommand {
  std::int64_t number = 0;  // of its first act
  std::int64_t at = 0;      // of its last one, in milliseconds since 1970
  Origin origin;
  // Records that it added (or brought back), changed (their links and tags too) and removed.
  std::uint64_t added = 0;
  std::uint64_t changed = 0;
  std::uint64_t removed = 0;
  std::optional<std::int64_t>
      takenBackBy;  // the command that has done so, if it is still in effect
};

// How far somebody has read the journal: every act up to that moment, and of the one after it what
// is before this record and this change (0: nothing of it yet).
struct JournalPlace {
  StoreMoment moment;
  std::int64_t record = 0;
  std::int64_t change = 0;

  bool operator==(const JournalPlace&) const = default;
};

// One thing that an act did to one record, account or list of tags.
struct JournalChange {
  enum class Kind : std::uint8_t {
    Added,     // the record; its values are those it has, or had before its next change
    Changed,   // before and after: the properties that changed; one that is missing was not there
    Removed,   // before: all of its properties
    Restored,  // a removed record came back
    Linked,    // the record is the group, other stands in it now
    Unlinked,
    AccountAdded,
    AccountRemoved,
    Tagged,
  };
  std::int64_t act = 0;
  std::int64_t command = 0;  // the number of the command that the act belongs to
  std::int64_t at = 0;       // in milliseconds since 1970
  Origin origin;
  Kind kind = Kind::Added;
  RecordKey record;  // none for accounts, and for tags of a person that is not known
  RecordKind recordKind = RecordKind::Person;
  RecordKey other;
  PropertyBag before;
  PropertyBag after;
  bool pictureChanged = false;
  ContainerInfo account;
  TagChange tags;
  JournalPlace behind;  // the place behind it, where a reader may go on
};

// Changes in the order in which they were made, and the place behind them.
struct JournalPart {
  std::vector<JournalChange> changes;
  JournalPlace next;
  bool isEnd = false;      // there are no more as yet
  bool startAnew = false;  // the journal does not reach back to the place, or tells of another past
};

// A record as it was once.
struct PastRecord {
  RecordKey key;
  RecordKind kind = RecordKind::Person;
  std::string container;  // identifier; empty when that account is gone
  PropertyBag properties;
  bool hasPicture = false;
  std::vector<RecordKey> groups;                 // it stood in
  std::optional<std::vector<std::string>> tags;  // missing: those it has now
};

struct PastRecordAnswer {
  enum class Was : std::uint8_t {
    There,
    NotThere,  // not yet, or not any more
    Unknown,   // the journal begins later
  };
  Was was = Was::Unknown;
  PastRecord record;
};

// A record that is gone and can be brought back by taking back the command that removed it.
struct RemovedRecord {
  PastRecord record;
  std::int64_t command = 0;
  std::int64_t at = 0;
};

// What became of taking a command back.
struct UndoReport {
  bool done = false;
  std::int64_t command = 0;    // the one that was taken back
  Origin origin;               // its origin
  std::int64_t number = 0;     // of the act that took it back
  std::uint64_t records = 0;   // that were touched
  std::vector<Failure> stays;  // what was changed since, each with the record and why
  std::string reason;          // why nothing was done
  bool isUnknown = false;      // because there is no such command
};

// The bounds of the journal.
struct JournalBounds {
  std::int64_t days = 90;
  std::int64_t bytes = 0;  // 0: 64 MiB, or a tenth of the store where that is more
};

}  // namespace ox
