#include <utility>

#include "ox/platform/store/file/stored_sync.hpp"
#include "ox/platform/store/source/locked_source.hpp"

// What whoever synchronises asks: committed rows alone.

namespace ox {

using Look = CommittedRecords::Look;

template <typename Ask>
auto LockedSource::askSync(Ask ask) {
  const std::lock_guard lock(mutex_);
  store_.refresh(Look::Now);
  return store_.file().guarded([&] { return ask(StoredSync(store_.file())); });
}

// Of an unknown container the answer is empty.
template <typename Ask>
auto LockedSource::askSyncOf(std::string_view container, Ask ask) {
  return askSync([&](StoredSync stored) {
    auto& containers = committed_.containers();
    const auto row = containers.rowOf(container);
    using Answer = decltype(ask(stored, StoredSync::Container()));
    if (row == 0) return Answer();
    return ask(stored, StoredSync::Container{row, containers.inRow(row)->identifier});
  });
}

std::vector<SyncLogin> LockedSource::syncLogins() {
  return askSync([](StoredSync stored) { return stored.logins(); });
}

std::vector<SyncBook> LockedSource::syncBooks() {
  return askSync([](StoredSync stored) { return stored.books(); });
}

std::vector<SyncCardNow> LockedSource::syncCards(std::string_view container) {
  return askSyncOf(container, [](StoredSync& stored, const StoredSync::Container& of) {
    return stored.cards(of, StoredSync::Which::All);
  });
}

std::vector<SyncCardNow> LockedSource::changedSyncCards(std::string_view container) {
  return askSyncOf(container, [](StoredSync& stored, const StoredSync::Container& of) {
    return stored.cards(of, StoredSync::Which::Changed);
  });
}

std::vector<SyncCardNow> LockedSource::syncCardsOfGroups(std::string_view container) {
  return askSyncOf(container, [](StoredSync& stored, const StoredSync::Container& of) {
    return stored.cards(of, StoredSync::Which::OfGroups);
  });
}

std::vector<SyncCardNow> LockedSource::taggedSyncCards(std::string_view container) {
  return askSyncOf(container, [](StoredSync& stored, const StoredSync::Container& of) {
    return stored.cards(of, StoredSync::Which::Tagged);
  });
}

std::vector<SyncCardNow> LockedSource::refusedSyncCards(std::string_view container) {
  return askSyncOf(container, [](StoredSync& stored, const StoredSync::Container& of) {
    return stored.cards(of, StoredSync::Which::Refused);
  });
}

std::vector<SyncCardNow> LockedSource::syncCardsAt(std::string_view container,
                                                   std::span<const std::string> paths) {
  auto cards = askSyncOf(container, [&](StoredSync& stored, const StoredSync::Container& of) {
    return stored.cardsAt(of, paths);
  });
  cards.resize(paths.size());
  return cards;
}

std::size_t LockedSource::countSyncCards(std::string_view container) {
  return askSyncOf(container, [](StoredSync& stored, const StoredSync::Container& of) {
    return stored.countCards(of.row);
  });
}

std::size_t LockedSource::countAgreedSyncCards(std::string_view container) {
  return askSyncOf(container, [](StoredSync& stored, const StoredSync::Container& of) {
    return stored.countAgreedCards(of.row);
  });
}

std::vector<RecordWithoutCard> LockedSource::recordsWithoutCard(std::string_view container) {
  return askSyncOf(container, [](StoredSync& stored, const StoredSync::Container& of) {
    return stored.recordsWithoutCard(of.row);
  });
}

std::vector<SyncCard::Texts> LockedSource::syncCardTexts(std::span<const std::int64_t> ids) {
  return askSync([&](StoredSync stored) { return stored.texts(ids); });
}

std::vector<SyncConflict> LockedSource::syncConflicts() {
  return askSync([](StoredSync stored) { return stored.conflicts(); });
}

std::vector<SyncRun> LockedSource::syncRuns(std::string_view container, std::size_t atMost) {
  return askSyncOf(container, [&](StoredSync& stored, const StoredSync::Container& of) {
    return stored.runs(of, atMost);
  });
}

}  // namespace ox
