#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

#include "ox/base/data.hpp"
#include "ox/platform/store/committed/container_list.hpp"
#include "ox/platform/store/committed/content_cache.hpp"
#include "ox/platform/store/committed/generation_cache.hpp"
#include "ox/platform/store/committed/known_values.hpp"
#include "ox/platform/store/committed/record_index.hpp"
#include "ox/platform/store/file/journal_rows.hpp"
#include "ox/platform/store/file/store_file.hpp"
#include "ox/platform/store/values/act.hpp"
#include "ox/platform/store/values/many_records.hpp"
#include "ox/platform/store/values/record_keys.hpp"
#include "ox/records/property_bag.hpp"

namespace ox {

// The committed rows of one store file as this process knows them: an index of all records once
// somebody lists, and bounded caches of values and links. What other processes commit is looked for
// when the caller says refresh; until then everything is as of the last look. Used by one thread at
// a time; every operation throws StoreError when the file fails.
class CommittedRecords {
 public:
  using Entry = RecordEntry;

  explicit CommittedRecords(StoreFile& file);

  // Whether other processes have committed is looked for now, or only when the last look is older
  // than 10 ms.
  enum class Look { Now, AtMostEvery10ms };
  void refresh(Look look);
  // The next refresh looks, whatever was seen before.
  void lookAgain() {
    seenVersion_ = -1;
    lastLook_ = -1;
  }
  // The last act as of the last look; missing when anybody else has committed since, and where the
  // journal has lost it.
  std::optional<ActRow> lastActUnlessOutdated();
  // As of the last look.
  const StoreMoment& moment() const { return seen_.moment; }
  // The row that the next record to be added will have, as of the last look.
  std::int64_t nextRow() const { return seen_.nextRecord; }
  // Rises whenever committed links may have changed, by whomever.
  std::uint64_t linkGeneration() const { return linkGeneration_; }

  ContainerList& containers() { return containers_; }
  RecordKeys records(RecordKind kind);
  RecordKeys recordsIn(std::string_view containerIdentifier, RecordKind kind);
  // Asked of the file, so that nobody loads the index to learn it.
  bool isEmpty(std::string_view containerIdentifier, RecordKind kind);
  std::optional<Entry> find(std::string_view identifier);
  std::optional<Entry> find(const RecordKey& key);
  // Null when there is no such record. Borrowed until the next question or refresh: every value
  // that is read comes through here.
  const std::shared_ptr<const PropertyBag>& values(const RecordKey& key);
  // Null values when there is no such record.
  KnownContent content(const RecordKey& key);
  // Null without a picture; throws ImageReadError when its bytes are damaged.
  Data image(const RecordKey& key);
  RecordKeysPtr children(const RecordKey& group, RecordKind kind);
  RecordKeysPtr parents(const RecordKey& record);

  // About many at once (many_at_once.cpp); one answer for each key, in their order.
  std::vector<std::optional<Entry>> find(std::span<const RecordKey> keys);
  std::vector<std::optional<Entry>> find(std::span<const std::string> identifiers);
  // Of that kind, their own identifiers beginning with the text; at most so many.
  RecordKeys startingWith(std::string_view beginning, RecordKind kind, std::size_t atMost);
  // What is there of these rows, in their order. Throws DamagedRow.
  std::vector<Entry> inRows(const std::vector<std::int64_t>& rows);
  // Reads what is not in memory of these in one question, for whoever is going to ask for each.
  void meet(std::span<const RecordKey> keys);
  void meetContents(std::span<const RecordKey> keys);
  // See ContainerSource.
  std::vector<RecordContent> contents(std::span<const RecordKey> keys, std::size_t bytes);
  std::vector<EncodedContent> encodedContents(std::span<const RecordKey> keys, std::size_t bytes);
  std::vector<RecordKeysPtr> children(std::span<const RecordKey> groups, RecordKind kind);
  std::vector<FoundRecords> matches(std::string_view containerIdentifier, RecordKind kind,
                                    std::span<const SoughtRecord> sought);

  // What this process knows of records that others have changed since.
  KnownValues& known() { return known_; }
  // What this process has written is committed. Throws nothing: what cannot be followed now is read
  // anew at the next look.
  void follow(const WrittenAct& written) noexcept;

 private:
  // What stands in a group. Null where a row that leads there is damaged.
  struct ChildLists {
    RecordKeysPtr persons;
    RecordKeysPtr groups;

    // Throws DamagedRow.
    const RecordKeysPtr& of(RecordKind kind) const;
  };

  struct Child {
    std::size_t group;  // its place among those that were asked for
    std::int64_t row;
    bool isSound;                         // what is read of it is what was written
    std::optional<RecordKind> kind = {};  // missing when there is no such record
    RecordKey key = {};
  };

  std::int64_t version();
  void loadIndex();
  void readRecordsAfter(std::int64_t row);
  void readNews();
  std::optional<ActRow> soundLastAct();
  bool readActsSince(const ActRow& seen, const ActRow& last);
  // The key is that of the record it is about, if that is there.
  void takeChange(const JournalRow& change, const RecordKey& key);
  NumberedLinks linksOf(const JournalRow& change);
  void forgetParentsOf(const std::unordered_set<std::int64_t>& rows);
  void followWritten(const WrittenAct& written);
  void startAnew();
  void forgetIndex();
  void forgetLink(const RecordKey& group, const RecordKey& child);
  void forgetLinks();
  void forgetValuesOf(const RecordKey& key);
  void forgetValues();
  ContentCache::Ahead ahead() const;
  const RecordKey* keyInRow(std::int64_t row) const;
  std::optional<Entry> kept(std::optional<Entry> found);
  KnownContent readStored(const RecordKey& key, Entry entry);
  std::vector<std::optional<Entry>> findInFile(const sqlite::KeyList& uids);
  std::vector<Child> readLinksToChildren(std::span<const RecordKey> groups);
  void findOut(std::vector<Child>& children);
  std::vector<ChildLists> readChildren(std::span<const RecordKey> groups);

  StoreFile& file_;

  std::int64_t seenVersion_ = -1;  // data_version at the last look
  ActRow seen_;                    // the last act at the last look
  std::int64_t seenRow_ = 0;       // the last record in the index
  std::int64_t lastLook_ = -1;     // in milliseconds of a coarse clock
  std::uint64_t linkGeneration_ = 1;

  ContainerList containers_;
  bool indexLoaded_ = false;
  RecordIndex index_;

  GenerationCache<RecordKey, Entry> entries_;  // while there is no index

  // The record read last, in front of the cache: properties are read one after another.
  RecordKey lastKey_;
  std::shared_ptr<const PropertyBag> lastValues_;
  ContentCache contents_;
  KnownValues known_;
  GenerationCache<RecordKey, ChildLists> childLists_;
  GenerationCache<RecordKey, RecordKeysPtr> parentLists_;
};

}  // namespace ox
