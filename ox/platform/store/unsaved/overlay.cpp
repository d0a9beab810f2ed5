#include "ox/platform/store/unsaved/overlay.hpp"

#include <cassert>
#include <map>
#include <unordered_map>
#include <utility>
#include <vector>

#include "ox/platform/store/committed/circle.hpp"
#include "ox/platform/store/values/store_error.hpp"
#include "ox/records/entry_identity.hpp"
#include "ox/records/search_text.hpp"

namespace ox {
namespace {

// Hosts write a whole list to change one entry of it; the entries that are the same keep the
// identifiers they have.
void keepIdentifiers(const PropertyValue& before, PropertyValue& now) {
  const auto* old = std::get_if<MultiValuePtr>(&before);
  auto* entries = std::get_if<MultiValuePtr>(&now);
  if (old == nullptr || !*old || entries == nullptr || !*entries) return;
  *entries = std::make_shared<const MultiValue>(withIdentifiersOf(**old, **entries));
}

// The latest values are laid over those that the record was created with.
void fold(RecordEdit edit, NewRecord& record) {
  for (auto& each : edit.values) record.properties.set(each.property, std::move(each.value));
  if (edit.image) record.spilledImage = std::move(edit.image);
}

}  // namespace

// --- what is there ---

std::optional<RecordEntry> Overlay::findCreated(const RecordKey& key) const {
  const auto* created = additions_.empty() ? nullptr : additions_.find(key);
  return created != nullptr ? std::optional(*created) : std::nullopt;
}

std::optional<RecordEntry> Overlay::findCreated(std::string_view identifier) const {
  const auto known = additions_.empty() ? std::nullopt : RecordKey::known(identifier);
  return known ? findCreated(*known) : std::nullopt;
}

std::optional<RecordEntry> Overlay::find(const RecordKey& key) {
  const auto created = findCreated(key);
  return created ? created : committed_.find(key);
}

std::optional<RecordEntry> Overlay::find(std::string_view identifier) {
  const auto created = findCreated(identifier);
  return created ? created : committed_.find(identifier);
}

std::vector<std::optional<RecordEntry>> Overlay::find(std::span<const RecordKey> keys) {
  return withCreated(committed_.find(keys), keys);
}

std::vector<std::optional<RecordEntry>> Overlay::find(std::span<const std::string> identifiers) {
  return withCreated(committed_.find(identifiers), identifiers);
}

template <typename Id>
std::vector<std::optional<RecordEntry>> Overlay::withCreated(
    std::vector<std::optional<RecordEntry>> found, std::span<const Id> ids) const {
  if (additions_.empty()) return found;
  for (std::size_t i = 0; i < ids.size(); ++i) {
    if (const auto created = findCreated(ids[i])) found[i] = created;
  }
  return found;
}

RecordKeys Overlay::records(RecordKind kind) {
  auto keys = committed_.records(kind);
  if (!additions_.empty()) {
    const auto created = additions_.records(kind);
    keys.insert(keys.end(), created.begin(), created.end());
  }
  if (values_.hasRemovals()) {
    std::erase_if(keys, [this](const RecordKey& key) { return values_.isRemoved(key); });
  }
  return keys;
}

PropertyBag Overlay::visibleValues(const RecordKey& key) {
  const auto stored = storedValues(key);
  auto properties = stored ? *stored : PropertyBag();
  for (const auto property : values_.changedProperties(key)) {
    properties.set(property, value(key, property));
  }
  return properties;
}

RecordKeys Overlay::personsMatching(const SearchQuery& query,
                                    const std::vector<std::int64_t>& rows) {
  std::map<std::int64_t, RecordKey> found;
  for (const auto& entry : committed_.inRows(rows)) {
    if (entry.kind == RecordKind::Person && !values_.isChanged(entry.key) &&
        !isRemoved(entry.key)) {
      found.emplace(entry.row, entry.key);
    }
  }
  const auto matches = [&](const RecordKey& key) {
    return !isRemoved(key) && query.matches(searchText(visibleValues(key)));
  };
  for (const auto& key : values_.changedRecords()) {
    const auto entry = committed_.find(key);
    if (entry && entry->kind == RecordKind::Person && matches(key)) found.emplace(entry->row, key);
  }
  RecordKeys keys;
  for (const auto& [row, key] : found) {
    keys.push_back(key);
  }
  for (const auto& key : additions_.records(RecordKind::Person)) {
    if (matches(key)) keys.push_back(key);
  }
  return keys;
}

RecordKeys Overlay::recordsIn(std::string_view containerIdentifier, RecordKind kind) {
  auto keys = committed_.recordsIn(containerIdentifier, kind);
  if (additions_.empty()) return keys;
  const auto container = committed_.containers().rowOf(containerIdentifier);
  const auto created = additions_.recordsIn(container, kind);
  keys.insert(keys.end(), created.begin(), created.end());
  return keys;
}

std::shared_ptr<const PropertyBag> Overlay::storedValues(const RecordKey& key) {
  if (!additions_.empty() && additions_.find(key) != nullptr) return additions_.values(key);
  return committed_.values(key);
}

Data Overlay::storedImage(const RecordKey& key) {
  if (!additions_.empty() && additions_.find(key) != nullptr) return additions_.image(key);
  return committed_.image(key);
}

// The links of a group that an act has created are all that act's.
RecordKeysPtr Overlay::storedChildren(const RecordKey& group, RecordKind kind) {
  if (!additions_.empty() && additions_.find(group) != nullptr) return links_.children(group, kind);
  return committed_.children(group, kind);
}

std::vector<RecordContent> Overlay::storedContents(std::span<const RecordKey> keys,
                                                   std::size_t bytes) {
  auto contents = committed_.contents(keys, bytes);
  if (additions_.empty()) return contents;
  for (std::size_t i = 0; i < contents.size(); ++i) {
    if (additions_.find(keys[i]) == nullptr) continue;
    contents[i] = {additions_.values(keys[i]), additions_.image(keys[i])};
  }
  return contents;
}

std::vector<RecordKeysPtr> Overlay::storedChildren(std::span<const RecordKey> groups,
                                                   RecordKind kind) {
  auto lists = committed_.children(groups, kind);
  if (additions_.empty()) return lists;
  for (std::size_t i = 0; i < groups.size(); ++i) {
    if (additions_.find(groups[i]) != nullptr) lists[i] = links_.children(groups[i], kind);
  }
  return lists;
}

PropertyValue Overlay::storedValue(const RecordKey& key, PropertyId property) {
  if (!additions_.empty()) {
    const auto values = storedValues(key);
    return values ? values->value(property) : PropertyValue();
  }
  const auto& values = committed_.values(key);
  return values ? values->value(property) : PropertyValue();
}

PropertyValue Overlay::value(const RecordKey& key, PropertyId property) {
  if (!values_.empty()) {
    if (const auto* unsaved = values_.value(key, property)) return *unsaved;
  }
  if (!committed_.known().empty()) committed_.known().noteRead(key, property);
  return storedValue(key, property);
}

PropertyValue Overlay::valueToChange(const RecordKey& key, PropertyId property) {
  const auto* unsaved = values_.empty() ? nullptr : values_.value(key, property);
  return unsaved != nullptr ? *unsaved : knownValue(key, property);
}

// What whoever changes a list now sets out from: others may have changed it since it was read.
PropertyValue Overlay::knownValue(const RecordKey& key, PropertyId property) {
  auto& known = committed_.known();
  const auto* value = known.empty() ? nullptr : known.find(key, property);
  return value != nullptr ? *value : storedValue(key, property);
}

Data Overlay::image(const RecordKey& key) {
  if (auto unsaved = values_.image(key)) return std::move(*unsaved);
  return storedImage(key);
}

RecordKeysPtr Overlay::parents(const RecordKey& record) {
  return isRemoved(record) ? std::make_shared<const RecordKeys>() : links_.parents(record);
}

// --- edits ---

ActId Overlay::creatorOf(const RecordKey& key) const {
  if (additions_.empty() || additions_.find(key) == nullptr) return kNobodysAct;
  return additions_.actOf(key);
}

void Overlay::setValue(ActId act, const RecordKey& key, RecordKind kind, PropertyId property,
                       PropertyValue value) {
  assert(isWritable(key));
  // What another act has set may be taken back, so it spares nobody a change of his own.
  const bool alone = values_.empty() || !values_.isChangedByOthers(act, key, property);
  auto base = knownValue(key, property);
  const auto visible = valueToChange(key, property);
  if (alone && looksTheSame(visible, value)) return;
  // What another act has put into a list, or taken out, is its own change and not this one's.
  if (!alone && std::holds_alternative<MultiValuePtr>(visible)) base = visible;
  keepIdentifiers(visible, value);
  // Compared with what is committed, not with what is visible: a change back to it is none.
  if (alone && looksTheSame(base, value)) {
    values_.dropValue(act, key, property);
  } else {
    values_.setValue(act, key, kind, property, std::move(value), std::move(base));
  }
}

// A damaged picture equals no other one, so that a new one takes its place; nor does it equal
// having none, so that it can be removed.
bool Overlay::isPicture(Data (Overlay::*read)(const RecordKey&), const RecordKey& key,
                        const Data& image) {
  try {
    return sameData((this->*read)(key), image);
  } catch (const ImageReadError&) {
    return false;
  }
}

void Overlay::setImage(ActId act, const RecordKey& key, Data image) {
  assert(isWritable(key));
  const bool alone = !values_.isImageChangedByOthers(act, key);
  if (alone && isPicture(&Overlay::image, key, image)) return;
  if (alone && isPicture(&Overlay::storedImage, key, image)) {
    values_.dropImage(act, key);
  } else {
    values_.setImage(act, key, RecordKind::Person, std::move(image));
  }
}

void Overlay::remove(ActId act, const RecordKey& key) {
  assert(isWritable(key));
  links_.forgetRecord(key);
  values_.remove(act, key);
}

bool Overlay::wouldBeBelowItself(const RecordKey& group, const RecordKey& child) {
  return closesCircle(
      group, child, [this](const RecordKey& key) { return *links_.parents(key); },
      [this](const RecordKey& key) { return *links_.children(key, RecordKind::Group); });
}

std::string Overlay::refusalOfLink(const ActIds& acts, const RecordKey& group,
                                   const RecordKey& child, RecordKind childKind) {
  const auto parent = find(group);
  const auto below = find(child);
  if (!parent || isRemoved(group)) return "there is no group " + group.text();
  if (!below || isRemoved(child)) return "there is no record " + child.text();
  if (parent->container != below->container) return "the link would cross accounts";
  if (links_.isLinked(group, child, childKind) && !links_.isLinkedByOthers(acts, group, child)) {
    return "the link exists already";
  }
  if (childKind == RecordKind::Group && wouldBeBelowItself(group, child)) {
    return "the group would be below itself";
  }
  return {};
}

void Overlay::link(ActId act, const RecordKey& group, const RecordKey& child,
                   RecordKind childKind) {
  links_.add(act, group, child, childKind);
}

void Overlay::unlink(ActId act, const RecordKey& group, const RecordKey& child,
                     RecordKind childKind) {
  links_.remove(act, group, child, childKind);
}

bool Overlay::create(ActId act, const ActIds& acts, SaveRequest& request) {
  auto& containers = committed_.containers();
  for (const auto& record : request.additions) {
    if (containers.rowOf(record.container) != 0) continue;
    request.reason = "there is no account " + record.container;
    return false;
  }
  // Asked before anything is added, so that a file that fails leaves nothing behind.
  std::vector<RecordKey> keys;
  for (const auto& record : request.additions) keys.push_back(record.key);
  const auto there = find(std::span<const RecordKey>(keys));
  std::unordered_map<RecordKey, RecordKey> renamed;
  for (std::size_t i = 0; i < keys.size(); ++i) {
    auto& record = request.additions[i];
    if (there[i] || findCreated(record.key)) {
      const auto taken = std::exchange(record.key, RecordKey::make(record.kind));
      renamed[taken] = record.key;
    }
    additions_.add(act, record, containers.rowOf(record.container));
  }
  for (auto& link : request.links) {
    for (auto* end : {&link.group, &link.child}) {
      const auto found = renamed.find(*end);
      if (found != renamed.end()) *end = found->second;
    }
  }
  if (createLinks(act, acts, request)) return true;
  for (const auto& record : request.additions) additions_.drop(record.key);
  return false;
}

// Leaves none of them when one is refused.
bool Overlay::createLinks(ActId act, const ActIds& acts, SaveRequest& request) {
  std::vector<const NewLink*> made;
  for (const auto& each : request.links) {
    const auto child = find(each.child);
    const auto kind = child ? child->kind : RecordKind::Person;
    const auto parent = find(each.group);
    if (parent && parent->kind != RecordKind::Group) {
      request.reason = parent->key.text() + " is no group";
    } else if (child && parent && links_.isLinked(each.group, each.child, kind) &&
               !links_.isLinkedByOthers(acts, each.group, each.child)) {
      continue;
    } else {
      request.reason = refusalOfLink(acts, each.group, each.child, kind);
    }
    if (!request.reason.empty()) break;
    link(act, each.group, each.child, kind);
    made.push_back(&each);
  }
  if (request.reason.empty()) return true;
  for (const auto* each : made) {
    links_.takeBackAddition(act, each->group, each->child, find(each->child)->kind);
  }
  return false;
}

// --- what is written ---

std::vector<RecordKey> Overlay::removals(const ActIds& acts) const {
  auto keys = values_.removals(acts);
  if (additions_.empty()) return keys;
  std::erase_if(keys, [this](const RecordKey& key) { return additions_.find(key) != nullptr; });
  return keys;
}

RecordChanges Overlay::changes(const ActIds& acts) const {
  RecordChanges changes;
  std::unordered_map<RecordKey, std::size_t> places;
  for (const auto& key : additions_.recordsOf(acts)) {
    if (values_.isRemovedBy(acts, key)) continue;
    places.emplace(key, changes.additions.size());
    auto record = additions_.recordToWrite(key);
    const auto container = committed_.containers().inRow(additions_.find(key)->container);
    if (container) record.container = container->identifier;
    changes.additions.push_back(std::move(record));
  }
  for (auto& edit : values_.edits(acts)) {
    const auto created = places.find(edit.key);
    if (created != places.end()) {
      fold(std::move(edit), changes.additions[created->second]);
    } else {
      changes.edits.push_back(std::move(edit));
    }
  }
  changes.removals = removals(acts);
  changes.removedLinks = links_.removedLinks(acts);
  changes.addedLinks = links_.addedLinks(acts);
  return changes;
}

UnsavedChanges Overlay::unsavedChanges(const ActIds& acts) const {
  UnsavedChanges unsaved;
  auto changes = this->changes(acts);
  for (const auto& record : changes.additions) unsaved.additions.push_back(record.key);
  for (const auto& edit : changes.edits) {
    for (const auto& each : edit.values) unsaved.values.push_back({edit.key, each.property});
    if (edit.image) unsaved.values.push_back({edit.key, 0});
  }
  unsaved.removals = std::move(changes.removals);
  unsaved.addedLinks = std::move(changes.addedLinks);
  unsaved.removedLinks = std::move(changes.removedLinks);
  return unsaved;
}

// What these acts have removed, and another one has created and is still to write, goes with that
// one.
void Overlay::noteWritten(const ActIds& acts) {
  if (values_.hasRemovals() && !additions_.empty()) {
    for (const auto& key : values_.removals(acts)) {
      const auto creator = creatorOf(key);
      if (creator != kNobodysAct && !isAmong(acts, creator)) values_.handOverRemoval(key, creator);
    }
  }
  clear(acts);
}

void Overlay::takeBack(const ActIds& acts) {
  if (values_.hasRemovals()) values_.forgetRemovals(additions_.recordsOf(acts));
  clear(acts);
}

void Overlay::clear(const ActIds& acts) {
  if (values_.clear(acts)) links_.forgetLists();
  links_.clear(acts);
  additions_.clear(acts);
}

}  // namespace ox
