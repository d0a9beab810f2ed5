#include "ox/vcard/read/chunk_source.hpp"

#include <exception>

namespace ox::vcard {
namespace {

// A chunk takes less than a millisecond to make: long beside handing it over, short beside what
// somebody waits for its first card.
constexpr std::size_t kCardsAtOnce = 256;
constexpr std::size_t kBytesAtOnce = 256U << 10U;

}  // namespace

// False at the end of the source, also where it cannot be read further.
bool ChunkSource::takeCard(CardChunk& chunk) {
  if (chunk.count == chunk.cards.size()) chunk.cards.emplace_back();
  auto& card = chunk.cards[chunk.count];
  card.made.reset();
  if (!slicer_.next(card.raw)) {
    chunk.isLast = true;
    return false;
  }
  card.place = place();
  return true;
}

void ChunkSource::takeStrays(CardChunk& chunk) {
  const auto& strays = slicer_.strayLines();
  while (straysTaken_ < strays.size()) chunk.strays.push_back(strays[straysTaken_++]);
}

template <typename Cut>
void ChunkSource::take(CardChunk& chunk, Cut cut) {
  chunk.clear();
  try {
    try {
      cut();
    } catch (const SourceError&) {
      chunk.failure = std::current_exception();
    }
    takeStrays(chunk);
  } catch (...) {
    chunk.failure = std::current_exception();
  }
  chunk.trustBytes = utf16_.saysItsEncoding();
  chunk.end = place();
}

void ChunkSource::takeOne(CardChunk& chunk) {
  take(chunk, [&] { chunk.count = takeCard(chunk) ? 1 : 0; });
}

void ChunkSource::takeSome(CardChunk& chunk) {
  take(chunk, [&] {
    while (chunk.count < kCardsAtOnce && chunk.bytes.size() < kBytesAtOnce && takeCard(chunk)) {
      auto& card = chunk.cards[chunk.count];
      card.offset = chunk.bytes.size();
      if (card.raw.refusal.empty()) chunk.bytes.append(card.raw.bytes);
      ++chunk.count;
    }
  });
  for (std::size_t i = 0; i < chunk.count; ++i) {
    auto& [raw, offset, place, made] = chunk.cards[i];
    if (raw.refusal.empty()) raw.bytes = {chunk.bytes.data() + offset, raw.bytes.size()};
  }
}

}  // namespace ox::vcard
