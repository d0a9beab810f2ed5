#include "ox/platform/store/committed/act_builder.hpp"

#include <utility>

#include "ox/base/checksum.hpp"
#include "ox/platform/store/committed/overtaken.hpp"
#include "ox/platform/store/file/stored_rows.hpp"
#include "ox/platform/store/values/store_error.hpp"
#include "ox/records/fingerprint.hpp"
#include "ox/records/merge.hpp"

namespace ox {

ActBuilder::ActBuilder(StoreFile& file, CommittedRecords& committed, const Taken& taken)
    : file_(file), committed_(committed), taken_(taken), tree_(file, committed.nextRow()) {
  act_.decidedAt = committed.moment();
  act_.firstRow = committed.nextRow();
}

std::optional<RecordEntry> ActBuilder::find(const RecordKey& key) const {
  const auto added = addedByKey_.find(key);
  return added != addedByKey_.end() ? std::optional(added->second) : committed_.find(key);
}

std::int32_t ActBuilder::containerRow(std::string_view identifier) {
  const auto row = committed_.containers().rowOf(identifier);
  if (row != 0) return row;
  for (std::size_t i = 0; i < act_.addedContainers.size(); ++i) {
    const auto& added = act_.addedContainers[i].info.identifier;
    if (added == identifier || standardContainerId(added) == identifier) {
      return -static_cast<std::int32_t>(i) - 1;
    }
  }
  return 0;
}

// Stored records and programs name a container by its standard id alone, so two of one standard id
// could not be told apart. Stores of earlier versions may hold such a pair; it can still be read.
void ActBuilder::addContainer(const ContainerInfo& container) {
  const auto standardId = standardContainerId(container.identifier);
  if (standardId.empty()) {
    throw RefusedRequest("\"" + container.identifier + "\" is no identifier");
  }
  const auto refuseTwin = [&](const std::string& known) {
    if (standardContainerId(known) != standardId) return;
    throw RefusedRequest("there is an account with the identifier " + known + " already");
  };
  for (const auto& known : committed_.containers().all()) refuseTwin(known->identifier);
  for (const auto& added : act_.addedContainers) refuseTwin(added.info.identifier);
  act_.addedContainers.push_back({0, container});
}

void ActBuilder::removeContainer(const ContainerRemoval& removal) {
  const auto row = committed_.containers().rowOf(removal.identifier);
  if (row == 0) throw RefusedRequest("there is no account " + removal.identifier);
  if (row == 1) throw RefusedRequest("the local account cannot be removed");
  const auto held = file_.guarded([&] { return StoredRows(file_).recordsIn(row); });
  if (!held.empty() && !removal.withRecords) {
    throw RefusedRequest("the account " + removal.identifier + " holds " +
                         std::to_string(held.size()) + (held.size() == 1 ? " record" : " records"));
  }
  for (const auto& entry : held) removeRecord(entry);
  act_.guards.containers.insert(row);
  act_.removedContainers.push_back({row, *committed_.containers().inRow(row)});
}

void ActBuilder::guardContainer(std::string_view identifier) {
  const auto row = committed_.containers().rowOf(identifier);
  if (row != 0) act_.guards.containers.insert(row);
}

std::string ActBuilder::refusalOf(std::span<const PropertyId> custom) {
  for (const auto property : custom) {
    if (auto refusal = file_.refusalOf(property); !refusal.empty()) return refusal;
  }
  return {};
}

RecordKey ActBuilder::addRecord(const NewRecord& record) {
  const auto container = containerRow(record.container);
  if (container == 0) throw RefusedRequest("there is no account " + record.container);
  const auto refusal =
      refusalOf(record.encoded ? record.encoded->custom : customPropertiesOf(record.properties));
  if (!refusal.empty()) throw RefusedRequest(refusal);
  auto key = record.key;
  if (taken_.contains(key) || addedByKey_.contains(key)) {
    // This is the copy of a contact that is stored already. The copy gets an identifier of its own,
    // and the links of its request mean the copy.
    key = RecordKey::make(record.kind);
    renamed_[record.key] = key;
  }
  const auto row = act_.firstRow + static_cast<std::int64_t>(act_.added.size());
  addedByKey_.emplace(key, Entry{key, row, container, record.kind});
  act_.added.push_back({key, record.kind, container, &record, nullptr});
  return key;
}

void ActBuilder::replaceRecord(const ReplacedRecord& record) {
  const auto entry = meant(record.key);
  if (!entry) throw RefusedRequest("there is no record " + record.key.text());
  if (const auto refusal = refusalOf(customPropertiesOf(record.properties)); !refusal.empty()) {
    throw RefusedRequest(refusal);
  }
  if (isAdded(*entry)) {
    act_.added[static_cast<std::size_t>(entry->row - act_.firstRow)].replacement = &record;
    return;
  }
  const auto image = record.keepsImage ? std::nullopt : std::optional(pictureOf(record));
  try {
    const auto before = committed_.content(entry->key);
    if (!before.values) throw RefusedRequest("there is no record " + record.key.text());
    setContent(*entry, before, record.properties, image);
  } catch (const DamagedRecord&) {
    // Damaged values can be replaced all the same; nobody knows what they were.
    setContent(*entry, {nullptr, pictureChecksum(entry->row)}, record.properties, image);
  }
  const auto change = changedByRow_.find(entry->row);
  if (!record.spilledImage || change == changedByRow_.end()) return;
  auto& changed = act_.changed[change->second];
  if (!changed.image) return;
  changed.image.reset();
  changed.readImage = [&spilled = *record.spilledImage] { return spilled.get(); };
}

// The change of a record that is committed; a record has one.
Act::ChangedRecord& ActBuilder::changeOf(const Entry& entry) {
  const auto [found, isNew] = changedByRow_.emplace(entry.row, act_.changed.size());
  if (isNew) act_.changed.emplace_back().record = entry;
  return act_.changed[found->second];
}

// Equal checksums do not tell: the bytes that are stored may be damaged.
bool ActBuilder::holdsPicture(const Entry& entry, const Data& image) {
  try {
    return sameData(committed_.image(entry.key), image);
  } catch (const ImageReadError&) {
    return false;
  }
}

// Values before that are null are damaged.
void ActBuilder::setContent(const Entry& entry, const KnownContent& before, PropertyBag properties,
                            std::optional<Data> image) {
  auto picture = before.pictureChecksum;
  if (image) {
    picture = *image ? checksum64(**image) : 0;
    const bool isSame = picture == before.pictureChecksum;
    if (isSame && (picture == 0 || holdsPicture(entry, *image))) image.reset();
  }
  auto differing = differences(before.values ? *before.values : PropertyBag(), properties);
  // What is so already needs no row, but for one that replaces an earlier change of this act.
  act_.guards.records.insert(entry.row);
  const bool isSo = before.values && differing.empty() && !image;
  if (isSo && !changedByRow_.contains(entry.row)) return;
  auto& change = changeOf(entry);
  change.hasSameUid = before.values && differing.before.find(property_id::kCardUid) == nullptr &&
                      differing.after.find(property_id::kCardUid) == nullptr;
  change.differences = std::move(differing);
  change.fingerprint = contentFingerprint(properties, picture);
  change.properties = std::move(properties);
  change.image = std::move(image);
}

// The merge of a save. It is decided upon what other processes have saved since this one read the
// record, and only what this process has changed is laid over that, property by property and entry
// by entry: two processes that change different ones both win, and of the same one the later save
// does. A removal elsewhere wins over any edit.
std::string ActBuilder::applyEdit(const RecordEdit& edit) {
  const auto dropped = [&](const std::string& why) {
    return "the changes of " + edit.key.text() + " were dropped: " + why;
  };
  const auto record = committed_.find(edit.key);
  if (!record) return dropped("it was removed elsewhere");
  KnownContent before;
  try {
    before = committed_.content(edit.key);
  } catch (const DamagedRecord& error) {
    // One damaged record must not keep every other change from being saved.
    return dropped(error.what());
  }
  if (!before.values) return dropped("it was removed elsewhere");
  auto properties = *before.values;
  std::string refused;
  for (const auto& [property, mine, base] : edit.values) {
    if (const auto refusal = file_.refusalOf(property); !refusal.empty()) {
      refused = dropped(refusal);
      continue;
    }
    std::vector<MultiEntry> lost;
    auto merged = mergedValue(base, mine, before.values->value(property), lost);
    if (!sameValue(merged, mine)) merged_.push_back({edit.key, property, mine, merged});
    properties.set(property, std::move(merged));
    for (const auto& entry : lost) wonOver_.push_back(overtaken(edit.key, property, entry));
  }
  setContent(*record, before, std::move(properties),
             edit.image ? std::optional(edit.image->get()) : std::nullopt);
  return refused;
}

std::vector<RecordKey> ActBuilder::outdatedOf(std::span<const Expected> expected) {
  std::vector<RecordKey> outdated;
  if (expected.empty()) return outdated;
  RecordKeys keys;
  keys.reserve(expected.size());
  for (const auto& each : expected) keys.push_back(each.key);
  const auto entries = committed_.find(keys);
  std::vector<std::int64_t> rows;
  rows.reserve(entries.size());
  for (const auto& entry : entries) rows.push_back(entry ? entry->row : 0);
  const auto now = file_.guarded([&] { return StoredRows(file_).fingerprints(rows); });
  for (std::size_t i = 0; i < expected.size(); ++i) {
    if (now[i] != expected[i].fingerprint) outdated.push_back(expected[i].key);
    if (entries[i]) act_.guards.records.insert(entries[i]->row);
  }
  return outdated;
}

std::vector<RecordKey> ActBuilder::noteSync(const SyncRows& rows) {
  std::vector<RecordKey> gone;
  if (rows.empty()) return gone;
  act_.sync = {&rows, {}, {}};
  const auto noteContainer = [&](const std::string& identifier) {
    if (act_.sync.containers.contains(identifier)) return;
    const auto row = containerRow(identifier);
    if (row == 0) throw RefusedRequest("there is no account " + identifier);
    act_.sync.containers.emplace(identifier, row);
  };
  for (const auto& book : rows.books) noteContainer(book.book.container);
  for (const auto& conflict : rows.conflicts) noteContainer(conflict.container);
  for (const auto& run : rows.runs) noteContainer(run.container);
  RecordKeys keys;
  for (const auto& card : rows.cards) {
    if (!card.card.record.isNone()) keys.push_back(card.card.record);
  }
  committed_.meet(keys);
  act_.sync.records.reserve(rows.cards.size());
  for (const auto& change : rows.cards) {
    const auto& card = change.card;
    noteContainer(card.container);
    const auto entry = card.record.isNone() ? std::nullopt : meant(card.record);
    if (!entry && !card.record.isNone() && card.id == 0) gone.push_back(card.record);
    act_.sync.records.push_back(entry ? std::optional(entry->row) : std::nullopt);
  }
  return gone;
}

void ActBuilder::removeRecord(const Entry& entry) {
  if (!removedRows_.insert(entry.row).second) return;  // with its container, and by itself
  act_.removed.push_back(entry);
  if (entry.kind == RecordKind::Group) tree_.removeGroup(entry.row);
}

std::optional<RecordEntry> ActBuilder::meant(const RecordKey& key) const {
  const auto renamed = renamed_.find(key);
  return find(renamed != renamed_.end() ? renamed->second : key);
}

std::string ActBuilder::addLink(const Link& link) {
  const auto group = meant(link.group);
  const auto child = meant(link.child);
  const auto named = [&](const char* why) {
    return "the link from " + link.group.text() + " to " + link.child.text() + why;
  };
  if (!group || !child) return named(" was dropped: one of them is not there");
  if (group->kind != RecordKind::Group) return named(" was refused: the first is no group");
  if (group->container != child->container) return named(" was refused: it crosses accounts");
  if (child->kind == RecordKind::Group) {
    if (tree_.wouldCloseCircle(group->row, child->row)) {
      return named(" was refused: a group would be below itself");
    }
    tree_.addLink(group->row, child->row);
    // Whether it closes a circle depends on every link on the way.
    if (group->container > 0) act_.guards.containers.insert(group->container);
  }
  for (const auto* end : {&*group, &*child}) {
    if (!isAdded(*end)) act_.guards.records.insert(end->row);
  }
  act_.addedLinks.push_back({*group, *child});
  return {};
}

void ActBuilder::removeLink(const Link& link) {
  const auto group = committed_.find(link.group);
  const auto child = committed_.find(link.child);
  if (!group || !child) return;
  if (child->kind == RecordKind::Group) tree_.removeLink(group->row, child->row);
  act_.removedLinks.push_back({*group, *child});
}

std::uint64_t ActBuilder::pictureChecksum(std::int64_t row) {
  return file_.guarded([&]() -> std::uint64_t {
    auto& picture = file_.statement(Sql::ImageOfRow);
    const sqlite::StatementScope scope(picture);
    picture.bind(1, row);
    return picture.step() ? static_cast<std::uint64_t>(picture.integer(1)) : 0;
  });
}

}  // namespace ox
