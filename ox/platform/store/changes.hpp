#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "ox/base/data.hpp"
#include "ox/base/record_key.hpp"
#include "ox/records/property_bag.hpp"

namespace ox {

struct ContainerInfo {
  std::string identifier;
  std::string name;
  std::int32_t type = 0;  // 0 unassigned, 1 local, 2 Exchange, 3 CardDAV
};
using ContainerPtr = std::shared_ptr<const ContainerInfo>;

// The store failed: it cannot be opened, read or written. kind() tells what a program may do about
// it.
class StoreError : public std::runtime_error {
 public:
  enum class Kind { Busy, NotAStore, NewerSchema, Unavailable, Corrupt, Denied };

  StoreError(Kind kind, const std::string& what) : std::runtime_error(what), kind_(kind) {}
  Kind kind() const { return kind_; }

 private:
  Kind kind_;
};

// The file can be read but one record of it cannot.
class DamagedRecord : public StoreError {
 public:
  explicit DamagedRecord(const std::string& what) : StoreError(Kind::Corrupt, what) {}
};

// A stored picture that cannot be read back.
class ImageReadError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// How far a store has come: equal as long as nobody, this process included, commits anything.
struct StoreMoment {
  std::int64_t version = -1;  // another one after commits elsewhere
  std::uint64_t commits = 0;  // of this process

  bool operator==(const StoreMoment&) const = default;
};

struct NewRecord {
  RecordKey key;
  RecordKind kind = RecordKind::Person;
  std::string container;  // identifier or standard id
  PropertyBag properties;
  Data image;
  // contentFingerprint of both, for whoever has worked it out already.
  std::optional<std::uint64_t> fingerprint = std::nullopt;
  bool leftOut = false;  // see SaveRequest
};

// Replaces all values of a committed record.
struct ReplacedRecord {
  RecordKey key;
  PropertyBag properties;
  Data image;
  bool leftOut = false;  // see SaveRequest
};

struct Link {
  RecordKey group;
  RecordKey child;
  bool leftOut = false;  // see SaveRequest
};

struct ContainerRemoval {
  std::string identifier;
  bool withRecords = false;  // false: refused while the container holds records
};

// One request of the container view: committed as one transaction, in the order of the lists.
struct SaveRequest {
  std::vector<ContainerInfo> newContainers;
  std::vector<NewRecord> additions;
  std::vector<ReplacedRecord> replacements;
  std::vector<Link> removedLinks;  // one that is not there is left alone
  std::vector<Link> links;         // one that exists already is left alone
  std::vector<ContainerRemoval> removedContainers;

  // For a request that was put together from what the store held: from before it was looked at.
  // The moment after the request once that is written.
  std::optional<StoreMoment> moment = std::nullopt;
  // Answers whether others had committed since.
  bool outdated = false;
  // What then becomes of it. LeaveOut: additions are left out that are there by now (by the UID of
  // their card; a person without one by its content), and in any case replacements of records that
  // are gone and links that cannot be made. All of these are marked, the rest is written.
  enum class WhenOutdated : std::uint8_t { Refuse, LeaveOut };
  WhenOutdated whenOutdated = WhenOutdated::Refuse;

  std::string reason;  // why nothing was written, when execute answers false
};

// What a save of the record view did.
struct SaveReport {
  bool done = false;
  std::string reason;                // why not, when not done
  std::vector<std::string> dropped;  // edits lost to a removal elsewhere, one sentence each
};

// What the record view holds that no save has written yet.
struct UnsavedChanges {
  struct Value {
    RecordKey key;
    PropertyId property;  // 0: the image
  };
  std::vector<Value> values;
  std::vector<RecordKey> removals;
  std::vector<Link> addedLinks;
  std::vector<Link> removedLinks;

  bool empty() const {
    return values.empty() && removals.empty() && addedLinks.empty() && removedLinks.empty();
  }
};

}  // namespace ox
