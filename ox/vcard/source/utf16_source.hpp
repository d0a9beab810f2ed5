#pragma once

#include <cstdint>
#include <string>

#include "ox/vcard/source/byte_source.hpp"

namespace ox::vcard {

// Another source as UTF-8: takes a byte order mark off, and converts UTF-16 of either byte order,
// which is told by its mark or by the zero bytes of its first letters. Half surrogate pairs become
// U+FFFD. Anything else passes through as it is.
class Utf16Source : public ByteSource {
 public:
  // The source is borrowed.
  explicit Utf16Source(ByteSource& source) : source_(source) {}

  std::size_t read(char* buffer, std::size_t size) override;

  // Of the source itself.
  std::uint64_t bytesRead() const { return bytesRead_; }
  // True when the bytes are known to be UTF-8 now; known after the first read.
  bool saysItsEncoding() const { return form_ != Form::Plain || marked_; }

 private:
  enum class Form { Unknown, Plain, LittleEndian, BigEndian };

  void probe();
  bool refill(std::size_t wanted);
  std::size_t convert(char* buffer, std::size_t size);
  std::uint32_t unitAt(std::size_t at) const;

  ByteSource& source_;
  Form form_ = Form::Unknown;
  bool marked_ = false;
  bool atEnd_ = false;
  std::string pending_;  // read from the source, not given yet
  std::uint64_t bytesRead_ = 0;
};

}  // namespace ox::vcard
