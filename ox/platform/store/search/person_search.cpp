#include "ox/platform/store/search/person_search.hpp"

#include <filesystem>
#include <set>
#include <system_error>

#include "ox/base/failure.hpp"
#include "ox/platform/store/file/stored_rows.hpp"
#include "ox/records/property_codec.hpp"
#include "ox/records/search_text.hpp"

namespace ox {
namespace {

// What is damaged is found by nobody, and told where it is read.
std::string textOf(const sqlite::Statement& row, int properties, int sound) {
  if (row.integer(sound) == 0) return {};
  try {
    return searchText(decodeProperties(row.blob(properties)));
  } catch (const DamagedProperties&) {
    return {};
  }
}

bool isDamage(const sqlite::Error& error) {
  return error.kind() == FailureKind::Corrupt || error.kind() == FailureKind::NotAStore;
}

}  // namespace

void removeIndex(const StoreAddress& store) {
  std::error_code error;
  std::filesystem::remove(store.searchFile(), error);
  std::filesystem::remove(store.searchFile() + "-journal", error);
}

void removeOutdatedIndex(StoreFile& file) {
  std::error_code error;
  if (!std::filesystem::exists(file.address().searchFile(), error)) return;
  try {
    const auto reach = SearchIndex(file.address().searchFile()).reach();
    if (!reach || actOfNumber(file, reach->moment.number)) return;
  } catch (const std::exception&) {
    // It is made anew by whoever searches.
  }
  removeIndex(file.address());
}

std::vector<std::int64_t> PersonSearch::rows(const SearchQuery& query) {
  if (query.empty()) return {};
  isPinned_ = file_.connection().isInTransaction();
  const sqlite::Snapshot snapshot(file_.connection());
  for (int attempt = 0; attempt < 2; ++attempt) {
    try {
      if (auto rows = rowsByFile(query)) return std::move(*rows);
      break;
    } catch (const DamagedIndex&) {
      letGo();
      removeIndex(file_.address());
    } catch (const sqlite::Error& error) {
      letGo();
      if (!isDamage(error)) break;
      removeIndex(file_.address());
    } catch (const std::system_error&) {
      break;
    }
  }
  return rowsInMemory(query);
}

std::optional<std::vector<std::int64_t>> PersonSearch::rowsByFile(const SearchQuery& query) {
  if (!inFile_) inFile_.emplace(file_.address().searchFile());
  const auto store = reachOfStore();
  if (!follow(*inFile_, store)) return std::nullopt;
  return inFile_->find(query, store);
}

// Kept while the process goes on: it can follow as one in a file does.
std::vector<std::int64_t> PersonSearch::rowsInMemory(const SearchQuery& query) {
  if (!inMemory_) inMemory_.emplace();
  const auto store = reachOfStore();
  if (!follow(*inMemory_, store)) {
    inMemory_.emplace();
    follow(*inMemory_, store);
  }
  return inMemory_->find(query, store).value_or(std::vector<std::int64_t>());
}

SearchIndex::Reach PersonSearch::reachOfStore() {
  const auto last = lastAct(file_);
  return {nameOfStore(file_), last ? last->moment : StoreMoment()};
}

bool PersonSearch::follow(SearchIndex& index, const SearchIndex::Reach& store) {
  const bool isTold = store.moment.number >= 0;
  if (isTold && index.reach() == store) return true;
  SearchIndex::Update update(index);
  const auto reach = index.reach();  // another process may have been here first
  if (isTold && reach && reach->store == store.store) {
    if (reach->moment == store.moment) return true;
    if (isPinned_ && reach->moment.number > store.moment.number) return false;
    const auto since = actOfNumber(file_, reach->moment.number);
    if (since && since->moment == reach->moment && takeChanges(*since, update)) {
      update.commit(store);
      return true;
    }
  }
  update.clear();
  takeRows(0, update);
  update.commit(store);
  return true;
}

bool PersonSearch::takeChanges(const ActRow& since, SearchIndex::Update& update) {
  std::set<std::int64_t> changed;
  {
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
          if (row.record() < since.nextRecord) changed.insert(row.record());
          break;
        default:
          break;
      }
    }
  }
  for (const auto row : changed) update.put(row, textOfRow(row));
  takeRows(since.nextRecord, update);
  return true;
}

void PersonSearch::takeRows(std::int64_t from, SearchIndex::Update& update) {
  auto& rows = file_.statement(Sql::ContentFrom);
  const sqlite::StatementScope scope(rows);
  rows.bind(1, from).bind(2, -1);
  while (rows.step()) {
    const auto text = textOf(rows, 1, 3);
    if (!text.empty()) update.put(rows.integer(0), text);
  }
}

std::string PersonSearch::textOfRow(std::int64_t row) {
  auto& rows = file_.statement(Sql::ContentOfRow);
  const sqlite::StatementScope scope(rows);
  rows.bind(1, row);
  return rows.step() ? textOf(rows, 0, 2) : std::string();
}

}  // namespace ox
