#include "ox/vcard/unmodelled/collected_unmodelled.hpp"

#include <algorithm>
#include <iterator>
#include <tuple>
#include <utility>

namespace ox::vcard {
namespace {

bool standsBefore(const PropertyDetail& a, const PropertyDetail& b) {
  const auto order = [](const PropertyDetail& detail) {
    return std::tuple(detail.property, detail.entry, placeOf(detail.kind));
  };
  return order(a) < order(b);
}

}  // namespace

void CollectedUnmodelled::clear() {
  lines.clear();
  details.clear();
  wrappedDetails.clear();
}

void CollectedUnmodelled::addEncoded(std::string stored) {
  if (const auto detail = decodeDetail(stored)) {
    wrappedDetails.push_back(
        {detail->property, detail->entry, detail->kind, std::string(detail->text)});
  } else {
    lines.push_back(std::move(stored));
  }
}

Array CollectedUnmodelled::encoded() {
  std::ranges::move(wrappedDetails, std::back_inserter(details));
  if (details.size() > 1) std::stable_sort(details.begin(), details.end(), standsBefore);
  Array stored;
  stored.reserve(lines.size() + details.size());
  for (auto& line : lines) stored.emplace_back(std::move(line));
  for (const auto& detail : details) stored.emplace_back(encodeDetail(viewOf(detail)));
  clear();
  return stored;
}

}  // namespace ox::vcard
