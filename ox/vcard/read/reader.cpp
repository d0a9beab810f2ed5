#include "ox/vcard/read/reader.hpp"

#include <utility>

#include "ox/vcard/read/cards_in_order.hpp"
#include "ox/vcard/read/chunk_source.hpp"

namespace ox::vcard {

class Reader::Parts {
 public:
  Parts(ByteSource& source, Threads threads, CharsetHints hints)
      : source_(source, std::move(hints)) {
    if (threads == Threads::AllProcessors) ahead_.emplace(source_);
  }

  std::optional<Result> next() {
    while (given_ == chunk_->count) {
      place_ = chunk_->end;
      takeStrays();
      if (chunk_->failure) std::rethrow_exception(chunk_->failure);
      if (chunk_->isLast) return std::nullopt;
      takeChunk();
    }
    auto& card = chunk_->cards[given_++];
    place_ = card.place;
    takeStrays();
    ++cards_;
    if (!card.made) {
      card.made = maker_.make(card.raw, chunk_->trustBytes, CardMaker::Before::Made);
    }
    return *std::move(card.made);
  }

  const SourcePlace& place() const { return place_; }
  std::size_t cards() const { return cards_; }
  const std::vector<Problem>& strays() const { return strays_; }

 private:
  void takeChunk() {
    given_ = 0;
    straysTaken_ = 0;
    if (ahead_) {
      chunk_ = ahead_->next(std::move(chunk_), maker_);
    } else {
      source_.takeOne(*chunk_);
    }
  }

  // Those that stand before what was given.
  void takeStrays() {
    while (strays_.size() < place_.strayCount && straysTaken_ < chunk_->strays.size()) {
      strays_.push_back(std::move(chunk_->strays[straysTaken_++]));
    }
  }

  ChunkSource source_;
  CardMaker maker_{source_.evidence()};
  std::optional<CardsInOrder> ahead_;
  std::unique_ptr<CardChunk> chunk_ = std::make_unique<CardChunk>();
  std::size_t given_ = 0;        // of the chunk
  std::size_t straysTaken_ = 0;  // of the chunk
  SourcePlace place_;
  std::size_t cards_ = 0;
  std::vector<Problem> strays_;
};

Reader::Reader(ByteSource& source, Threads threads, CharsetHints hints)
    : parts_(std::make_unique<Parts>(source, threads, std::move(hints))) {}

Reader::~Reader() = default;

std::optional<Reader::Result> Reader::next() {
  return parts_->next();
}

std::uint64_t Reader::bytesRead() const {
  return parts_->place().bytesRead;
}

std::size_t Reader::cardsSeen() const {
  return parts_->cards();
}

const std::vector<Problem>& Reader::strayLines() const {
  return parts_->strays();
}

std::size_t Reader::strayCount() const {
  return parts_->place().strayCount;
}

}  // namespace ox::vcard
