// The values of which both sides made another, as hosts see and settle them.

#include <algorithm>
#include <array>
#include <optional>
#include <unordered_set>
#include <utility>

#include "ox/platform/store/contact_source.hpp"
#include "ox/platform/store/values/store_error.hpp"
#include "ox/sync/cards/card_merge.hpp"
#include "ox/sync/run/look/local_book.hpp"
#include "ox/sync/run/steps/card_decisions.hpp"
#include "ox/sync/synchronise.hpp"

namespace ox::sync {
namespace {

SyncCard cardOf(const SyncConflict& conflict) {
  const std::array paths{conflict.path};
  const auto cards = syncSource().syncCardsAt(conflict.container, paths);
  return cards.empty() ? SyncCard() : cards.front().card;
}

LocalBook localBook(const std::string& container) {
  for (const auto& book : syncSource().syncBooks()) {
    if (book.container == container) return LocalBook::of(book);
  }
  return LocalBook(container);
}

}  // namespace

std::vector<OpenConflict> openConflicts() {
  std::vector<OpenConflict> open;
  for (const auto& row : syncSource().syncConflicts()) {
    OpenConflict conflict;
    conflict.id = row.id;
    conflict.container = row.container;
    const auto container = containerSource().containerNamed(row.container);
    if (container) conflict.account = container->name;
    const auto card = cardOf(row);
    auto local = localBook(row.container);
    const auto content =
        card.record.isNone() ? std::nullopt : local.contentOf(card.record, card.kind);
    if (content) {
      conflict.record = card.record.text();
      conflict.name = nameOfContent(content->content);
    } else {
      conflict.name = card.uid;
    }
    conflict.property = row.property;
    conflict.theirs = textOfValue(row.property, row.theirs);
    conflict.ours = textOfValue(row.property, row.ours);
    conflict.at = row.at;
    open.push_back(std::move(conflict));
  }
  return open;
}

namespace {

// One try; false when a record was changed meanwhile.
bool tryToResolve(const std::unordered_set<std::int64_t>& wanted, Settled settled) {
  SaveRequest request;
  request.outlivesPowerCut = true;
  std::vector<std::pair<RecordKey, LocalContent>> contents;
  for (const auto& row : syncSource().syncConflicts()) {
    if (!wanted.contains(row.id)) continue;
    request.sync.removedConflicts.push_back(row.id);
    if (settled == Settled::Theirs) continue;
    const auto card = cardOf(row);
    auto known =
        std::ranges::find(contents, card.record, [](const auto& some) { return some.first; });
    if (known == contents.end()) {
      auto local = localBook(row.container);
      auto now = card.record.isNone() ? std::nullopt : local.contentOf(card.record, card.kind);
      if (!now) {
        throw RemoteError(RemoteFailure::Usage,
                          "whom the conflict is about was removed; bring that back first");
      }
      known = contents.insert(contents.end(), {card.record, std::move(*now)});
    }
    auto& content = known->second.content;
    content = withOurs(content, {row.property, row.theirs, row.ours, row.base});
  }
  for (const auto& [record, now] : contents) {
    ReplacedRecord replaced;
    replaced.key = record;
    replaced.properties = propertiesOfRecord(now.content);
    replaced.image = now.content.photo;
    replaced.expected = now.fingerprint;
    request.replacements.push_back(std::move(replaced));
  }
  if (request.sync.removedConflicts.empty() || containerSource().execute(request)) return true;
  if (!request.outdatedRecords.empty()) return false;
  throw StoreError(StoreError::Kind::Refused, request.reason, {});
}

}  // namespace

void resolveConflicts(const std::vector<std::int64_t>& ids, Settled settled) {
  constexpr int kTries = 5;
  const std::unordered_set<std::int64_t> wanted(ids.begin(), ids.end());
  for (int tries = 1; !tryToResolve(wanted, settled); ++tries) {
    if (tries == kTries) {
      throw StoreError(StoreError::Kind::Busy, "the contact is being changed by others", {});
    }
  }
}

}  // namespace ox::sync
