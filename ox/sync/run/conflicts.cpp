// The values of which both sides made another, as hosts see and settle them.

#include <algorithm>
#include <array>
#include <optional>
#include <unordered_set>
#include <utility>

#include "ox/platform/store/contact_source.hpp"
#include "ox/platform/store/values/store_error.hpp"
#include "ox/sync/cards/card_merge.hpp"
#include "ox/sync/run/card_decisions.hpp"
#include "ox/sync/run/local_book.hpp"
#include "ox/sync/synchronise.hpp"

namespace ox::sync {
namespace {

SyncCard cardOf(const SyncConflict& conflict) {
  const std::array paths{conflict.path};
  const auto cards = syncSource().syncCardsAt(conflict.container, paths);
  return cards.empty() ? SyncCard() : cards.front().card;
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
    LocalBook local(row.container);
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

void resolveConflicts(const std::vector<std::int64_t>& ids, Settled settled) {
  const std::unordered_set<std::int64_t> wanted(ids.begin(), ids.end());
  SaveRequest request;
  request.outlivesPowerCut = true;
  std::vector<std::pair<RecordKey, CardContent>> contents;
  for (const auto& row : syncSource().syncConflicts()) {
    if (!wanted.contains(row.id)) continue;
    request.sync.removedConflicts.push_back(row.id);
    if (settled == Settled::Theirs) continue;
    const auto card = cardOf(row);
    if (card.record.isNone()) continue;
    LocalBook local(row.container);
    auto known =
        std::ranges::find(contents, card.record, [](const auto& some) { return some.first; });
    if (known == contents.end()) {
      const auto now = local.contentOf(card.record, card.kind);
      if (!now) continue;
      known = contents.insert(contents.end(), {card.record, now->content});
    }
    known->second = withOurs(known->second, {row.property, row.theirs, row.ours, row.base});
  }
  for (const auto& [record, content] : contents) {
    ReplacedRecord replaced;
    replaced.key = record;
    replaced.properties = propertiesOfRecord(content);
    replaced.image = content.photo;
    request.replacements.push_back(std::move(replaced));
  }
  if (request.sync.removedConflicts.empty()) return;
  if (!containerSource().execute(request)) {
    throw StoreError(StoreError::Kind::Refused, request.reason, {});
  }
}

}  // namespace ox::sync
