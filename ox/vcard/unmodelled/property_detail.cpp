#include "ox/vcard/unmodelled/property_detail.hpp"

#include <cassert>
#include <charconv>

#include "ox/vcard/lines/ascii.hpp"

namespace ox::vcard {
namespace {

constexpr std::string_view kPreference = ";PREF=";
constexpr std::string_view kSortAs = ";SORT-AS=";

// A number as we write it, without leading zeros, so that what is decoded is encoded again as it
// was.
template <typename Number>
bool takeNumber(std::string_view& text, Number& number) {
  if (text.size() > 1 && text[0] == '0' && isDigit(text[1])) return false;
  const auto read = std::from_chars(text.data(), text.data() + text.size(), number);
  if (read.ec != std::errc()) return false;
  text.remove_prefix(static_cast<std::size_t>(read.ptr - text.data()));
  return true;
}

// Of ";PREF=3"; 0 for any other text.
unsigned rankIn(std::string_view text) {
  if (!text.starts_with(kPreference)) return 0;
  unsigned rank = 0;
  const auto* const end = text.data() + text.size();
  const auto read = std::from_chars(text.data() + kPreference.size(), end, rank);
  return read.ec == std::errc() && read.ptr == end && rank >= 1 && rank <= 100 ? rank : 0;
}

DetailKind kindOfParameters(PropertyId property, std::string_view text) {
  if (property == property_id::kLastPhonetic && startsWithWord(text, kSortAs)) {
    return DetailKind::SortAs;
  }
  return rankIn(text) != 0 ? DetailKind::Preference : DetailKind::Parameters;
}

DetailKind kindOfMark(char mark) {
  if (mark == '.') return DetailKind::Group;
  return mark == '=' ? DetailKind::Line : DetailKind::Verbatim;
}

}  // namespace

std::string encodeDetail(const DetailView& detail) {
  std::string stored(1, ';');
  stored.append(std::to_string(detail.property)).append(1, '#');
  stored.append(std::to_string(detail.entry));
  if (detail.kind == DetailKind::Group) {
    stored += '.';
  } else if (detail.kind == DetailKind::Verbatim) {
    stored += ':';
  } else if (detail.kind == DetailKind::Line) {
    stored += '=';
  } else {
    assert(detail.text.starts_with(';') && "parameters start with their own semicolon");
  }
  return stored.append(detail.text);
}

std::optional<DetailView> decodeDetail(std::string_view stored) {
  DetailView detail;
  if (stored.empty() || stored.front() != ';') return std::nullopt;
  stored.remove_prefix(1);
  if (!takeNumber(stored, detail.property) || stored.empty() || stored.front() != '#') {
    return std::nullopt;
  }
  stored.remove_prefix(1);
  if (!takeNumber(stored, detail.entry) || stored.find_first_of(";:.=") != 0) return std::nullopt;
  if (stored.front() == ';') {
    detail.kind = kindOfParameters(detail.property, stored);
    detail.text = stored;
  } else {
    detail.kind = kindOfMark(stored.front());
    detail.text = stored.substr(1);
  }
  return detail;
}

PropertyDetail preferenceDetail(PropertyId property, std::uint64_t entry, unsigned rank) {
  assert(rank >= 1 && rank <= 100);
  return {property, entry, DetailKind::Preference,
          std::string(kPreference).append(std::to_string(rank))};
}

unsigned rankOf(const DetailView& detail) {
  return detail.kind == DetailKind::Preference ? rankIn(detail.text) : 0;
}

unsigned placeOf(DetailKind kind) {
  switch (kind) {
    case DetailKind::Parameters:
    case DetailKind::SortAs:
      return 0;
    case DetailKind::Group:
      return 1;
    case DetailKind::Verbatim:
      return 2;
    case DetailKind::Preference:
      return 3;
    case DetailKind::Line:
      return 4;
  }
  return 0;
}

}  // namespace ox::vcard
