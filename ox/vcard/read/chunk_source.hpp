#pragma once

#include <cstddef>
#include <utility>

#include "ox/vcard/read/card_chunk.hpp"
#include "ox/vcard/source/byte_source.hpp"
#include "ox/vcard/source/card_slicer.hpp"
#include "ox/vcard/source/charset_evidence.hpp"
#include "ox/vcard/source/utf16_source.hpp"

namespace ox::vcard {

// Cuts a source into chunks of cards. One thread at a time, but for the evidence. What goes wrong
// stands in the chunk.
class ChunkSource {
 public:
  // The source is borrowed.
  explicit ChunkSource(ByteSource& source, CharsetHints hints = {})
      : evidence_(source, std::move(hints)), utf16_(source), slicer_(utf16_) {}

  CharsetEvidence& evidence() { return evidence_; }

  // The next card alone. It borrows its bytes until the next call; what has not come yet is not
  // waited for.
  void takeOne(CardChunk& chunk);
  // The next cards with their bytes, as many as are worth a thread's while.
  void takeSome(CardChunk& chunk);

 private:
  bool takeCard(CardChunk& chunk);
  void takeStrays(CardChunk& chunk);
  template <typename Cut>
  void take(CardChunk& chunk, Cut cut);
  SourcePlace place() const { return {utf16_.bytesRead(), slicer_.strayCount()}; }

  CharsetEvidence evidence_;
  Utf16Source utf16_;
  CardSlicer slicer_;
  std::size_t straysTaken_ = 0;
};

}  // namespace ox::vcard
