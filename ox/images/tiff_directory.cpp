#include "ox/images/tiff_directory.hpp"

#include <array>
#include <cassert>
#include <cstddef>
#include <cstdint>

namespace ox::images {
namespace {

constexpr std::uint64_t kCountSize = 2;
constexpr std::uint64_t kEntrySize = 12;
constexpr std::uint64_t kLinkSize = 4;
// The size of a value by its type. The library skips entries of other types; it takes 16 to 18 from
// the larger kind of file.
constexpr std::array<std::uint64_t, 19> kSizes = {0, 1, 1, 2, 4, 8, 1, 1, 2, 4,
                                                  8, 4, 8, 4, 0, 0, 8, 8, 8};
// Some writers let entries share a small value.
constexpr std::uint64_t kShared = 4096;

// The number of that many bytes, in the byte order that the file begins with. The bytes are there.
std::uint64_t numberAt(std::string_view bytes, std::uint64_t at, std::uint64_t size) {
  assert(at + size <= bytes.size());
  const bool bigEndian = bytes.front() == 'M';
  std::uint64_t number = 0;
  for (std::uint64_t i = 0; i < size; ++i) {
    const auto place = static_cast<std::size_t>(at + (bigEndian ? i : size - 1 - i));
    number = number << 8U | static_cast<std::uint8_t>(bytes[place]);
  }
  return number;
}

// What the values of that many entries take together.
std::uint64_t sizeOfValues(std::string_view bytes, std::uint64_t firstEntry, std::uint64_t count) {
  std::uint64_t size = 0;
  for (std::uint64_t i = 0; i < count; ++i) {
    const auto entry = firstEntry + i * kEntrySize;
    const auto type = static_cast<std::size_t>(numberAt(bytes, entry + 2, 2));
    if (type < kSizes.size()) size += numberAt(bytes, entry + 4, 4) * kSizes[type];
  }
  return size;
}

}  // namespace

bool isDirectorySound(std::string_view bytes, std::string& reason) {
  constexpr std::uint64_t kLinkAt = 4;
  reason = "truncated";
  if (bytes.size() < kLinkAt + kLinkSize) return false;
  const auto at = numberAt(bytes, kLinkAt, kLinkSize);
  if (at > bytes.size() || bytes.size() - at < kCountSize) return false;
  const auto count = numberAt(bytes, at, kCountSize);
  // The library lets the link to a next directory be cut short; a whole file is asked for here.
  if (bytes.size() - at < kCountSize + count * kEntrySize + kLinkSize) return false;
  if (sizeOfValues(bytes, at + kCountSize, count) <= bytes.size() + kShared) return true;
  reason = "claims larger fields than its bytes can hold";
  return false;
}

}  // namespace ox::images
