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

void appendEncoded(std::vector<PropertyDetail>& details, Array& stored) {
  if (details.size() > 1) std::ranges::stable_sort(details, standsBefore);
  for (const auto& detail : details) stored.emplace_back(encodeDetail(viewOf(detail)));
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

Array CollectedUnmodelled::encodedDetails() const {
  auto all = details;
  std::ranges::copy(wrappedDetails, std::back_inserter(all));
  Array stored;
  appendEncoded(all, stored);
  return stored;
}

Array CollectedUnmodelled::encoded() {
  std::ranges::move(wrappedDetails, std::back_inserter(details));
  Array stored;
  stored.reserve(lines.size() + details.size());
  for (auto& line : lines) stored.emplace_back(std::move(line));
  appendEncoded(details, stored);
  clear();
  return stored;
}

}  // namespace ox::vcard
