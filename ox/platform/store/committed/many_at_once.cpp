// Questions about many records at once: a handful of statements however many they are.
#include <algorithm>
#include <string>
#include <utility>

#include "ox/base/checksum.hpp"
#include "ox/platform/store/committed/committed_records.hpp"
#include "ox/platform/store/values/store_error.hpp"
#include "ox/records/card_uid.hpp"

namespace ox {
namespace {

// Of a row as ContentsOfRows gives it.
EncodedContent contentOf(const sqlite::Statement& row) {
  EncodedContent content;
  const bool isSound = row.integer(4) != 0;
  content.values = makeData(isSound ? std::string(row.blob(1)) : std::string());
  if (row.isNull(2)) return content;
  content.picture = makeData(std::string(row.blob(3)));
  content.pictureChecksum = static_cast<std::uint64_t>(row.integer(2));
  return content;
}

// The records of one container by which sought ones are recognised, found step by step.
class Matching {
 public:
  Matching(StoreFile& file, CommittedRecords& committed, std::int32_t container, RecordKind kind,
           std::span<const SoughtRecord> sought)
      : file_(file),
        committed_(committed),
        container_(container),
        kind_(kind),
        sought_(sought),
        found_(sought.size()) {}

  std::vector<FoundRecords> run() {
    std::vector<std::size_t> withUid;
    Asked contents;
    for (std::size_t i = 0; i < sought_.size(); ++i) {
      if (!uidOf(i).empty()) {
        withUid.push_back(i);
      } else if (sought_[i].fingerprint != 0) {
        contents.keys.add(static_cast<std::int64_t>(sought_[i].fingerprint));
        contents.places.push_back(i);
      }
    }
    ask(Sql::RecordsByFingerprints, contents);
    findByUid(withUid, "");
    findByUid(unfoundOf(withUid), kUrnPrefix);
    findOwn(unfoundOf(withUid));
    return std::move(found_);
  }

 private:
  // Keys for one statement, and which of the sought records each is for.
  struct Asked {
    sqlite::KeyList keys;
    std::vector<std::size_t> places;
  };

  std::string_view uidOf(std::size_t place) const { return uidKey(sought_[place].cardUid); }

  std::vector<std::size_t> unfoundOf(const std::vector<std::size_t>& places) const {
    std::vector<std::size_t> unfound;
    for (const auto place : places) {
      if (found_[place].empty()) unfound.push_back(place);
    }
    return unfound;
  }

  void findByUid(const std::vector<std::size_t>& places, std::string_view prefix) {
    std::vector<std::string> spellings;
    spellings.reserve(places.size());
    for (const auto place : places) spellings.push_back(std::string(prefix).append(uidOf(place)));
    Asked asked{{}, places};
    for (const auto& spelling : spellings) asked.keys.addText(spelling);
    ask(Sql::RecordsByCardUids, asked);
  }

  // Those that no card gave a UID, by the one that an export gives them.
  void findOwn(const std::vector<std::size_t>& places) {
    std::vector<std::size_t> known;
    RecordKeys keys;
    for (const auto place : places) {
      const auto key = RecordKey::known(recordOfUid(uidOf(place), kind_));
      if (!key) continue;
      keys.push_back(*key);
      known.push_back(place);
    }
    Asked asked;
    const auto entries = committed_.find(keys);
    for (std::size_t i = 0; i < entries.size(); ++i) {
      if (!entries[i]) continue;
      asked.keys.add(entries[i]->row);
      asked.places.push_back(known[i]);
    }
    ask(Sql::RecordsByRows, asked);
  }

  void ask(Sql which, const Asked& asked) {
    if (asked.places.empty()) return;
    file_.guarded([&] {
      auto& rows = file_.statement(which);
      const sqlite::StatementScope scope(rows);
      rows.bindKeys(1, asked.keys);
      while (rows.step()) {
        const auto entry = entryOfRow(rows);
        requireSound(rows, 7, "a row of stored values");
        if (entry.container != container_ || entry.kind != kind_) continue;
        const auto place = asked.places[static_cast<std::size_t>(rows.integer(5))];
        found_[place].push_back({entry.key, static_cast<std::uint64_t>(rows.integer(6))});
      }
    });
  }

  StoreFile& file_;
  CommittedRecords& committed_;
  std::int32_t container_;
  RecordKind kind_;
  std::span<const SoughtRecord> sought_;
  std::vector<FoundRecords> found_;
};

}  // namespace

RecordKeys CommittedRecords::startingWith(std::string_view beginning, RecordKind kind,
                                          std::size_t atMost) {
  RecordKeys keys;
  const auto range = RecordKey::rangeOf(beginning, kind);
  if (!range) return keys;
  const StoredUid first(range->first);
  const StoredUid last(range->second);
  return file_.guarded([&] {
    auto& rows = file_.statement(Sql::RecordsBetweenUids);
    const sqlite::StatementScope scope(rows);
    first.bindTo(rows, 1);
    last.bindTo(rows, 2);
    while (keys.size() < atMost && rows.step()) {
      const auto entry = entryOfRow(rows);
      if (entry.kind == kind) keys.push_back(entry.key);
    }
    return keys;
  });
}

std::vector<RecordEntry> CommittedRecords::inRows(const std::vector<std::int64_t>& rows) {
  std::vector<RecordEntry> entries;
  entries.reserve(rows.size());
  sqlite::KeyList asked;
  for (const auto row : rows) asked.add(row);
  if (asked.empty()) return entries;
  return file_.guarded([&] {
    auto& records = file_.statement(Sql::RecordsInRows);
    const sqlite::StatementScope scope(records);
    records.bindKeys(1, asked);
    while (records.step()) entries.push_back(entryOfRow(records));
    return entries;
  });
}

std::vector<std::optional<RecordEntry>> CommittedRecords::find(std::span<const RecordKey> keys) {
  if (indexLoaded_) {
    std::vector<std::optional<Entry>> found(keys.size());
    std::ranges::transform(keys, found.begin(), [this](const auto& key) { return find(key); });
    return found;
  }
  std::vector<std::optional<Entry>> found(keys.size());
  std::vector<StoredUid> uids;
  std::vector<std::size_t> places;
  for (std::size_t i = 0; i < keys.size(); ++i) {
    if (const auto* entry = entries_.find(keys[i])) {
      found[i] = *entry;
    } else {
      uids.emplace_back(keys[i]);
      places.push_back(i);
    }
  }
  sqlite::KeyList list;
  for (const auto& uid : uids) uid.addTo(list);
  const auto read = findInFile(list);
  for (std::size_t i = 0; i < read.size(); ++i) found[places[i]] = read[i];
  return found;
}

std::vector<std::optional<RecordEntry>> CommittedRecords::find(
    std::span<const std::string> identifiers) {
  RecordKeys keys;
  sqlite::KeyList unmet;
  std::vector<std::size_t> placesOfKeys;
  std::vector<std::size_t> placesOfUnmet;
  for (std::size_t i = 0; i < identifiers.size(); ++i) {
    if (const auto known = RecordKey::known(identifiers[i])) {
      keys.push_back(*known);
      placesOfKeys.push_back(i);
    } else {
      // A foreign identifier: only the file knows whether it exists.
      unmet.addText(identifiers[i]);
      placesOfUnmet.push_back(i);
    }
  }
  std::vector<std::optional<Entry>> found(identifiers.size());
  const auto byKey = find(keys);
  for (std::size_t i = 0; i < byKey.size(); ++i) found[placesOfKeys[i]] = byKey[i];
  const auto byText = findInFile(unmet);
  for (std::size_t i = 0; i < byText.size(); ++i) found[placesOfUnmet[i]] = byText[i];
  return found;
}

std::vector<std::optional<RecordEntry>> CommittedRecords::findInFile(const sqlite::KeyList& uids) {
  std::vector<std::optional<Entry>> found(uids.size());
  if (uids.empty()) return found;
  file_.guarded([&] {
    auto& rows = file_.statement(Sql::RecordsByUids);
    const sqlite::StatementScope scope(rows);
    rows.bindKeys(1, uids);
    while (rows.step()) found[static_cast<std::size_t>(rows.integer(5))] = kept(entryOfRow(rows));
  });
  return found;
}

void CommittedRecords::meet(std::span<const RecordKey> keys) {
  if (!indexLoaded_ && keys.size() > 1) find(keys);
}

void CommittedRecords::meetContents(std::span<const RecordKey> keys) {
  if (keys.size() < 2) return;
  std::vector<Entry> entries;
  for (const auto& entry : find(keys)) {
    if (entry) entries.push_back(*entry);
  }
  contents_.readAll(entries);
}

std::vector<EncodedContent> CommittedRecords::encodedContents(std::span<const RecordKey> keys,
                                                              std::size_t bytes) {
  sqlite::KeyList list;
  for (const auto& entry : find(keys)) list.add(entry ? entry->row : 0);
  std::vector<EncodedContent> contents(keys.size());
  file_.guarded([&] {
    auto& rows = file_.statement(Sql::ContentsOfRows);
    const sqlite::StatementScope scope(rows);
    rows.bindKeys(1, list);
    for (std::size_t taken = 0; rows.step();) {
      const auto place = static_cast<std::size_t>(rows.integer(0));
      if (taken >= bytes && place > 0) {
        contents.resize(place);
        return;
      }
      contents[place] = contentOf(rows);
      taken += rows.blob(1).size() + rows.blob(3).size();
    }
  });
  return contents;
}

std::vector<RecordContent> CommittedRecords::contents(std::span<const RecordKey> keys,
                                                      std::size_t bytes) {
  const auto encoded = encodedContents(keys, bytes);
  std::vector<RecordContent> contents;
  contents.reserve(encoded.size());
  for (std::size_t i = 0; i < encoded.size(); ++i) {
    if (auto values = decodedValues(encoded[i])) {
      contents.push_back({std::move(values), encoded[i].picture});
      continue;
    }
    // A damaged one at the beginning is asked for alone, to throw what is wrong with it.
    if (encoded[i].values && i > 0) break;
    auto known = values(keys[i]);
    auto picture = known ? image(keys[i]) : nullptr;
    contents.push_back({std::move(known), std::move(picture)});
  }
  return contents;
}

std::vector<RecordKeysPtr> CommittedRecords::children(std::span<const RecordKey> groups,
                                                      RecordKind kind) {
  return file_.guarded([&] {
    std::vector<RecordKeysPtr> lists(groups.size());
    std::vector<std::size_t> places;
    RecordKeys unknown;
    for (std::size_t i = 0; i < groups.size(); ++i) {
      if (const auto* known = childLists_.find(groups[i])) {
        lists[i] = known->of(kind);
      } else {
        places.push_back(i);
        unknown.push_back(groups[i]);
      }
    }
    if (unknown.empty()) return lists;
    const auto read = readChildren(unknown);
    for (std::size_t i = 0; i < unknown.size(); ++i) lists[places[i]] = read[i].of(kind);
    return lists;
  });
}

std::vector<CommittedRecords::Child> CommittedRecords::readLinksToChildren(
    std::span<const RecordKey> groups) {
  sqlite::KeyList asked;
  for (const auto& entry : find(groups)) asked.add(entry ? entry->row : 0);
  std::vector<Child> children;
  auto& rows = file_.statement(Sql::LinksToChildren);
  const sqlite::StatementScope scope(rows);
  rows.bindKeys(1, asked);
  while (rows.step()) {
    const auto link = linkOfRow(rows);
    children.push_back({static_cast<std::size_t>(rows.integer(4)), link.child, link.isSound});
  }
  return children;
}

// Whoever has listed the records knows them; of the others the file tells.
void CommittedRecords::findOut(std::vector<Child>& children) {
  sqlite::KeyList asked;
  std::vector<Child*> unknown;
  for (auto& child : children) {
    if (const auto* entry = indexLoaded_ ? index_.inRow(child.row) : nullptr) {
      child.kind = entry->kind;
      child.key = entry->key;
    } else {
      asked.add(child.row);
      unknown.push_back(&child);
    }
  }
  if (unknown.empty()) return;
  auto& rows = file_.statement(Sql::RecordsInRows);
  const sqlite::StatementScope scope(rows);
  rows.bindKeys(1, asked);
  while (rows.step()) {
    auto& child = *unknown[static_cast<std::size_t>(rows.integer(5))];
    child.kind = kindOfRow(rows);
    try {
      child.key = entryOfRow(rows).key;
    } catch (const DamagedRow&) {
      child.isSound = false;
    }
  }
}

// Both kinds in one reading: whoever walks a tree of groups asks for both. Where one is damaged
// nobody knows in which of both lists it ought to stand.
std::vector<CommittedRecords::ChildLists> CommittedRecords::readChildren(
    std::span<const RecordKey> groups) {
  auto children = readLinksToChildren(groups);
  findOut(children);
  struct Read {
    RecordKeys persons;
    RecordKeys groups;
    bool isWhole = true;
  };
  std::vector<Read> read(groups.size());
  for (const auto& child : children) {
    auto& of = read[child.group];
    of.isWhole = of.isWhole && child.isSound;
    if (child.kind)
      (child.kind == RecordKind::Person ? of.persons : of.groups).push_back(child.key);
  }
  std::vector<ChildLists> lists;
  lists.reserve(groups.size());
  for (std::size_t i = 0; i < groups.size(); ++i) {
    auto& [persons, subgroups, isWhole] = read[i];
    const auto cost = persons.size() + subgroups.size() + 1;
    lists.emplace_back();
    if (isWhole) {
      lists.back() = {std::make_shared<const RecordKeys>(std::move(persons)),
                      std::make_shared<const RecordKeys>(std::move(subgroups))};
    }
    childLists_.put(groups[i], lists.back(), cost);
  }
  return lists;
}

std::vector<FoundRecords> CommittedRecords::matches(std::string_view containerIdentifier,
                                                    RecordKind kind,
                                                    std::span<const SoughtRecord> sought) {
  const auto container = containers_.rowOf(containerIdentifier);
  if (container == 0) return std::vector<FoundRecords>(sought.size());
  return Matching(file_, *this, container, kind, sought).run();
}

}  // namespace ox
