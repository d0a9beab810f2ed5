#pragma once

#include <cstddef>
#include <cstdint>
#include <exception>
#include <optional>
#include <string>
#include <vector>

#include "ox/vcard/read/card_maker.hpp"

namespace ox::vcard {

// How far a source was read when a card of it was cut off.
struct SourcePlace {
  std::uint64_t bytesRead = 0;
  std::size_t strayCount = 0;
};

// A card that was cut off its source, and what was made of it.
struct ChunkedCard {
  RawCard raw;
  std::size_t offset = 0;  // of its bytes in those of the chunk
  SourcePlace place;
  std::optional<CardResult> made;
};

// Some cards that follow each other. Used for one run of them after the other, so that its buffers
// are made once: the cards are the first `count`.
struct CardChunk {
  std::string bytes;
  std::vector<ChunkedCard> cards;
  std::size_t count = 0;
  bool trustBytes = false;      // see CardLines
  std::vector<Problem> strays;  // that were met before its end, and not before the last chunk
  SourcePlace end;
  bool isLast = false;
  std::exception_ptr failure;  // behind the cards: why the source cannot be read further

  void clear() {
    bytes.clear();
    count = 0;
    strays.clear();
    isLast = false;
    failure = nullptr;
  }
};

}  // namespace ox::vcard
