#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>

#include "ox/vcard/source/byte_source.hpp"
#include "ox/vcard/source/utf16_source.hpp"

namespace ox::formats {

// The characters of a file, one after the other: a byte order mark taken off, UTF-16 as UTF-8.
class TextSource {
 public:
  // The source is borrowed. Text that is no UTF-8 is read in the charset; where that is empty, in
  // the one that the front of the file looks like.
  explicit TextSource(vcard::ByteSource& source, std::string charset = {})
      : bytes_(source), text_(source), charset_(std::move(charset)) {}

  static constexpr int kEnd = -1;
  // The next byte, which stays the next one; kEnd at the end. Throws SourceError.
  int peek() {
    return at_ < block_.size() || refill() ? static_cast<unsigned char>(block_[at_]) : kEnd;
  }
  void skip() { ++at_; }
  // The bytes that are there already, from the next one on; empty at the end.
  std::string_view ahead() { return peek() == kEnd ? std::string_view() : rest(); }
  void skip(std::size_t count) { at_ += count; }

  std::uint64_t bytesRead() const { return text_.bytesRead(); }

  // The text as UTF-8.
  std::string utf8(std::string text);

 private:
  bool refill();
  std::string_view rest() const { return std::string_view(block_).substr(at_); }

  vcard::ByteSource& bytes_;
  vcard::Utf16Source text_;
  std::string block_;
  std::size_t at_ = 0;
  std::string charset_;  // empty: not judged yet
};

}  // namespace ox::formats
