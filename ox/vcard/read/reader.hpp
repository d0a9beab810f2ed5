#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "ox/vcard/read/card.hpp"
#include "ox/vcard/source/byte_source.hpp"
#include "ox/vcard/source/charset_evidence.hpp"

namespace ox::vcard {

// Reads every card of a source, one after the other: vCard 2.1, 3.0 (RFC 2426) and 4.0 (RFC 6350),
// mixed, and with the mistakes that programs make. Memory is bounded by the largest card that is
// allowed (64 MiB), whatever the size of the source. A card between BEGIN and END comes out as a
// Card, or as a Refusal with the reason; neither touches its neighbours. One thread at a time.
class Reader {
 public:
  using Result = CardResult;

  // One reads no further than the card that is given. AllProcessors reads ahead, on threads that
  // end with the reader, and gives the same: nothing for a source that has to be waited for.
  enum class Threads { One, AllProcessors };

  // The source is borrowed for the life of the reader.
  explicit Reader(ByteSource& source, Threads threads = Threads::One, CharsetHints hints = {});
  ~Reader();
  Reader(const Reader&) = delete;
  Reader& operator=(const Reader&) = delete;

  // The next card; nullopt at the end. Throws SourceError when the source cannot be read further.
  std::optional<Result> next();

  // How far the source had been read for the card that was given, in its own bytes, for a progress
  // bar.
  std::uint64_t bytesRead() const;

  // Cards and refusals that next() gave so far. Zero at the end: the source holds no vCard.
  std::size_t cardsSeen() const;

  // Text that was met outside of any card: the first such lines, at most kStrayKept, and how many
  // there were in all. Blank lines do not count.
  static constexpr std::size_t kStrayKept = 100;
  const std::vector<Problem>& strayLines() const;
  std::size_t strayCount() const;

 private:
  class Parts;
  std::unique_ptr<Parts> parts_;
};

}  // namespace ox::vcard
