#include "ox/platform/store/search/person_search.hpp"

#include <algorithm>
#include <filesystem>
#include <set>
#include <system_error>

#include "ox/base/failures.hpp"
#include "ox/platform/store/file/stored_rows.hpp"
#include "ox/records/property_codec.hpp"
#include "ox/records/search_text.hpp"

namespace ox {
namespace {

bool isDamage(const sqlite::Error& error) {
  return error.kind() == FailureKind::Corrupt || error.kind() == FailureKind::NotAStore;
}

// Whether the store as it is now, whatever moment is read of it, has that act: a store that was
// replaced, or has forgotten somebody, has others.
bool isOfStoreNow(StoreFile& file, const SearchIndex::Reach& reach) {
  sqlite::Connection now(file.address().file(), sqlite::Connection::Mode::ReadOnly);
  now.setBusyTimeout(SearchIndex::kBusyMilliseconds);
  auto act = now.prepare("SELECT name FROM act WHERE number = ?1");
  act.bind(1, reach.moment.number);
  const std::string_view name(reinterpret_cast<const char*>(reach.moment.name.data()),
                              reach.moment.name.size());
  return act.step() && act.blob(0) == name;
}

}  // namespace

// A journal that is left beside no file is thrown away by whoever makes the next one.
void removeIndex(const StoreAddress& store) {
  std::error_code error;
  std::filesystem::remove(store.searchFile(), error);
  std::filesystem::remove(store.searchFile() + "-journal", error);
}

void removeOutdatedIndex(StoreFile& file) {
  std::error_code error;
  if (!std::filesystem::exists(file.address().searchFile(), error)) return;
  try {
    const auto reach = SearchIndex(file.address().searchFile(), 0).reach();
    const auto act = reach ? actOfNumber(file, reach->moment.number) : std::nullopt;
    if (act && act->moment == reach->moment && reach->store == nameOfStore(file)) return;
  } catch (const DamagedIndex&) {
    // Nobody knows what it holds.
  } catch (const sqlite::Error& failure) {
    if (!isDamage(failure)) return;
  } catch (const std::exception&) {
    return;
  }
  removeIndex(file.address());
}

std::vector<std::int64_t> PersonSearch::rows(const SearchQuery& query) {
  if (query.empty()) return {};
  const sqlite::Snapshot snapshot(file_.connection());
  for (int attempt = 0; attempt < 2; ++attempt) {
    try {
      if (auto rows = rowsByFile(query)) {
        inMemory_.reset();
        return std::move(*rows);
      }
      break;
    } catch (const DamagedIndex&) {
      inFile_.reset();
      removeIndex(file_.address());
    } catch (const sqlite::Error& error) {
      // The file may have been removed meanwhile: then it is made by the second attempt.
      inFile_.reset();
      if (isDamage(error)) removeIndex(file_.address());
    } catch (const std::system_error&) {
      break;
    }
  }
  return rowsInMemory(query);
}

std::optional<std::vector<std::int64_t>> PersonSearch::rowsByFile(const SearchQuery& query) {
  if (!inFile_) inFile_.emplace(file_.address().searchFile());
  const auto store = reachOfStore();
  const auto followed = follow(*inFile_, store, Damage::Refuse);
  if (followed == Followed::IsFurther || followed == Followed::IsOfDamage) return std::nullopt;
  // Somebody who was forgotten while this was made of an earlier moment must not be in it.
  if (followed == Followed::Now && store.moment.number >= 0 && !isOfStoreNow(file_, store)) {
    inFile_.reset();
    removeIndex(file_.address());
    return std::nullopt;
  }
  return inFile_->find(query, store);
}

// Kept while the file does not do: it can follow as one in a file does.
std::vector<std::int64_t> PersonSearch::rowsInMemory(const SearchQuery& query) {
  const auto store = reachOfStore();
  if (inMemory_) {
    const auto followed = follow(*inMemory_, store, Damage::Refuse);
    if (followed == Followed::IsFurther || followed == Followed::IsOfDamage) inMemory_.reset();
  }
  if (!inMemory_) {
    inMemory_.emplace();
    follow(*inMemory_, store, Damage::PassOver);
    damagedInMemory_ = damaged_;
  }
  if (damagedInMemory_ > 0) {
    const auto& name = file_.address().name();
    const auto records =
        std::to_string(damagedInMemory_) + (damagedInMemory_ == 1 ? " record is" : " records are");
    failures::notice(FailureKind::Corrupt, name + ": " + records + " damaged and not searched",
                     name);
  }
  return inMemory_->find(query, store).value_or(std::vector<std::int64_t>());
}

std::optional<ActRow> PersonSearch::actNumbered(std::int64_t number) {
  return file_.guarded([&] { return actOfNumber(file_, number); });
}

SearchIndex::Reach PersonSearch::reachOfStore() {
  return file_.guarded([&]() -> SearchIndex::Reach {
    const auto last = lastAct(file_);
    return {nameOfStore(file_), last ? last->moment : StoreMoment()};
  });
}

PersonSearch::Followed PersonSearch::follow(SearchIndex& index, const SearchIndex::Reach& store,
                                            Damage damage) {
  const bool isTold = store.moment.number >= 0;
  if (isTold && index.reach() == store) return Followed::Before;
  damaged_ = 0;
  SearchIndex::Update update(index);
  const auto reach = index.reach();  // another process may have been here first
  bool isFollowed = false;
  if (isTold && reach && reach->store == store.store) {
    if (reach->moment == store.moment) return Followed::Before;
    const bool isFurther = reach->moment.number > store.moment.number;
    if (isFurther && isOfStoreNow(file_, *reach)) return Followed::IsFurther;
    const auto since = isFurther ? std::nullopt : actNumbered(reach->moment.number);
    isFollowed = since && since->moment == reach->moment && takeChanges(*since, update);
  }
  if (!isFollowed) {
    damaged_ = 0;
    update.clear();
    takeRows(1, update);
  }
  // What cannot be read now is mended or lost some day, which no act may tell.
  if (damaged_ > 0 && damage == Damage::Refuse) return Followed::IsOfDamage;
  update.commit(store);
  return Followed::Now;
}

bool PersonSearch::takeChanges(const ActRow& since, SearchIndex::Update& update) {
  std::set<std::int64_t> changed;
  const bool isTold = file_.guarded([&] {
    auto& changes = file_.statement(Sql::ChangesFrom);
    const sqlite::StatementScope scope(changes);
    changes.bind(1, since.nextChange);
    while (changes.step()) {
      const JournalRow row(changes);
      if (!row.isSound()) return false;
      switch (row.what()) {
        case ChangeKind::Values:
        case ChangeKind::ValuesAndPicture:
        case ChangeKind::Removed:
        case ChangeKind::Restored:
          if (row.record() < 1) return false;
          if (row.record() < since.nextRecord) changed.insert(row.record());
          break;
        default:
          break;
      }
    }
    return true;
  });
  if (!isTold) return false;
  for (const auto row : changed) update.put(row, textOfRow(row));
  takeRows(since.nextRecord, update);
  return true;
}

// What the store refuses is told from what the index does.
void PersonSearch::takeRows(std::int64_t from, SearchIndex::Update& update) {
  auto& rows = file_.statement(Sql::ContentFrom);
  const sqlite::StatementScope scope(rows);
  rows.bind(1, std::max<std::int64_t>(from, 1)).bind(2, -1);
  while (file_.guarded([&] { return rows.step(); })) {
    const auto text = textOf(rows, 1, 3);
    if (!text.empty()) update.put(rows.integer(0), text);
  }
}

std::string PersonSearch::textOfRow(std::int64_t row) {
  auto& rows = file_.statement(Sql::ContentOfRow);
  const sqlite::StatementScope scope(rows);
  rows.bind(1, row);
  return file_.guarded([&] { return rows.step(); }) ? textOf(rows, 0, 2) : std::string();
}

std::string PersonSearch::textOf(const sqlite::Statement& row, int properties, int sound) {
  if (row.integer(sound) != 0) {
    try {
      return searchText(decodeProperties(row.blob(properties)));
    } catch (const DamagedProperties&) {
      // Counted as a row that is no more what was written.
    }
  }
  ++damaged_;
  return {};
}

}  // namespace ox
