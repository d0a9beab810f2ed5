#pragma once

#include <array>
#include <compare>
#include <cstdint>
#include <cstring>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "ox/base/export.hpp"
#include "ox/base/text.hpp"

namespace ox {

enum class RecordKind : std::uint8_t { Person = 0, Group = 1 };

// The identifier of a person or group in 16 bytes, so that tables of a million records stay small.
// Our own identifiers ("<UUIDv7>:ABPerson", "<UUIDv7>:ABGroup") are packed into the bytes, the kind
// in the place of the constant version digit; any other text is interned for the life of the
// process. Equal keys stand for equal texts. A value; safe from any thread.
class OX_EXPORT RecordKey {
 public:
  RecordKey() = default;  // no record; equal to no key made from a text

  // A new identifier that no record has yet.
  static RecordKey make(RecordKind kind);
  // The key of that identifier, interned when it is not one of ours.
  static RecordKey of(std::string_view identifier);
  // The key of that identifier when it is one of ours or was interned before; a look-up by a text
  // that nobody stored leaves nothing behind.
  static std::optional<RecordKey> known(std::string_view identifier);

  // The lowest and the highest of our own identifiers of that kind that begin with the text, in
  // either case and with its dashes; missing when none can.
  static std::optional<std::pair<RecordKey, RecordKey>> rangeOf(std::string_view beginning,
                                                                RecordKind kind);

  std::string text() const;
  // As people are shown it: of our own identifiers the beginning that tells when it was made and
  // which one in that moment, which tells it from every other one but by rare chance.
  std::string shortText() const;
  static constexpr std::size_t kShortTextSize = 18;
  bool isNone() const { return *this == RecordKey(); }
  // True when the identifier is not one of ours and its text is kept in the intern table.
  bool isForeign() const { return bytes_[0] == kForeignMark; }

  // True when the bytes hold one of our own identifiers.
  bool isPacked() const;

  const std::array<std::uint8_t, 16>& bytes() const { return bytes_; }
  // Takes bytes() of a packed key, as a store file holds them; ask isPacked() before anything else.
  static RecordKey fromBytes(const std::array<std::uint8_t, 16>& bytes);

  std::size_t hash() const {
    const auto [high, low] = halves();
    std::uint64_t mixed = (high ^ (low * 0x9E3779B97F4A7C15U));
    mixed ^= mixed >> 32U;
    mixed *= 0xD6E8FEB86659FD93U;
    return static_cast<std::size_t>(mixed ^ (mixed >> 32U));
  }

  auto operator<=>(const RecordKey&) const = default;
  // Every table compares keys all the time: two words, not a call.
  bool operator==(const RecordKey& other) const {
    const auto own = halves();
    const auto others = other.halves();
    return ((own.high ^ others.high) | (own.low ^ others.low)) == 0;
  }

 private:
  struct Halves {
    std::uint64_t high = 0;
    std::uint64_t low = 0;
  };
  Halves halves() const {
    Halves halves;
    std::memcpy(&halves.high, bytes_.data(), 8);
    std::memcpy(&halves.low, bytes_.data() + 8, 8);
    return halves;
  }

  // The first byte of a version 7 UUID is the top of its millisecond count and stays below this for
  // thousands of years.
  static constexpr std::uint8_t kForeignMark = 0xFF;

  std::array<std::uint8_t, 16> bytes_{};
};

}  // namespace ox

template <>
struct std::hash<ox::RecordKey> {
  std::size_t operator()(const ox::RecordKey& key) const noexcept { return key.hash(); }
};
