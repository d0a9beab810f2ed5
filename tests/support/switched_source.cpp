#include "tests/support/switched_source.hpp"

#include "ox/platform/store/store_source.hpp"
#include "tests/support/store_environment.hpp"

namespace ox::support {
namespace {

SwitchedSource*& installed() {
  static SwitchedSource* source = nullptr;
  return source;
}

}  // namespace

SwitchedSource& SwitchedSource::install() {
  if (installed() == nullptr) {
    auto source = std::make_shared<SwitchedSource>(
        openStoreSource(StoreEnvironment::instance().contactStore().string()));
    installed() = source.get();
    installContactSource(std::move(source));
  }
  return *installed();
}

ContactSource& realSource() {
  return installed() != nullptr ? installed()->real() : contactSource();
}

// --- switches ---

void SwitchedSource::denyContainerAccess(bool denied) {
  const std::scoped_lock hold(lock_);
  denied_ = denied;
}

void SwitchedSource::refuseLinkEdits(bool refused) {
  const std::scoped_lock hold(lock_);
  linksRefused_ = refused;
}

void SwitchedSource::refuseLinkEditsOf(const std::string& group) {
  const std::scoped_lock hold(lock_);
  fixedGroups_.insert(group);
}

void SwitchedSource::giveValue(const std::string& identifier, PropertyId property,
                               PropertyValue value) {
  const std::scoped_lock hold(lock_);
  givenValues_[{identifier, property}] = std::move(value);
}

void SwitchedSource::raiseOnImageOf(const std::string& identifier) {
  const std::scoped_lock hold(lock_);
  brokenImages_.insert(identifier);
}

void SwitchedSource::raiseOn(std::uint64_t SourceCounts::*operation, std::uint64_t passing) {
  const std::scoped_lock hold(lock_);
  raising_ = operation;
  passing_ = passing;
}

void SwitchedSource::describe(const std::string& identifier, std::string text) {
  const std::scoped_lock hold(lock_);
  descriptions_[identifier] = std::move(text);
}

void SwitchedSource::claimRecords(std::size_t most) {
  const std::scoped_lock hold(lock_);
  claimed_ = most;
}

void SwitchedSource::hideFromRecordView(const std::string& identifier) {
  const std::scoped_lock hold(lock_);
  hiddenFromRecords_.insert(identifier);
}

void SwitchedSource::hideFromContainerView(const std::string& identifier) {
  const std::scoped_lock hold(lock_);
  hiddenFromContainers_.insert(identifier);
}

SourceCounts SwitchedSource::counts() const {
  const std::scoped_lock hold(lock_);
  return counts_;
}

void SwitchedSource::resetCounts() {
  const std::scoped_lock hold(lock_);
  counts_ = {};
}

void SwitchedSource::count(std::uint64_t SourceCounts::*operation) const {
  const std::scoped_lock hold(lock_);
  countLocked(operation);
}

void SwitchedSource::countLocked(std::uint64_t SourceCounts::*operation) const {
  ++(counts_.*operation);
  if (raising_ != operation) return;
  if (passing_ == 0) throw SourceRaised();
  --passing_;
}

void SwitchedSource::enterContainerView(std::uint64_t SourceCounts::*operation) const {
  const std::scoped_lock hold(lock_);
  countLocked(operation);
  if (denied_) throw StoreError(StoreError::Kind::Denied, "access to the containers is denied");
}

bool SwitchedSource::isIn(const Identifiers SwitchedSource::*set,
                          std::string_view identifier) const {
  const std::scoped_lock hold(lock_);
  return (this->*set).contains(identifier);
}

RecordKeys SwitchedSource::without(const Identifiers SwitchedSource::*hidden,
                                   const RecordKeys& keys) const {
  const std::scoped_lock hold(lock_);
  if ((this->*hidden).empty()) return keys;
  RecordKeys left;
  for (const auto& key : keys) {
    if (!(this->*hidden).contains(key.text())) left.push_back(key);
  }
  return left;
}

bool SwitchedSource::refusesLinkEditsOf(const RecordKey& group) const {
  const std::scoped_lock hold(lock_);
  return linksRefused_ || fixedGroups_.contains(group.text());
}

// --- the record view ---

RecordKeys SwitchedSource::records(RecordKind kind) {
  count(&SourceCounts::records);
  return without(&SwitchedSource::hiddenFromRecords_, real_->records(kind));
}

RecordKeys SwitchedSource::recordsStartingWith(std::string_view beginning, RecordKind kind,
                                               std::size_t atMost) {
  return without(&SwitchedSource::hiddenFromRecords_,
                 real_->recordsStartingWith(beginning, kind, atMost));
}

RecordKeys SwitchedSource::personsMatching(const SearchQuery& query) {
  return without(&SwitchedSource::hiddenFromRecords_, real_->personsMatching(query));
}

std::optional<RecordInfo> SwitchedSource::record(std::string_view identifier) {
  count(&SourceCounts::record);
  if (isIn(&SwitchedSource::hiddenFromRecords_, identifier)) return std::nullopt;
  return real_->record(identifier);
}

std::optional<RecordInfo> SwitchedSource::record(const RecordKey& key) {
  count(&SourceCounts::record);
  if (isIn(&SwitchedSource::hiddenFromRecords_, key.text())) return std::nullopt;
  return real_->record(key);
}

template <typename Id>
std::vector<std::optional<RecordInfo>> SwitchedSource::visibleRecords(std::span<const Id> ids) {
  count(&SourceCounts::recordsWith);
  auto records = real_->recordsWith(ids);
  for (auto& record : records) {
    if (record && isIn(&SwitchedSource::hiddenFromRecords_, record->key.text())) record.reset();
  }
  return records;
}

std::vector<std::optional<RecordInfo>> SwitchedSource::recordsWith(
    std::span<const std::string> identifiers) {
  return visibleRecords(identifiers);
}

std::vector<std::optional<RecordInfo>> SwitchedSource::recordsWith(
    std::span<const RecordKey> keys) {
  return visibleRecords(keys);
}

std::optional<PropertyValue> SwitchedSource::givenValue(const RecordKey& key, PropertyId property) {
  const std::scoped_lock hold(lock_);
  countLocked(&SourceCounts::value);
  ++counts_.valueOf[property];
  const auto given = givenValues_.find({key.text(), property});
  return given != givenValues_.end() ? std::optional(given->second) : std::nullopt;
}

PropertyValue SwitchedSource::value(const RecordKey& key, PropertyId property) {
  const auto given = givenValue(key, property);
  return given ? *given : real_->value(key, property);
}

PropertyValue SwitchedSource::valueToChange(const RecordKey& key, PropertyId property) {
  const auto given = givenValue(key, property);
  return given ? *given : real_->valueToChange(key, property);
}

ABPropertyType SwitchedSource::storedType(std::string_view custom) {
  return real_->storedType(custom);
}

bool SwitchedSource::setValue(const RecordKey& key, RecordKind kind, PropertyId property,
                              PropertyValue value) {
  count(&SourceCounts::setValue);
  return real_->setValue(key, kind, property, std::move(value));
}

Data SwitchedSource::imageData(const RecordKey& key) {
  count(&SourceCounts::imageData);
  if (isIn(&SwitchedSource::brokenImages_, key.text())) {
    throw ImageReadError("the stored picture cannot be read back");
  }
  return real_->imageData(key);
}

bool SwitchedSource::setImageData(const RecordKey& key, Data image) {
  count(&SourceCounts::setImageData);
  return real_->setImageData(key, std::move(image));
}

RecordKeysPtr SwitchedSource::children(const RecordKey& group, RecordKind kind) {
  count(&SourceCounts::children);
  return std::make_shared<const RecordKeys>(
      without(&SwitchedSource::hiddenFromRecords_, *real_->children(group, kind)));
}

RecordKeysPtr SwitchedSource::parents(const RecordKey& record) {
  count(&SourceCounts::parents);
  return std::make_shared<const RecordKeys>(
      without(&SwitchedSource::hiddenFromRecords_, *real_->parents(record)));
}

bool SwitchedSource::link(const RecordKey& group, const RecordKey& child, RecordKind childKind) {
  count(&SourceCounts::link);
  return !refusesLinkEditsOf(group) && real_->link(group, child, childKind);
}

bool SwitchedSource::unlink(const RecordKey& group, const RecordKey& child, RecordKind childKind) {
  count(&SourceCounts::unlink);
  return !refusesLinkEditsOf(group) && real_->unlink(group, child, childKind);
}

bool SwitchedSource::remove(const RecordKey& key, RecordKind kind) {
  count(&SourceCounts::remove);
  return real_->remove(key, kind);
}

std::string SwitchedSource::description(const RecordKey& key, RecordKind kind) {
  count(&SourceCounts::description);
  {
    const std::scoped_lock hold(lock_);
    const auto chosen = descriptions_.find(key.text());
    if (chosen != descriptions_.end()) return chosen->second;
  }
  return real_->description(key, kind);
}

RecordKeys SwitchedSource::unsavedRemovals() {
  return real_->unsavedRemovals();
}

SaveReport SwitchedSource::save(std::vector<TagChange> tags) {
  count(&SourceCounts::save);
  return real_->save(std::move(tags));
}

UnsavedChanges SwitchedSource::unsavedChanges() {
  count(&SourceCounts::unsavedChanges);
  return real_->unsavedChanges();
}

void SwitchedSource::revert() {
  count(&SourceCounts::revert);
  real_->revert();
}

void SwitchedSource::takeBack(const ActIds& acts) {
  real_->takeBack(acts);
}

// --- the container view ---

std::vector<ContainerPtr> SwitchedSource::containers() {
  enterContainerView(&SourceCounts::containers);
  return real_->containers();
}

ContainerPtr SwitchedSource::containerOf(std::string_view identifier, RecordKind kind) {
  enterContainerView(&SourceCounts::containerOf);
  if (isIn(&SwitchedSource::hiddenFromContainers_, identifier)) return nullptr;
  return real_->containerOf(identifier, kind);
}

ContainerPtr SwitchedSource::containerOf(const RecordKey& key, RecordKind kind) {
  enterContainerView(&SourceCounts::containerOf);
  if (isIn(&SwitchedSource::hiddenFromContainers_, key.text())) return nullptr;
  return real_->containerOf(key, kind);
}

ContainerPtr SwitchedSource::containerNamed(std::string_view identifier) {
  enterContainerView(&SourceCounts::containerNamed);
  return real_->containerNamed(identifier);
}

RecordKeys SwitchedSource::recordsIn(std::string_view containerIdentifier, RecordKind kind) {
  enterContainerView(&SourceCounts::recordsIn);
  return without(&SwitchedSource::hiddenFromContainers_,
                 real_->recordsIn(containerIdentifier, kind));
}

std::shared_ptr<const PropertyBag> SwitchedSource::committedValues(const RecordKey& key) {
  enterContainerView(&SourceCounts::committedValues);
  if (isIn(&SwitchedSource::hiddenFromContainers_, key.text())) return nullptr;
  return real_->committedValues(key);
}

Data SwitchedSource::committedImage(const RecordKey& key) {
  enterContainerView(&SourceCounts::committedImage);
  if (isIn(&SwitchedSource::hiddenFromContainers_, key.text())) return nullptr;
  return real_->committedImage(key);
}

std::vector<RecordContent> SwitchedSource::committedContents(std::span<const RecordKey> keys,
                                                             std::size_t bytes) {
  enterContainerView(&SourceCounts::committedContents);
  auto contents = real_->committedContents(keys, bytes);
  for (std::size_t i = 0; i < contents.size(); ++i) {
    if (isIn(&SwitchedSource::hiddenFromContainers_, keys[i].text())) contents[i] = {};
  }
  return contents;
}

std::vector<EncodedContent> SwitchedSource::encodedContents(std::span<const RecordKey> keys,
                                                            std::size_t bytes) {
  enterContainerView(&SourceCounts::committedContents);
  auto contents = real_->encodedContents(keys, bytes);
  for (std::size_t i = 0; i < contents.size(); ++i) {
    if (isIn(&SwitchedSource::hiddenFromContainers_, keys[i].text())) contents[i] = {};
  }
  return contents;
}

RecordKeysPtr SwitchedSource::committedChildren(const RecordKey& group, RecordKind kind) {
  enterContainerView(&SourceCounts::committedChildren);
  return std::make_shared<const RecordKeys>(
      without(&SwitchedSource::hiddenFromContainers_, *real_->committedChildren(group, kind)));
}

std::vector<RecordKeysPtr> SwitchedSource::committedChildren(std::span<const RecordKey> groups,
                                                             RecordKind kind) {
  enterContainerView(&SourceCounts::committedChildren);
  auto lists = real_->committedChildren(groups, kind);
  for (auto& list : lists) {
    list =
        std::make_shared<const RecordKeys>(without(&SwitchedSource::hiddenFromContainers_, *list));
  }
  return lists;
}

bool SwitchedSource::isEmpty(std::string_view containerIdentifier, RecordKind kind) {
  return real_->isEmpty(containerIdentifier, kind);
}

std::size_t SwitchedSource::mostRecords() {
  {
    const std::scoped_lock hold(lock_);
    if (claimed_) return *claimed_;
  }
  return real_->mostRecords();
}

StoreMoment SwitchedSource::moment() {
  enterContainerView(&SourceCounts::moment);
  return real_->moment();
}

bool SwitchedSource::execute(SaveRequest& request) {
  enterContainerView(&SourceCounts::execute);
  return real_->execute(request);
}

std::vector<FoundRecords> SwitchedSource::matches(std::string_view containerIdentifier,
                                                  RecordKind kind,
                                                  std::span<const SoughtRecord> sought) {
  enterContainerView(&SourceCounts::matches);
  auto found = real_->matches(containerIdentifier, kind, sought);
  for (auto& records : found) {
    std::erase_if(records, [this](const FoundRecord& record) {
      return isIn(&SwitchedSource::hiddenFromContainers_, record.key.text());
    });
  }
  return found;
}

bool SwitchedSource::owesTags() {
  return real_->owesTags();
}

TagDebts SwitchedSource::tagDebts() {
  return real_->tagDebts();
}

void SwitchedSource::noteFollowedTags(std::int64_t number) {
  real_->noteFollowedTags(number);
}

StoreJournal& SwitchedSource::journal() {
  return real_->journal();
}

void SwitchedSource::checkpoint() {
  enterContainerView(&SourceCounts::checkpoint);
  real_->checkpoint();
}

}  // namespace ox::support
