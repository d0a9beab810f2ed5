#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "ox/platform/store/contact_source.hpp"

namespace ox::support {

// How often each operation of the source was called, by key or by identifier.
struct SourceCounts {
  std::uint64_t records = 0;
  std::uint64_t record = 0;
  std::uint64_t recordsWith = 0;
  std::uint64_t value = 0;
  std::uint64_t setValue = 0;
  std::uint64_t imageData = 0;
  std::uint64_t setImageData = 0;
  std::uint64_t children = 0;
  std::uint64_t parents = 0;
  std::uint64_t link = 0;
  std::uint64_t unlink = 0;
  std::uint64_t remove = 0;
  std::uint64_t description = 0;
  std::uint64_t save = 0;
  std::uint64_t unsavedChanges = 0;
  std::uint64_t revert = 0;
  std::uint64_t containers = 0;
  std::uint64_t containerOf = 0;
  std::uint64_t containerNamed = 0;
  std::uint64_t recordsIn = 0;
  std::uint64_t committedValues = 0;
  std::uint64_t committedImage = 0;
  std::uint64_t committedContents = 0;
  std::uint64_t committedChildren = 0;
  std::uint64_t moment = 0;
  std::uint64_t execute = 0;
  std::uint64_t matches = 0;
  std::uint64_t checkpoint = 0;
  // Those of `value`, by property.
  std::map<PropertyId, std::uint64_t> valueOf = {};
};

// Thrown where a switch says so. No std::exception, which the databases above would contain: it
// stands for what they do not expect, such as a lack of memory outside of them.
struct SourceRaised {};

// A seam over the real store: passes every call on, unless a switch says otherwise, and counts it.
// Safe from any thread.
class SwitchedSource : public ContactSource {
 public:
  explicit SwitchedSource(std::shared_ptr<ContactSource> real) : real_(std::move(real)) {}

  // Puts one over the store of this process's test environment and installs it; the same one when
  // called again.
  static SwitchedSource& install();

  // --- switches ---
  void denyContainerAccess(bool denied = true);
  void refuseLinkEdits(bool refused = true);
  // Only those that would change what this group holds.
  void refuseLinkEditsOf(const std::string& group);
  // The record view then reads this value, whether or not the store would take it.
  void giveValue(const std::string& identifier, PropertyId property, PropertyValue value);
  void raiseOnImageOf(const std::string& identifier);
  // Calls of that operation throw SourceRaised, after so many more that do not; null: none throw.
  void raiseOn(std::uint64_t SourceCounts::*operation, std::uint64_t passing = 0);
  void describe(const std::string& identifier, std::string text);
  // The store then says that it may hold so many records.
  void claimRecords(std::size_t most);
  // The row is then known to the other view only.
  void hideFromRecordView(const std::string& identifier);
  void hideFromContainerView(const std::string& identifier);

  SourceCounts counts() const;
  void resetCounts();
  // The store below, for preparing it without being counted.
  ContactSource& real() { return *real_; }

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

  std::vector<ContainerPtr> containers() override;
  ContainerPtr containerOf(std::string_view identifier, RecordKind kind) override;
  ContainerPtr containerOf(const RecordKey& key, RecordKind kind) override;
  ContainerPtr containerNamed(std::string_view identifier) override;
  RecordKeys recordsIn(std::string_view containerIdentifier, RecordKind kind) override;
  bool isEmpty(std::string_view containerIdentifier, RecordKind kind) override;
  std::shared_ptr<const PropertyBag> committedValues(const RecordKey& key) override;
  Data committedImage(const RecordKey& key) override;
  std::vector<RecordContent> committedContents(std::span<const RecordKey> keys,
                                               std::size_t bytes) override;
  std::vector<EncodedContent> encodedContents(std::span<const RecordKey> keys,
                                              std::size_t bytes) override;
  RecordKeysPtr committedChildren(const RecordKey& group, RecordKind kind) override;
  std::vector<RecordKeysPtr> committedChildren(std::span<const RecordKey> groups,
                                               RecordKind kind) override;
  StoreMoment moment() override;
  std::size_t mostRecords() override;
  bool execute(SaveRequest& request) override;
  std::vector<FoundRecords> matches(std::string_view containerIdentifier, RecordKind kind,
                                    std::span<const SoughtRecord> sought) override;
  bool owesTags() override;
  TagDebts tagDebts() override;
  void noteFollowedTags(std::int64_t number) override;
  void checkpoint() override;
  void pinMoment() override { real_->pinMoment(); }
  void unpinMoment() override { real_->unpinMoment(); }
  StoreMoment lastMoment() override { return real_->lastMoment(); }
  StoreJournal& journal() override;
  SyncSource& sync() override { return real_->sync(); }

 private:
  using Identifiers = std::set<std::string, std::less<>>;

  void count(std::uint64_t SourceCounts::*operation) const;
  void countLocked(std::uint64_t SourceCounts::*operation) const;
  // Counts, and throws when access to the container database is denied.
  void enterContainerView(std::uint64_t SourceCounts::*operation) const;
  bool isIn(const Identifiers SwitchedSource::*set, std::string_view identifier) const;
  template <typename Id>
  std::vector<std::optional<RecordInfo>> visibleRecords(std::span<const Id> ids);
  RecordKeys without(const Identifiers SwitchedSource::*hidden, const RecordKeys& keys) const;
  std::optional<PropertyValue> givenValue(const RecordKey& key, PropertyId property);
  bool refusesLinkEditsOf(const RecordKey& group) const;

  std::shared_ptr<ContactSource> real_;
  mutable std::mutex lock_;
  mutable SourceCounts counts_;
  std::uint64_t SourceCounts::*raising_ = nullptr;
  mutable std::uint64_t passing_ = 0;
  std::optional<std::size_t> claimed_;
  bool denied_ = false;
  bool linksRefused_ = false;
  Identifiers fixedGroups_;
  Identifiers brokenImages_;
  Identifiers hiddenFromRecords_;
  Identifiers hiddenFromContainers_;
  std::map<std::string, std::string, std::less<>> descriptions_;
  std::map<std::pair<std::string, PropertyId>, PropertyValue> givenValues_;
};

// The store below any installed seam.
ContactSource& realSource();

}  // namespace ox::support
