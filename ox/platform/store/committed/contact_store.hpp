#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <utility>
#include <vector>

#include "ox/base/sqlite/connection.hpp"
#include "ox/base/sqlite/error.hpp"
#include "ox/platform/store/committed/generation_cache.hpp"
#include "ox/platform/store/committed/record_index.hpp"
#include "ox/platform/store/file/schema.hpp"
#include "ox/platform/store/file/statements.hpp"
#include "ox/platform/store/values/container_info.hpp"
#include "ox/platform/store/values/record_changes.hpp"
#include "ox/platform/store/values/save_request.hpp"
#include "ox/platform/store/values/store_error.hpp"

namespace ox {

// The committed rows of one store file. Everything is opened, loaded and prepared when it is first
// needed. Used by one thread at a time; every operation throws StoreError when the file fails.
class ContactStore {
 public:
  using Entry = RecordEntry;

  explicit ContactStore(std::string path);
  ~ContactStore();
  ContactStore(const ContactStore&) = delete;
  ContactStore& operator=(const ContactStore&) = delete;

  const std::string& path() const { return path_; }

  // Whether other processes have committed is looked for now, or only when the last look is older
  // than 10 ms.
  enum class Look { Now, AtMostEvery10ms };
  void refresh(Look look);
  // Rises whenever committed links may have changed, by whomever.
  std::uint64_t linkGeneration() const { return linkGeneration_; }

  // As of the last look.
  StoreMoment moment() const { return {seenVersion_, commits_}; }

  const std::vector<ContainerPtr>& containers();
  // By row; null when there is none.
  ContainerPtr container(std::int32_t row);
  ContainerPtr containerNamed(std::string_view identifier);
  RecordKeys records(RecordKind kind);
  RecordKeys recordsIn(std::string_view containerIdentifier, RecordKind kind);
  std::optional<Entry> find(std::string_view identifier);
  std::optional<Entry> find(const RecordKey& key);
  // Null when there is no such record.
  std::shared_ptr<const PropertyBag> values(const RecordKey& key);
  // 0 when there is no such record.
  std::uint64_t fingerprint(const RecordKey& key);
  // Null without a picture; throws ImageReadError when its bytes are damaged.
  Data image(const RecordKey& key);
  RecordKeysPtr children(const RecordKey& group, RecordKind kind);
  RecordKeysPtr parents(const RecordKey& record);
  RecordKeys withCardUid(std::string_view containerIdentifier, RecordKind kind,
                         std::string_view uid);
  RecordKeys withFingerprint(std::string_view containerIdentifier, RecordKind kind,
                             std::uint64_t fingerprint);

  bool execute(SaveRequest& request);
  SaveReport commit(const RecordChanges& changes);
  void checkpoint();
  // Returns when every commit so far would survive a power cut; costs nothing when it would
  // already.
  void sync();

 private:
  struct Writing;

  // Runs the step; what the file refused becomes a StoreError that names it.
  template <typename Step>
  auto guarded(Step step) -> decltype(step());

  sqlite::Connection& database();
  sqlite::Statement& statement(Sql which);
  void loadContainers();
  void loadIndex();
  void readRecordsAfter(std::int64_t row);
  void readNews();
  void forgetLinks();
  std::int32_t containerRow(std::string_view identifier);  // 0 when there is none
  std::shared_ptr<const PropertyBag> readValues(const Entry& entry, std::int64_t count);
  void forgetValues();
  PropertyBag decodeNaming(const RecordKey& key, std::string_view bytes);
  RecordKeys keysOf(sqlite::Statement& rows, std::int32_t container, RecordKind kind);
  RecordKeysPtr linkedKeys(Sql which, const RecordKey& key, std::optional<RecordKind> kind);

  // One transaction around the step, then the memory follows.
  template <typename Step>
  void write(bool durable, Step step);
  void addContainer(const ContainerInfo& container, Writing& writing);
  void removeContainer(const ContainerRemoval& removal, Writing& writing);
  // Compares the request's moment with the store as it is under the write lock.
  void settleOutdated(SaveRequest& request);
  bool isThere(const NewRecord& record);
  void addRecord(NewRecord& record, Writing& writing);
  void replaceRecord(const ReplacedRecord& record, Writing& writing);
  void applyEdit(const RecordEdit& edit, Writing& writing, SaveReport& report);
  void removeRecord(const Entry& entry, Writing& writing);
  // Empty when the link stands now, else why it cannot.
  std::string addLink(const Link& link, Writing& writing);
  bool closesCircleOfRows(std::int64_t group, std::int64_t child);
  void removeLink(const Link& link, Writing& writing);
  void writeContent(Sql which, std::int64_t row, const PropertyBag& properties,
                    std::uint64_t fingerprint);
  void writeImage(std::int64_t row, const Data& image);
  void writeCustomProperties(const PropertyBag& properties);
  std::optional<Entry> findWriting(const RecordKey& key, const Writing& writing);

  std::string path_;
  sqlite::Connection database_;
  std::vector<sqlite::Statement> statements_;  // by Sql, prepared when first used
  bool durable_ = false;
  bool unsynced_ = false;  // something was committed without waiting for the disk

  std::int64_t seenVersion_ = -1;  // data_version at the last look
  std::uint64_t commits_ = 0;      // of ours, that changed something
  std::int64_t seenRow_ = 0;       // the last record in the index
  std::int64_t seenRemoval_ = 0;
  std::int64_t lastLook_ = -1;  // in milliseconds of a coarse clock
  std::uint64_t linkGeneration_ = 1;

  bool containersLoaded_ = false;
  std::vector<ContainerPtr> containers_;
  std::unordered_map<std::int32_t, ContainerPtr> containersByRow_;

  bool indexLoaded_ = false;
  RecordIndex index_;
  std::unordered_set<PropertyId> writtenCustomProperties_;

  // The record read last, in front of the cache: properties are read one after another.
  RecordKey lastKey_;
  std::shared_ptr<const PropertyBag> lastValues_;
  std::int64_t lastMissedRow_ = INT64_MIN / 2;
  GenerationCache<RecordKey, std::shared_ptr<const PropertyBag>> values_;
  GenerationCache<RecordKey, RecordKeysPtr> memberLists_;
  GenerationCache<RecordKey, RecordKeysPtr> subgroupLists_;
  GenerationCache<RecordKey, RecordKeysPtr> parentLists_;
};

// The identifier with every ":ABAccount" taken out.
std::string standardContainerId(std::string_view identifier);

template <typename Step>
auto ContactStore::guarded(Step step) -> decltype(step()) {
  try {
    return step();
  } catch (const sqlite::Error& error) {
    throwStoreError(path_, error);
  }
}

}  // namespace ox
