#include "ox/base/record_key.hpp"

#include <algorithm>
#include <cassert>
#include <deque>
#include <mutex>
#include <unordered_map>

#include "ox/base/uuid.hpp"

namespace ox {
namespace {

constexpr std::string_view kPersonSuffix = ":ABPerson";
constexpr std::string_view kGroupSuffix = ":ABGroup";
constexpr std::size_t kUuidLength = 36;
// The version digit of a UUIDv7 is always 7, so its half byte is free to hold the kind.
constexpr std::uint8_t kPersonDigit = 0x70;
constexpr std::uint8_t kGroupDigit = 0x80;

class InternTable {
 public:
  std::uint64_t intern(std::string_view text) {
    const std::lock_guard lock(mutex_);
    const auto found = numbers_.find(text);
    if (found != numbers_.end()) return found->second;
    assert(numbers_.size() == texts_.size());
    texts_.emplace_back(text);
    const std::uint64_t number = texts_.size() - 1;
    numbers_.emplace(texts_.back(), number);
    return number;
  }

  std::optional<std::uint64_t> find(std::string_view text) {
    const std::lock_guard lock(mutex_);
    const auto found = numbers_.find(text);
    return found == numbers_.end() ? std::nullopt : std::optional(found->second);
  }

  std::string text(std::uint64_t number) {
    const std::lock_guard lock(mutex_);
    assert(number < texts_.size());
    return texts_.at(number);
  }

 private:
  std::mutex mutex_;
  std::deque<std::string> texts_;  // a deque: the views below stay valid
  std::unordered_map<std::string_view, std::uint64_t> numbers_;
};

InternTable& internTable() {
  static auto& table = *new InternTable;
  return table;
}

std::array<std::uint8_t, 16> foreignBytes(std::uint64_t number, std::uint8_t mark) {
  std::array<std::uint8_t, 16> bytes{};
  bytes.fill(mark);
  std::memcpy(bytes.data() + 8, &number, 8);
  return bytes;
}

// The bytes of one of our own identifiers; missing for any other text.
std::optional<std::array<std::uint8_t, 16>> packed(std::string_view identifier) {
  if (identifier.size() <= kUuidLength) return std::nullopt;
  const auto suffix = identifier.substr(kUuidLength);
  const bool person = suffix == kPersonSuffix;
  if (!person && suffix != kGroupSuffix) return std::nullopt;
  auto uuid = uuidFromText(identifier.substr(0, kUuidLength));
  if (!uuid || ((*uuid)[6] & 0xF0U) != 0x70U || (*uuid)[0] == 0xFFU) return std::nullopt;
  (*uuid)[6] =
      static_cast<std::uint8_t>(((*uuid)[6] & 0x0FU) | (person ? kPersonDigit : kGroupDigit));
  return uuid;
}

}  // namespace

std::optional<std::pair<RecordKey, RecordKey>> RecordKey::rangeOf(std::string_view beginning,
                                                                  RecordKind kind) {
  constexpr std::string_view kLowest = "00000000-0000-7000-0000-000000000000";
  constexpr std::string_view kHighest = "FFFFFFFF-FFFF-7FFF-FFFF-FFFFFFFFFFFF";
  const auto ending = kind == RecordKind::Person ? kPersonSuffix : kGroupSuffix;
  if (beginning.empty() || beginning.size() > kUuidLength) return std::nullopt;
  std::string upper(beginning);
  std::ranges::transform(upper, upper.begin(), [](char c) {
    return c >= 'a' && c <= 'f' ? static_cast<char>(c - 'a' + 'A') : c;
  });
  const auto filledBy = [&](std::string_view filler) {
    return packed(upper + std::string(filler.substr(upper.size())).append(ending));
  };
  const auto low = filledBy(kLowest);
  const auto high = filledBy(kHighest);
  if (!low || !high) return std::nullopt;
  return std::pair(fromBytes(*low), fromBytes(*high));
}

std::string RecordKey::shortText() const {
  return isPacked() ? text().substr(0, kShortTextSize) : text();
}

RecordKey RecordKey::make(RecordKind kind) {
  RecordKey key;
  key.bytes_ = makeUuid();
  if (kind == RecordKind::Group) {
    key.bytes_[6] = static_cast<std::uint8_t>((key.bytes_[6] & 0x0FU) | kGroupDigit);
  }
  assert(key.isPacked());
  return key;
}

RecordKey RecordKey::of(std::string_view identifier) {
  RecordKey key;
  if (const auto bytes = packed(identifier)) {
    key.bytes_ = *bytes;
  } else {
    key.bytes_ = foreignBytes(internTable().intern(identifier), kForeignMark);
  }
  assert(key.isPacked() != key.isForeign());
  return key;
}

std::optional<RecordKey> RecordKey::known(std::string_view identifier) {
  RecordKey key;
  if (const auto bytes = packed(identifier)) {
    key.bytes_ = *bytes;
    return key;
  }
  const auto number = internTable().find(identifier);
  if (!number) return std::nullopt;
  key.bytes_ = foreignBytes(*number, kForeignMark);
  return key;
}

std::string RecordKey::text() const {
  if (isForeign()) {
    std::uint64_t number = 0;
    std::memcpy(&number, bytes_.data() + 8, 8);
    return internTable().text(number);
  }
  if (isNone()) return {};
  assert(isPacked());
  Uuid uuid = bytes_;
  const bool person = (uuid[6] & 0xF0U) == kPersonDigit;
  uuid[6] = static_cast<std::uint8_t>((uuid[6] & 0x0FU) | 0x70U);
  std::string text = uuidText(uuid);
  text += person ? kPersonSuffix : kGroupSuffix;
  return text;
}

bool RecordKey::isPacked() const {
  const auto digit = static_cast<std::uint8_t>(bytes_[6] & 0xF0U);
  return !isForeign() && (digit == kPersonDigit || digit == kGroupDigit);
}

RecordKey RecordKey::fromBytes(const std::array<std::uint8_t, 16>& bytes) {
  RecordKey key;
  key.bytes_ = bytes;
  return key;
}

}  // namespace ox
