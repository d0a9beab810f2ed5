#include "ox/vcard/source/utf16_source.hpp"

#include <algorithm>
#include <cstring>

namespace ox::vcard {
namespace {

constexpr std::size_t kProbe = 64;
constexpr std::uint32_t kReplacement = 0xFFFD;

bool isHigh(std::uint32_t unit) {
  return unit >= 0xD800 && unit < 0xDC00;
}
bool isLow(std::uint32_t unit) {
  return unit >= 0xDC00 && unit < 0xE000;
}

// Writes one character; the bytes written.
std::size_t putUtf8(std::uint32_t c, char* out) {
  const auto tail = [&](unsigned shift) { return static_cast<char>(0x80 | (c >> shift & 0x3FU)); };
  if (c < 0x80) {
    out[0] = static_cast<char>(c);
    return 1;
  }
  if (c < 0x800) {
    out[0] = static_cast<char>(0xC0 | c >> 6U);
    out[1] = tail(0);
    return 2;
  }
  if (c < 0x10000) {
    out[0] = static_cast<char>(0xE0 | c >> 12U);
    out[1] = tail(6);
    out[2] = tail(0);
    return 3;
  }
  out[0] = static_cast<char>(0xF0 | c >> 18U);
  out[1] = tail(12);
  out[2] = tail(6);
  out[3] = tail(0);
  return 4;
}

// True when the first two characters are ASCII in UTF-16 whose zero bytes stand at that parity.
bool hasZerosAt(const std::string& bytes, std::size_t parity) {
  if (bytes.size() < 4) return false;
  for (std::size_t i = 0; i < 4; ++i) {
    if ((bytes[i] == '\0') != (i % 2 == parity)) return false;
  }
  return true;
}

}  // namespace

// Reads until so many bytes are pending; false when the source ended before.
bool Utf16Source::refill(std::size_t wanted) {
  while (!atEnd_ && pending_.size() < wanted) {
    const auto held = pending_.size();
    pending_.resize(wanted);
    const auto got = source_.read(pending_.data() + held, wanted - held);
    pending_.resize(held + got);
    bytesRead_ += got;
    atEnd_ = got == 0;
  }
  return pending_.size() >= wanted;
}

void Utf16Source::probe() {
  refill(kProbe);
  form_ = Form::Plain;
  std::size_t mark = 0;
  if (pending_.starts_with("\xEF\xBB\xBF")) {
    mark = 3;
  } else if (pending_.starts_with("\xFF\xFE")) {
    mark = 2;
    form_ = Form::LittleEndian;
  } else if (pending_.starts_with("\xFE\xFF")) {
    mark = 2;
    form_ = Form::BigEndian;
  } else if (hasZerosAt(pending_, 1)) {
    form_ = Form::LittleEndian;
  } else if (hasZerosAt(pending_, 0)) {
    form_ = Form::BigEndian;
  }
  marked_ = mark > 0;
  pending_.erase(0, mark);
}

std::uint32_t Utf16Source::unitAt(std::size_t at) const {
  const auto first = static_cast<unsigned char>(pending_[at]);
  const auto second = static_cast<unsigned char>(pending_[at + 1]);
  return form_ == Form::LittleEndian ? first | std::uint32_t{second} << 8U
                                     : second | std::uint32_t{first} << 8U;
}

// UTF-16 units of at most a third of the buffer's size, since each may take three bytes.
std::size_t Utf16Source::convert(char* buffer, std::size_t size) {
  refill(std::max<std::size_t>(4, size / 3 * 2));
  std::size_t written = 0;
  std::size_t at = 0;
  while (at + 2 <= pending_.size() && written + 4 <= size) {
    std::uint32_t c = unitAt(at);
    if (isHigh(c) && at + 4 > pending_.size() && !atEnd_) break;
    at += 2;
    if (isHigh(c) && at + 2 <= pending_.size() && isLow(unitAt(at))) {
      c = 0x10000 + ((c - 0xD800) << 10U) + (unitAt(at) - 0xDC00);
      at += 2;
    } else if (isHigh(c) || isLow(c)) {
      c = kReplacement;
    }
    written += putUtf8(c, buffer + written);
  }
  pending_.erase(0, at);
  if (atEnd_ && pending_.size() == 1 && written + 4 <= size) {
    pending_.clear();
    written += putUtf8(kReplacement, buffer + written);
  }
  return written;
}

std::size_t Utf16Source::read(char* buffer, std::size_t size) {
  if (form_ == Form::Unknown) probe();
  if (form_ != Form::Plain) return convert(buffer, size);
  if (!pending_.empty()) {
    const auto count = std::min(size, pending_.size());
    std::memcpy(buffer, pending_.data(), count);
    pending_.erase(0, count);
    return count;
  }
  if (atEnd_) return 0;
  const auto got = source_.read(buffer, size);
  bytesRead_ += got;
  return got;
}

}  // namespace ox::vcard
