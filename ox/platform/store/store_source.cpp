#include "ox/platform/store/store_source.hpp"

#include <algorithm>
#include <filesystem>
#include <mutex>
#include <system_error>
#include <utility>

#include "ox/base/failures.hpp"
#include "ox/platform/store/committed/contact_store.hpp"
#include "ox/platform/store/journal/store_journal.hpp"
#include "ox/platform/store/running_act.hpp"
#include "ox/platform/store/search/person_search.hpp"
#include "ox/platform/store/unsaved/overlay.hpp"
#include "ox/records/clean_text.hpp"

namespace ox {
namespace {

using Look = CommittedRecords::Look;

// The record is the one that was to be changed.
bool refuse(const std::string& reason, const RecordKey& record) {
  failures::noticeRefusal(reason, record.text());
  return false;
}

// The store and this process's unsaved changes behind one lock.
class StoreSource final : public ContactSource {
 public:
  explicit StoreSource(StoreAddress address)
      : store_(std::move(address)),
        committed_(store_.committed()),
        search_(store_.file()),
        journal_(mutex_, store_),
        overlay_(committed_) {}

  StoreJournal& journal() override { return journal_; }

  void letGo() override {
    const std::unique_lock lock(mutex_, std::try_to_lock);
    if (!lock) return;
    search_.letGo();
    store_.letGo();
  }

  RecordKeys records(RecordKind kind) override {
    const std::lock_guard lock(mutex_);
    store_.refresh(Look::Now);
    return overlay_.records(kind);
  }

  RecordKeys recordsStartingWith(std::string_view beginning, RecordKind kind,
                                 std::size_t atMost) override {
    const std::lock_guard lock(mutex_);
    store_.refresh(Look::Now);
    auto keys = committed_.startingWith(beginning, kind, atMost);
    std::erase_if(keys, [&](const RecordKey& key) { return overlay_.isRemoved(key); });
    return keys;
  }

  RecordKeys personsMatching(const SearchQuery& query) override {
    const std::lock_guard lock(mutex_);
    store_.refresh(Look::Now);
    return overlay_.personsMatching(query,
                                    store_.file().guarded([&] { return search_.rows(query); }));
  }

  std::optional<RecordInfo> record(std::string_view identifier) override {
    return visibleRecord(identifier);
  }

  std::optional<RecordInfo> record(const RecordKey& key) override { return visibleRecord(key); }

  std::vector<std::optional<RecordInfo>> recordsWith(
      std::span<const std::string> identifiers) override {
    return visibleRecords(identifiers);
  }

  std::vector<std::optional<RecordInfo>> recordsWith(std::span<const RecordKey> keys) override {
    return visibleRecords(keys);
  }

  PropertyValue value(const RecordKey& key, PropertyId property) override {
    const std::lock_guard lock(mutex_);
    store_.refresh(Look::AtMostEvery10ms);
    return overlay_.value(key, property);
  }

  ABPropertyType storedType(std::string_view custom) override {
    const std::lock_guard lock(mutex_);
    std::error_code error;
    // Nobody shall make a store by asking.
    if (!std::filesystem::exists(store_.address().file(), error)) return kABErrorInProperty;
    return store_.storedType(custom);
  }

  PropertyValue valueToChange(const RecordKey& key, PropertyId property) override {
    const std::lock_guard lock(mutex_);
    store_.refresh(Look::AtMostEvery10ms);
    return overlay_.valueToChange(key, property);
  }

  bool setValue(const RecordKey& key, RecordKind kind, PropertyId property,
                PropertyValue value) override {
    const auto type = property_table::typeOf(property);
    if (property == 0 || type == kABErrorInProperty)
      return refuse("there is no such property", key);
    if (!fitsType(value, type)) {
      return refuse("a value of the wrong type for " + property_table::nameOf(property), key);
    }
    if (isMissing(value)) value = Object();  // whatever the spelling
    cleanText(value);
    const std::lock_guard lock(mutex_);
    store_.refresh(Look::AtMostEvery10ms);
    if (!overlay_.isWritable(key)) return refuse("there is no record " + key.text(), key);
    if (const auto refusal = store_.refusalOf(property); !refusal.empty()) {
      return refuse(refusal, key);
    }
    overlay_.setValue(ownerOf(key), key, kind, property, std::move(value));
    return true;
  }

  Data imageData(const RecordKey& key) override {
    const std::lock_guard lock(mutex_);
    store_.refresh(Look::AtMostEvery10ms);
    return overlay_.image(key);
  }

  bool setImageData(const RecordKey& key, Data image) override {
    const std::lock_guard lock(mutex_);
    store_.refresh(Look::AtMostEvery10ms);
    if (!overlay_.isWritable(key)) return refuse("there is no record " + key.text(), key);
    overlay_.setImage(ownerOf(key), key, std::move(image));
    return true;
  }

  RecordKeysPtr children(const RecordKey& group, RecordKind kind) override {
    const std::lock_guard lock(mutex_);
    store_.refresh(Look::Now);
    return overlay_.children(group, kind);
  }

  RecordKeysPtr parents(const RecordKey& record) override {
    const std::lock_guard lock(mutex_);
    store_.refresh(Look::Now);
    return overlay_.parents(record);
  }

  bool link(const RecordKey& group, const RecordKey& child, RecordKind childKind) override {
    const std::lock_guard lock(mutex_);
    store_.refresh(Look::AtMostEvery10ms);
    const auto owner = ownerOfLink(group, child);
    const auto refusal = overlay_.refusalOfLink(actsWith(owner), group, child, childKind);
    if (!refusal.empty()) {
      const bool childIsGone = overlay_.isWritable(group) && !overlay_.isWritable(child);
      return refuse(refusal, childIsGone ? child : group);
    }
    overlay_.link(owner, group, child, childKind);
    return true;
  }

  bool unlink(const RecordKey& group, const RecordKey& child, RecordKind childKind) override {
    const std::lock_guard lock(mutex_);
    store_.refresh(Look::AtMostEvery10ms);
    if (!overlay_.isWritable(group)) return refuse("there is no group " + group.text(), group);
    const auto owner = ownerOfLink(group, child);
    if (!overlay_.canUnlink(actsWith(owner), group, child, childKind)) return false;
    overlay_.unlink(owner, group, child, childKind);
    return true;
  }

  bool remove(const RecordKey& key, RecordKind) override {
    const std::lock_guard lock(mutex_);
    store_.refresh(Look::AtMostEvery10ms);
    if (!overlay_.isWritable(key)) return refuse("there is no record " + key.text(), key);
    // Of what another act has created too: should this one be taken back, the record is there
    // again.
    overlay_.remove(RunningAct::ownerOfChange(), key);
    return true;
  }

  std::string description(const RecordKey& key, RecordKind kind) override {
    const std::lock_guard lock(mutex_);
    std::string text = kind == RecordKind::Person ? "ABPerson (" : "ABGroup (";
    text += key.text() + ")\n  stored in: ";
    text += store_.address().folder();
    text += "/Library/Application Support/AddressBook/";
    const auto entry = overlay_.find(key);
    const auto container = entry ? committed_.containers().inRow(entry->container) : nullptr;
    if (container && container->type != 1) {
      text += "Sources/" + standardContainerId(container->identifier) + "/";
    }
    return text + "AddressBook.db\n";
  }

  SaveReport save(std::vector<TagChange> tags) override {
    const auto acts = RunningAct::ofThread();
    const std::lock_guard lock(mutex_);
    SaveReport report;
    try {
      auto changes = overlay_.changes(acts);
      changes.tags = std::move(tags);
      if (changes.empty()) {
        store_.sync();  // creations were committed without waiting for the disk
        report.done = true;
      } else {
        report = store_.commit(changes);
      }
    } catch (const StoreError& error) {
      report.failure = failureOf(error);
    }
    if (report.done) overlay_.noteWritten(acts);
    return report;
  }

  RecordKeys unsavedRemovals() override {
    const auto acts = RunningAct::ofThread();
    const std::lock_guard lock(mutex_);
    return overlay_.removals(acts);
  }

  UnsavedChanges unsavedChanges() override {
    const auto acts = RunningAct::ofThread();
    const std::lock_guard lock(mutex_);
    return overlay_.unsavedChanges(acts);
  }

  void revert() override { takeBack(RunningAct::ofThread()); }

  void takeBack(const ActIds& acts) override {
    const std::lock_guard lock(mutex_);
    overlay_.takeBack(acts);
  }

  std::vector<ContainerPtr> containers() override {
    const std::lock_guard lock(mutex_);
    store_.refresh(Look::Now);
    return committed_.containers().all();
  }

  ContainerPtr containerOf(std::string_view identifier, RecordKind kind) override {
    return containerThatHolds(identifier, kind);
  }

  ContainerPtr containerOf(const RecordKey& key, RecordKind kind) override {
    return containerThatHolds(key, kind);
  }

  ContainerPtr containerNamed(std::string_view identifier) override {
    const std::lock_guard lock(mutex_);
    store_.refresh(Look::Now);
    auto& containers = committed_.containers();
    return containers.inRow(containers.rowOf(identifier));
  }

  RecordKeys recordsIn(std::string_view containerIdentifier, RecordKind kind) override {
    const std::lock_guard lock(mutex_);
    store_.refresh(Look::Now);
    return overlay_.recordsIn(containerIdentifier, kind);
  }

  bool isEmpty(std::string_view containerIdentifier, RecordKind kind) override {
    const std::lock_guard lock(mutex_);
    store_.refresh(Look::Now);
    return committed_.isEmpty(containerIdentifier, kind);
  }

  std::shared_ptr<const PropertyBag> committedValues(const RecordKey& key) override {
    const std::lock_guard lock(mutex_);
    store_.refresh(Look::AtMostEvery10ms);
    return overlay_.storedValues(key);
  }

  std::vector<RecordContent> committedContents(std::span<const RecordKey> keys,
                                               std::size_t bytes) override {
    const std::lock_guard lock(mutex_);
    store_.refresh(Look::Now);
    return overlay_.storedContents(keys, bytes);
  }

  std::vector<EncodedContent> encodedContents(std::span<const RecordKey> keys,
                                              std::size_t bytes) override {
    const std::lock_guard lock(mutex_);
    store_.refresh(Look::Now);
    return store_.committed().encodedContents(keys, bytes);
  }

  Data committedImage(const RecordKey& key) override {
    const std::lock_guard lock(mutex_);
    store_.refresh(Look::AtMostEvery10ms);
    return overlay_.storedImage(key);
  }

  RecordKeysPtr committedChildren(const RecordKey& group, RecordKind kind) override {
    const std::lock_guard lock(mutex_);
    store_.refresh(Look::Now);
    return overlay_.storedChildren(group, kind);
  }

  std::vector<RecordKeysPtr> committedChildren(std::span<const RecordKey> groups,
                                               RecordKind kind) override {
    const std::lock_guard lock(mutex_);
    store_.refresh(Look::Now);
    return overlay_.storedChildren(groups, kind);
  }

  void pinMoment() override {
    const std::lock_guard lock(mutex_);
    store_.pinMoment();
  }

  StoreMoment lastMoment() override {
    const std::lock_guard lock(mutex_);
    store_.leaveMoment();
    store_.refresh(Look::Now);
    return committed_.moment();
  }

  void unpinMoment() override {
    const std::lock_guard lock(mutex_);
    store_.unpinMoment();
  }

  StoreMoment moment() override {
    const std::lock_guard lock(mutex_);
    store_.refresh(Look::Now);
    return committed_.moment();
  }

  std::size_t mostRecords() override {
    const std::lock_guard lock(mutex_);
    store_.refresh(Look::Now);
    return static_cast<std::size_t>(std::max<std::int64_t>(committed_.nextRow() - 1, 0));
  }

  bool execute(SaveRequest& request) override {
    if (!isStorable(request)) return false;
    for (auto& record : request.additions) {
      if (cleanText(record.properties)) record.fingerprint.reset();
    }
    for (auto& record : request.replacements) cleanText(record.properties);
    const auto act = RunningAct::ownerOfChange();
    const std::lock_guard lock(mutex_);
    if (act == kNobodysAct || !request.onlyCreates()) return store_.execute(request);
    store_.refresh(Look::AtMostEvery10ms);
    return overlay_.create(act, RunningAct::ofThread(), request);
  }

  std::vector<FoundRecords> matches(std::string_view containerIdentifier, RecordKind kind,
                                    std::span<const SoughtRecord> sought) override {
    const std::lock_guard lock(mutex_);
    store_.refresh(Look::Now);
    return committed_.matches(containerIdentifier, kind, sought);
  }

  bool owesTags() override {
    const std::lock_guard lock(mutex_);
    return store_.owesTags();
  }

  TagDebts tagDebts() override {
    const std::lock_guard lock(mutex_);
    return store_.tagDebts();
  }

  void noteFollowedTags(std::int64_t number) override {
    const std::lock_guard lock(mutex_);
    store_.noteFollowedTags(number);
  }

  void checkpoint() override {
    const std::lock_guard lock(mutex_);
    store_.checkpoint();
  }

 private:
  ActId ownerOf(const RecordKey& key) const {
    return RunningAct::ownerOfChange(overlay_.creatorOf(key));
  }

  ActId ownerOfLink(const RecordKey& group, const RecordKey& child) const {
    const auto owner = ownerOf(group);
    return owner != RunningAct::ownerOfChange() ? owner : ownerOf(child);
  }

  // The acts that a save on this thread writes, and that one.
  static ActIds actsWith(ActId owner) {
    auto acts = RunningAct::ofThread();
    if (!isAmong(acts, owner)) acts.push_back(owner);
    return acts;
  }

  // By key or by identifier; so is the container below.
  template <typename Id>
  std::optional<RecordInfo> visibleRecord(const Id& id) {
    const std::lock_guard lock(mutex_);
    // Nobody else can have removed what an act of this process has created and not saved yet.
    if (const auto created = overlay_.findCreated(id)) return visible(created);
    store_.refresh(Look::Now);
    return visible(overlay_.find(id));
  }

  template <typename Id>
  std::vector<std::optional<RecordInfo>> visibleRecords(std::span<const Id> ids) {
    const std::lock_guard lock(mutex_);
    store_.refresh(Look::Now);
    std::vector<std::optional<RecordInfo>> records;
    records.reserve(ids.size());
    for (const auto& entry : overlay_.find(ids)) records.push_back(visible(entry));
    return records;
  }

  std::optional<RecordInfo> visible(const std::optional<RecordEntry>& entry) {
    if (!entry || overlay_.isRemoved(entry->key)) return std::nullopt;
    return RecordInfo{entry->key, entry->kind, committed_.containers().inRow(entry->container)};
  }

  template <typename Id>
  ContainerPtr containerThatHolds(const Id& id, RecordKind kind) {
    const std::lock_guard lock(mutex_);
    // A record never changes its container, so only a record that is not known is looked for anew.
    store_.refresh(Look::AtMostEvery10ms);
    auto entry = overlay_.find(id);
    if (!entry) {
      store_.refresh(Look::Now);
      entry = overlay_.find(id);
    }
    return entry && entry->kind == kind ? committed_.containers().inRow(entry->container) : nullptr;
  }

  // Names the first value that does not fit as the request's reason.
  static bool isStorable(SaveRequest& request) {
    const auto check = [&](const PropertyBag& properties) {
      request.reason = misfitOf(properties);
      return request.reason.empty();
    };
    return std::all_of(request.additions.begin(), request.additions.end(),
                       [&](const auto& record) { return check(record.properties); }) &&
           std::all_of(request.replacements.begin(), request.replacements.end(),
                       [&](const auto& record) { return check(record.properties); });
  }

  std::mutex mutex_;
  ContactStore store_;
  CommittedRecords& committed_;
  PersonSearch search_;
  StoreJournal journal_;
  Overlay overlay_;
};

}  // namespace

std::shared_ptr<ContactSource> openStoreSource(const StoreAddress& address) {
  return std::make_shared<StoreSource>(address);
}

}  // namespace ox
