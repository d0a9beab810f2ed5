#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "ox/base/export.hpp"
#include "ox/sync/login_settings.hpp"
#include "ox/sync/remote/remote_error.hpp"

namespace ox::sync {

struct SyncCounts {
  std::size_t added = 0;
  std::size_t changed = 0;
  std::size_t deleted = 0;
  // Deleted on this side and changed on the other, which wins: there again.
  std::size_t broughtBack = 0;

  bool operator==(const SyncCounts&) const = default;
};

// One step of a plan, for people.
struct PlannedChange {
  enum class Where : std::uint8_t { Here, There };
  enum class What : std::uint8_t { Add, Change, Delete, BringBack };
  Where where = Where::Here;
  What what = What::Add;
  std::string name;
  bool isGroup = false;
};

// A value of which both sides made another, as a run finds it. Theirs stands in the record.
struct NewConflict {
  std::string name;  // of the person or group
  std::string property;
  std::string theirs;  // for people
  std::string ours;

  bool operator==(const NewConflict&) const = default;
};

struct RefusedCard {
  std::string name;
  std::string href;  // empty: it never had one
  int code = 0;      // HTTP's; 0 without one
  std::string reason;
};

// What one run of one book came to.
struct BookReport {
  enum class State : std::uint8_t {
    InStep,             // done; refused cards and open conflicts may be left
    Planned,            // a dry run: nothing was changed
    NeedsConfirmation,  // both sides hold contacts and have never met; nothing was changed
    Guarded,            // it would have deleted too much; nothing was changed
    Failed,             // `failure` says why; what was committed before stays
    TryLater,           // another run, no network, a server that wants to be left alone
    Stopped,            // the host asked
  };
  std::string container;  // identifier
  std::string account;    // name of the container
  std::string book;       // name there
  State state = State::InStep;
  std::string failure;
  std::optional<RemoteFailure> kind;  // of the failure, where it was one of the other side's
  SyncCounts down;                    // done here; of a plan, what would be
  SyncCounts up;
  std::size_t conflicts = 0;              // that are open in this book
  std::vector<NewConflict> newConflicts;  // that it made; of a plan, that it would make
  std::vector<RefusedCard> refused;
  std::size_t kept = 0;  // of those, what was changed here of a book that takes no changes
  std::vector<std::string> notes;   // what the user should know: one sentence each
  std::vector<PlannedChange> plan;  // of Planned, NeedsConfirmation; of Guarded the deletions
  std::uint64_t requests = 0;
  std::uint64_t bytes = 0;
  double seconds = 0;
};

struct SyncProgress {
  enum class Step : std::uint8_t { Listing, Fetching, Sending, Writing };
  Step step = Step::Listing;
  std::string account;
  std::size_t done = 0;
  std::size_t all = 0;  // 0: not known
};

struct SyncOptions {
  std::vector<std::string> containers;  // identifiers; empty: every one that is in step
  bool isDryRun = false;
  bool listsAll = false;  // whatever the token says
  bool pulls = true;
  bool pushes = true;
  bool allowsDeletions = false;  // for once, what the guard would stop
  // What was changed here of a book that takes no changes becomes again what stands there.
  bool setsBack = false;
  // Asked before the first run of a book changes anything where both sides hold contacts. Missing:
  // it ends as NeedsConfirmation.
  std::function<bool(const BookReport& plan)> confirm = {};
  std::function<void(const SyncProgress&)> progress = {};
  WireHooks hooks = {};
};

// Brings the containers in step with their books, one after the other; one that fails does not keep
// the others from it. Each is one act of the store at its end: a run that fails or is killed before
// has changed nothing here, and what it has done elsewhere is found by the next one. Throws
// StoreError where the store cannot be read at all, and RemoteError (Usage) for a container that is
// in step with nothing.
OX_EXPORT std::vector<BookReport> synchronise(const SyncOptions& options);

// A run of one book that did something, or that failed in another way than the one before.
struct KnownRun {
  std::int64_t start = 0;  // milliseconds since 1970
  std::int64_t end = 0;
  SyncCounts down;
  SyncCounts up;
  std::size_t conflicts = 0;  // that it made
  std::size_t refused = 0;
  std::string failure;  // why it did not end in step; empty: it did
};

// Of that container (identifier), the last first. Throws StoreError.
OX_EXPORT std::vector<KnownRun> lastRuns(const std::string& container, std::size_t atMost);

// A value of which both sides made another. Theirs stands in the record.
struct OpenConflict {
  std::int64_t id = 0;
  std::string container;  // identifier
  std::string account;    // name of the container
  std::string record;     // identifier; empty when it is gone
  std::string name;       // of the person or group
  std::string property;
  std::string theirs;  // for people
  std::string ours;
  std::int64_t at = 0;  // milliseconds since 1970
};

OX_EXPORT std::vector<OpenConflict> openConflicts();

// Mine puts our value into the record, from where the next run sends it; Theirs leaves the record
// as it is. Either way the conflicts are settled, in one act. Throws StoreError, and RemoteError
// (Usage) for ours of a record that was removed.
enum class Settled : std::uint8_t { Mine, Theirs };
OX_EXPORT void resolveConflicts(const std::vector<std::int64_t>& ids, Settled settled);

}  // namespace ox::sync
