#include "ox/vcard/unmodelled/kept_lines.hpp"

#include <algorithm>
#include <array>
#include <charconv>

#include "ox/vcard/lines/ascii.hpp"

namespace ox::vcard {
namespace {

template <typename Number>
bool takeNumber(std::string_view& text, Number& number) {
  const auto read = std::from_chars(text.data(), text.data() + text.size(), number);
  if (read.ec != std::errc()) return false;
  text.remove_prefix(static_cast<std::size_t>(read.ptr - text.data()));
  return true;
}

}  // namespace

std::string groupKey(std::string_view group) {
  std::string key(group);
  std::transform(key.begin(), key.end(), key.begin(), upper);
  return key;
}

std::string KeptDetail::text() const {
  std::array<char, 32> digits{};
  const auto write = [&](std::uint64_t number) {
    const auto* const end = std::to_chars(digits.begin(), digits.end(), number).ptr;
    return std::string_view(digits.data(), end);
  };
  std::string result;
  result.reserve(digits.size() + said.size());
  result.append(1, ';').append(write(property));
  return result.append(1, '#').append(write(entry)).append(said);
}

bool KeptDetail::isSortAs() const {
  return property == property_id::kLastPhonetic && startsWithWord(said, ";SORT-AS=");
}

unsigned KeptDetail::rank() const {
  constexpr std::string_view kPreference = ";PREF=";
  if (!said.starts_with(kPreference)) return 0;
  unsigned rank = 0;
  const auto* const end = said.data() + said.size();
  const auto read = std::from_chars(said.data() + kPreference.size(), end, rank);
  return read.ec == std::errc() && read.ptr == end && rank >= 1 && rank <= 100 ? rank : 0;
}

std::optional<KeptDetail> readKeptDetail(std::string_view kept) {
  KeptDetail result;
  if (kept.empty() || kept.front() != ';') return std::nullopt;
  kept.remove_prefix(1);
  if (!takeNumber(kept, result.property) || kept.empty() || kept.front() != '#') {
    return std::nullopt;
  }
  kept.remove_prefix(1);
  if (!takeNumber(kept, result.entry) || kept.find_first_of(";:.") != 0) return std::nullopt;
  result.said = kept;
  return result;
}

}  // namespace ox::vcard
