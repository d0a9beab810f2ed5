#pragma once

#include <mutex>

#include "ox/platform/store/committed/contact_store.hpp"
#include "ox/platform/store/contact_source.hpp"
#include "ox/platform/store/journal/store_journal.hpp"
#include "ox/platform/store/running_act.hpp"
#include "ox/platform/store/search/person_search.hpp"
#include "ox/platform/store/unsaved/overlay.hpp"

namespace ox {

// The store and this process's unsaved changes behind one lock: every operation may be called on
// any thread, and is one look or one change.
class LockedSource final : public ContactSource, private SyncSource {
 public:
  explicit LockedSource(const StoreAddress& address);

  StoreJournal& journal() override;
  void letGo() override;

  // RecordSource: record_view.cpp.
  RecordKeys records(RecordKind kind) override;
  RecordKeys recordsStartingWith(std::string_view beginning, RecordKind kind,
                                 std::size_t atMost) override;
  RecordKeys personsMatching(const SearchQuery& query) override;
  std::optional<RecordInfo> record(std::string_view identifier) override;
  std::optional<RecordInfo> record(const RecordKey& key) override;
  std::vector<std::optional<RecordInfo>> recordsWith(
      std::span<const std::string> identifiers) override;
  std::vector<std::optional<RecordInfo>> recordsWith(std::span<const RecordKey> keys) override;
  PropertyValue value(const RecordKey& key, PropertyId property) override;
  ABPropertyType storedType(std::string_view custom) override;
  PropertyValue valueToChange(const RecordKey& key, PropertyId property) override;
  bool setValue(const RecordKey& key, RecordKind kind, PropertyId property,
                PropertyValue value) override;
  Data imageData(const RecordKey& key) override;
  bool setImageData(const RecordKey& key, Data image) override;
  RecordKeysPtr children(const RecordKey& group, RecordKind kind) override;
  RecordKeysPtr parents(const RecordKey& record) override;
  bool link(const RecordKey& group, const RecordKey& child, RecordKind childKind) override;
  bool unlink(const RecordKey& group, const RecordKey& child, RecordKind childKind) override;
  bool remove(const RecordKey& key, RecordKind kind) override;
  std::string description(const RecordKey& key, RecordKind kind) override;
  SaveReport save(std::vector<TagChange> tags) override;
  RecordKeys unsavedRemovals() override;
  UnsavedChanges unsavedChanges() override;
  void revert() override;
  void takeBack(const ActIds& acts) override;

  // ContainerSource: container_view.cpp.
  std::vector<ContainerPtr> containers() override;
  ContainerPtr containerOf(std::string_view identifier, RecordKind kind) override;
  ContainerPtr containerOf(const RecordKey& key, RecordKind kind) override;
  ContainerPtr containerNamed(std::string_view identifier) override;
  RecordKeys recordsIn(std::string_view containerIdentifier, RecordKind kind) override;
  bool isEmpty(std::string_view containerIdentifier, RecordKind kind) override;
  std::shared_ptr<const PropertyBag> committedValues(const RecordKey& key) override;
  std::vector<RecordContent> committedContents(std::span<const RecordKey> keys,
                                               std::size_t bytes) override;
  std::vector<EncodedContent> encodedContents(std::span<const RecordKey> keys,
                                              std::size_t bytes) override;
  Data committedImage(const RecordKey& key) override;
  RecordKeysPtr committedChildren(const RecordKey& group, RecordKind kind) override;
  std::vector<RecordKeysPtr> committedChildren(std::span<const RecordKey> groups,
                                               RecordKind kind) override;
  void pinMoment() override;
  StoreMoment lastMoment() override;
  void unpinMoment() override;
  StoreMoment moment() override;
  std::size_t mostRecords() override;
  bool execute(SaveRequest& request) override;
  std::vector<FoundRecords> matches(std::string_view containerIdentifier, RecordKind kind,
                                    std::span<const SoughtRecord> sought) override;
  bool owesTags() override;
  TagDebts tagDebts() override;
  void noteFollowedTags(std::int64_t number) override;
  void checkpoint() override;

  // SyncSource: sync_view.cpp.
  SyncSource& sync() override { return *this; }
  std::vector<SyncLogin> syncLogins() override;
  std::vector<SyncBook> syncBooks() override;
  std::vector<SyncCardNow> syncCards(std::string_view container) override;
  std::vector<SyncCardNow> changedSyncCards(std::string_view container) override;
  std::vector<SyncCardNow> syncCardsOfGroups(std::string_view container) override;
  std::vector<SyncCardNow> taggedSyncCards(std::string_view container) override;
  std::vector<SyncCardNow> refusedSyncCards(std::string_view container) override;
  std::vector<SyncCardNow> syncCardsAt(std::string_view container,
                                       std::span<const std::string> paths) override;
  std::size_t countSyncCards(std::string_view container) override;
  std::size_t countAgreedSyncCards(std::string_view container) override;
  std::vector<RecordWithoutCard> recordsWithoutCard(std::string_view container) override;
  std::vector<SyncCard::Texts> syncCardTexts(std::span<const std::int64_t> ids) override;
  std::vector<SyncConflict> syncConflicts() override;
  std::vector<SyncRun> syncRuns(std::string_view container, std::size_t atMost) override;

 private:
  template <typename Ask>
  auto askSync(Ask ask);
  template <typename Ask>
  auto askSyncOf(std::string_view container, Ask ask);
  // The running act, or nobody, whose change one of that record is.
  ActId ownerOf(const RecordKey& key) const;
  ActId ownerOfLink(const RecordKey& group, const RecordKey& child) const;
  // The acts that a save on this thread writes, and that one.
  static ActIds actsWith(ActId owner);
  // False, and noticed, when the record is not there or its account is read-only.
  bool mayChange(const RecordKey& key);
  // By key or by identifier.
  template <typename Id>
  std::optional<RecordInfo> visibleRecord(const Id& id);
  template <typename Id>
  std::vector<std::optional<RecordInfo>> visibleRecords(std::span<const Id> ids);
  std::optional<RecordInfo> visible(const std::optional<RecordEntry>& entry);
  template <typename Id>
  ContainerPtr containerThatHolds(const Id& id, RecordKind kind);

  std::mutex mutex_;
  ContactStore store_;
  CommittedRecords& committed_;
  PersonSearch search_;
  StoreJournal journal_;
  Overlay overlay_;
};

}  // namespace ox
