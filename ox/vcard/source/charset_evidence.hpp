#pragma once

#include <mutex>
#include <optional>
#include <string>

#include "ox/vcard/source/byte_source.hpp"
#include "ox/vcard/source/card_slicer.hpp"

namespace ox::vcard {

// Judges what raw bytes without a CHARSET are written in. A charset that the same card names
// elsewhere comes first, then one that the file names, then what the letters of the whole file (its
// front, when it is large) look like; of a source that can only be read in order the card alone is
// looked at. Safe from any thread.
class CharsetEvidence {
 public:
  // The source is borrowed.
  explicit CharsetEvidence(ByteSource& source) : source_(source) {}

  std::string charsetFor(const RawCard& card);

 private:
  const std::string& charsetOfFile();

  ByteSource& source_;
  std::mutex mutex_;
  std::optional<std::string> file_;  // empty text: the source cannot be looked at
};

}  // namespace ox::vcard
