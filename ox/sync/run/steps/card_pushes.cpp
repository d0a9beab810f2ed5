#include "ox/sync/run/steps/card_pushes.hpp"

#include <array>
#include <string>
#include <unordered_map>
#include <utility>

#include "ox/platform/store/contact_source.hpp"
#include "ox/platform/store/values/store_error.hpp"
#include "ox/sync/run/look/agreed.hpp"

namespace ox::sync {

CardContent contentOf(const SentCard& sent) {
  auto content = *sent.here;
  content.photo = sent.photo.get();
  return content;
}

namespace {

bool isToSend(const CardStep& step) {
  return step.there != CardStep::There::Nothing && !step.pushed;
}

// Members have to be there before their group, and must not go before it.
int rankOf(const CardStep& step) {
  const bool isGroup = step.card.kind == RecordKind::Group;
  if (step.there == CardStep::There::Delete) return isGroup ? 2 : 3;
  return isGroup ? 1 : 0;
}

constexpr std::array kRanks = {0, 1, 2, 3};

Push pushOf(const CardStep& step) {
  Push push;
  push.href = step.card.href;
  push.etag = step.etag;
  push.isOf = [&step](std::string_view text) {
    return isAgreedText(step.texts ? step.texts->get() : textsOf(step.card), text);
  };
  switch (step.there) {
    case CardStep::There::Create:
      push.kind = Push::Kind::Create;
      break;
    case CardStep::There::Delete:
      push.kind = Push::Kind::Remove;
      return push;
    default:
      push.kind = Push::Kind::Update;
      break;
  }
  push.text = [&step] { return *step.sent->text.get(); };
  return push;
}

// Where the answer is lost the next run finds there what was sent, and tells by this that it was.
// What the record has not taken over yet from there it would take for a change of ours.
void noteUpdate(CardStep& step, SaveRequest& request) {
  if (step.card.id == 0 || step.here != CardStep::Here::Nothing) return;
  auto sent = packedSent(agreedTexts(*step.sent->text.get(), contentOf(*step.sent)));
  if (step.texts) step.texts->setSent(sent);
  request.sync.sent.push_back({step.card.id, std::move(sent)});
}

void readBack(std::vector<CardStep*>& sent, RemoteBook& remote, SpillFile& spill) {
  std::unordered_map<std::string, CardStep*> byPath;
  std::vector<ListedCard> cards;
  for (auto* step : sent) {
    if (step->there == CardStep::There::Delete || !step->pushed) continue;
    if (step->pushed->outcome != Pushed::Outcome::Done) continue;
    cards.push_back({step->pushed->href, step->pushed->etag, step->sent->size});
    byPath.emplace(remote.pathOf(step->pushed->href), step);
  }
  if (cards.empty()) return;
  remote.fetch(cards, [&](FetchedCard card) {
    const auto found = byPath.find(remote.pathOf(card.href));
    if (found == byPath.end()) return;
    auto& step = *found->second;
    step.textReadBack.emplace(makeData(std::exchange(card.text, {})), spill);
    step.readBack = std::move(card);
  });
}

}  // namespace

void noteIntents(CardSteps& steps) {
  SaveRequest request;
  std::vector<CardStep*> creating;
  std::vector<std::string> paths;
  for (auto& step : steps) {
    const bool forgetsIntent = step.removesRow && step.there == CardStep::There::Nothing &&
                               step.card.intent == SyncCard::Intent::Create && step.card.id != 0;
    if (forgetsIntent) {
      // Gone with this act: a row that it adds may get the same id.
      request.sync.removedCards.push_back(step.card.id);
      step.removesRow = false;
      step.card.id = 0;
    }
    if (!isToSend(step)) continue;
    if (step.there == CardStep::There::Update) {
      noteUpdate(step, request);
      continue;
    }
    auto intent = step.card;
    if (step.there == CardStep::There::Delete) {
      intent.intent = SyncCard::Intent::Delete;
      request.sync.cards.push_back({std::move(intent), std::nullopt});
      continue;
    }
    creating.push_back(&step);
    paths.push_back(step.card.path);
    if (step.isNoted) continue;
    for (const auto row : step.rowsInTheWay) request.sync.removedCards.push_back(row);
    step.rowsInTheWay.clear();
    intent.fingerprint = 0;
    request.sync.cards.push_back(changeOf(std::move(intent), step));
  }
  if (request.sync.empty()) return;
  request.outlivesPowerCut = true;
  if (!containerSource().execute(request)) {
    throw StoreError(StoreError::Kind::Refused, request.reason, {});
  }
  if (creating.empty()) return;
  const auto container = creating.front()->card.container;
  const auto noted = syncSource().syncCardsAt(container, paths);
  for (std::size_t i = 0; i < creating.size(); ++i) creating[i]->card.id = noted[i].card.id;
}

std::optional<RemoteError> sendSteps(
    CardSteps& steps, RemoteBook& remote, SpillFile& spill,
    const std::function<void(std::size_t, std::size_t)>& progress) {
  std::vector<CardStep*> sending;
  for (auto& step : steps) {
    if (isToSend(step)) sending.push_back(&step);
  }
  if (sending.empty()) return std::nullopt;
  std::size_t done = 0;
  try {
    progress(0, sending.size());
    for (const int rank : kRanks) {
      std::vector<CardStep*> some;
      for (auto* step : sending) {
        if (rankOf(*step) == rank) some.push_back(step);
      }
      if (some.empty()) continue;
      std::vector<Push> pushes;
      pushes.reserve(some.size());
      for (const auto* step : some) pushes.push_back(pushOf(*step));
      remote.push(pushes, [&](std::size_t place, Pushed pushed) {
        some[place]->pushed = std::move(pushed);
        progress(++done, sending.size());
      });
    }
    readBack(sending, remote, spill);
  } catch (const RemoteError& error) {
    return error;
  }
  return std::nullopt;
}

}  // namespace ox::sync
