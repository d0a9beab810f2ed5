#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

#include "ox/base/sqlite/connection.hpp"
#include "ox/base/sqlite/error.hpp"
#include "ox/base/store_location.hpp"
#include "ox/base/uuid.hpp"
#include "ox/platform/store/file/statements.hpp"
#include "ox/platform/store/schema/schema.hpp"
#include "ox/platform/store/schema/store_connection.hpp"
#include "ox/platform/store/values/origin.hpp"
#include "ox/platform/store/values/store_error.hpp"
#include "ox/platform/store/values/store_moment.hpp"
#include "ox/records/property_types.hpp"

namespace ox {

// A custom property has another type in the store than in this process.
class PropertyOfTwoTypes : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// One store file: its connection, opened when first needed, its prepared statements, and how safe
// its commits are. Used by one thread at a time.
class StoreFile {
 public:
  explicit StoreFile(StoreAddress address) : address_(std::move(address)) {}
  ~StoreFile();
  StoreFile(const StoreFile&) = delete;
  StoreFile& operator=(const StoreFile&) = delete;

  const StoreAddress& address() const { return address_; }

  // Runs the step; what the file refused becomes a StoreError that names it.
  template <typename Step>
  auto guarded(Step step) -> decltype(step());

  sqlite::Connection& connection();
  sqlite::Statement& statement(Sql which);
  // To be called before an act that touches so many records: one of many comes to pages all over
  // the indexes, which are kept in memory from then on.
  void keepPagesFor(std::size_t records);

  // What the next commits outlive. A process that is killed loses nothing that was handed to the
  // system, which costs no wait; a power cut loses what the disk has not confirmed.
  enum class Outlive { Kill, PowerCut };
  void letCommits(Outlive outlive);
  // To be called once a commit has written that act, and whether it was told to be done or was only
  // found to be.
  enum class Commit : std::uint8_t { Done, Found };
  void noteCommit(const StoreMoment& act, Commit commit);
  // Whether an act of that name was committed after that moment. False where that cannot be read.
  bool isWritten(const StoreMoment& since, const Uuid& name);
  // A commit that failed when the log was synced has left all of it there, whole. As long as nobody
  // writes over that, whoever reads the log without its index (when all processes have ended, or
  // were killed) would find it committed, long after its writer was told that it failed. So a
  // commit of nothing is written over it, which needs no sync. Done as far as it goes.
  void coverFailedCommit();
  // Returns when every commit so far would survive a power cut; costs nothing when it would
  // already.
  void sync();
  // The same, and the log is brought into the file as far as that goes.
  void checkpoint();

  // Closes the file, and with it the log is brought into it, unless others have it open. What is
  // asked next opens it again. Nothing in a process that was forked since it was opened.
  void close();

  // The type of a custom property by its name; kABErrorInProperty when the store does not know it.
  ABPropertyType storedType(std::string_view custom);
  // Why values of that property cannot be written: the store knows it with another type than this
  // process does. Empty when they can.
  std::string refusalOf(PropertyId property);
  // Writes a row for each of these custom properties that the store does not know yet; throws
  // PropertyOfTwoTypes for one that it knows with another type. To be called inside a transaction;
  // forgetUncommitted when that is rolled back.
  void writeCustomProperties(std::span<const PropertyId> properties);
  // The row of that origin, of the process's own when it is missing, for an act of that number;
  // written unless it was before. Likewise.
  std::int64_t originRow(const std::optional<Origin>& origin, std::int64_t act);
  // What was written of both is rolled back.
  void forgetUncommitted();

 private:
  StoreAddress address_;
  StoreConnection store_;
  std::vector<sqlite::Statement> statements_;  // by Sql, prepared when first used
  Outlive outlive_ = Outlive::Kill;
  bool keepsManyPages_ = false;
  bool unsynced_ = false;                   // something was committed without waiting for the disk
  std::optional<SyncedAct> anchored_;       // by this process; missing until it may
  std::optional<StoreMoment> notAnchored_;  // the last act of this process, on the disk or not
  std::unordered_set<PropertyId> writtenCustomProperties_;
  std::optional<Origin> writtenOrigin_;
  std::int64_t originRow_ = 0;
  bool originIsCommitted_ = false;

  bool isOrigin(std::int64_t row);
  void anchorLastAct() noexcept;
};

template <typename Step>
auto StoreFile::guarded(Step step) -> decltype(step()) {
  try {
    return step();
  } catch (const sqlite::Error& error) {
    throwStoreError(address_.file(), error);
  } catch (const DamagedRow& error) {
    throw StoreError(StoreError::Kind::Corrupt, address_.name() + ": " + error.what(),
                     address_.name());
  }
}

}  // namespace ox
