#pragma once

#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <utility>

#include "ox/base/charsets/charset_scores.hpp"
#include "ox/vcard/source/byte_source.hpp"
#include "ox/vcard/source/card_slicer.hpp"
#include "ox/vcard/source/charset_batch.hpp"
#include "ox/vcard/source/charset_findings.hpp"

namespace ox::vcard {

// What is known of a source beside its bytes.
struct CharsetHints {
  // Decides: what names no charset itself is read in this one; empty: it is judged by its bytes.
  std::string given;
  std::string path;                     // of the source within its batch
  std::shared_ptr<CharsetBatch> batch;  // null: it came alone
};

// A charset that text is taken to be in, and on what grounds.
struct AssumedCharset {
  std::string name;
  std::string grounds;
};

// Judges what raw bytes without a CHARSET are written in. A charset that the same card names
// elsewhere comes first, then one that the file names, then what the letters of the whole file (its
// front, when it is large) look like; of a source that can only be read in order what was read so
// far. A card that cannot be meant in the charset of its file is judged by itself. Safe from any
// thread.
class CharsetEvidence {
 public:
  // The source is borrowed.
  explicit CharsetEvidence(ByteSource& source, CharsetHints hints = {})
      : source_(source), hints_(std::move(hints)) {}

  AssumedCharset charsetFor(const RawCard& card);
  const std::string& given() const { return hints_.given; }

 private:
  void lookAtSource();

  ByteSource& source_;
  CharsetHints hints_;
  std::mutex mutex_;
  std::optional<CharsetFindings> file_;
  CharsetWeights known_{};  // before the words of the source count
  CharsetWeights words_{};  // of the source
  std::optional<JudgedCharset> verdict_;
};

}  // namespace ox::vcard
