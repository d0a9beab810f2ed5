#include "ox/transfer/cards_ahead.hpp"

#include <algorithm>
#include <memory>
#include <utility>

#include "ox/base/failures.hpp"
#include "ox/transfer/person_import.hpp"

namespace ox::vcard {
namespace {

constexpr std::size_t kFirstCards = 500;
// As many as are committed at once: the longest that the caller is busy with something else.
constexpr std::size_t kCardsAtOnce = PersonImport::kBatchCards;
constexpr std::size_t kBytesAtOnce = 8U << 20U;

}  // namespace

CardRead cardRead(CardResult&& result, CategoriesAs categoriesAs, std::uint64_t bytesRead) {
  if (auto* refusal = std::get_if<Refusal>(&result)) return {std::move(*refusal), bytesRead};
  auto& card = std::get<Card>(result);
  if (card.isGroup) return {std::move(card), bytesRead};
  return {personCard(std::move(card), categoriesAs), bytesRead};
}

CardsAhead::CardsAhead(FileSource& source, CategoriesAs categoriesAs, CharsetHints hints)
    : reader_(source, source.isFile() ? Reader::Threads::AllProcessors : Reader::Threads::One,
              std::move(hints)),
      categoriesAs_(categoriesAs),
      isFile_(source.isFile()),
      most_(isFile_ ? kFirstCards : 1) {}

CardsAhead::Batch CardsAhead::readBatch() {
  Batch batch;
  const auto start = reader_.bytesRead();
  try {
    while (batch.cards.size() < most_ && reader_.bytesRead() - start <= kBytesAtOnce) {
      auto result = reader_.next();
      if (!result) {
        batch.isLast = true;
        break;
      }
      batch.cards.push_back(cardRead(*std::move(result), categoriesAs_, reader_.bytesRead()));
    }
  } catch (...) {
    batch.failure = std::current_exception();
  }
  return batch;
}

CardRead* CardsAhead::next() {
  while (given_ == batch_.cards.size()) {
    if (batch_.failure) std::rethrow_exception(batch_.failure);
    if (batch_.isLast) {
      bytesRead_ = reader_.bytesRead();
      return nullptr;
    }
    const auto spent =
        std::make_shared<Batch>(std::exchange(batch_, ahead_.valid() ? ahead_.get() : readBatch()));
    given_ = 0;
    if (batch_.isLast || batch_.failure || !isFile_) continue;
    most_ = std::min(2 * most_, kCardsAtOnce);
    // Memory that goes back to the thread it came from is there for the next batch, and neither
    // thread waits for the other's.
    const auto work = failures::watched([this, spent] {
      *spent = {};
      return readBatch();
    });
    ahead_ = std::async(std::launch::async | std::launch::deferred, work);
  }
  auto& card = batch_.cards[given_++];
  bytesRead_ = card.bytesRead;
  return &card;
}

}  // namespace ox::vcard
