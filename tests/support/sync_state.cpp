#include "tests/support/sync_state.hpp"

#include <vector>

namespace ox::support {

std::string syncState(SyncSource& source,
                      const std::function<std::string(const RecordKey&)>& name) {
  const auto textOf = [&](const SyncCardNow& each) {
    const auto& card = each.card;
    return card.path + " " + card.etag + " of " +
           (card.record.isNone() ? "nobody" : name(card.record)) + " agreed " +
           std::to_string(card.fingerprint) + " is " + std::to_string(each.now.value_or(0)) +
           " intent " + std::to_string(static_cast<int>(card.intent));
  };
  std::string text;
  for (const auto& login : source.syncLogins()) {
    text += "login " + login.name + ", " + std::to_string(login.homes.size()) + " homes\n";
  }
  for (const auto& book : source.syncBooks()) {
    const auto& container = book.container;
    text += "book " + container + " of login " + std::to_string(book.login) + " " + book.token +
            ", " + std::to_string(source.countSyncCards(container)) + " cards\n";
    std::vector<std::int64_t> ids;
    for (const auto& card : source.syncCards(container)) {
      text += "card " + textOf(card) + "\n";
      ids.push_back(card.card.id);
    }
    for (const auto& card : source.changedSyncCards(container)) {
      text += "changed " + textOf(card) + "\n";
    }
    for (const auto& record : source.recordsWithoutCard(container)) {
      text += "without card " + name(record.key) + "\n";
    }
    for (const auto& each : source.syncCardTexts(ids)) {
      text += "text " + each.text + " " + each.agreed + " " + each.tags + " " + each.members + "\n";
    }
    for (const auto& run : source.syncRuns(container, 9)) {
      text += "run " + run.counts + " " + run.outcome + "\n";
    }
  }
  for (const auto& conflict : source.syncConflicts()) {
    text += "conflict " + conflict.path + " " + conflict.property + " " + conflict.ours + "\n";
  }
  return text;
}

}  // namespace ox::support
