#include "ox/sync/dav/wire/dav_collection.hpp"

#include <algorithm>
#include <charconv>

namespace ox::sync {

namespace {

std::string valueOf(const DavResponse& response, std::string_view name) {
  const auto* property = response.property(name);
  return property ? std::string(property->value()) : std::string();
}

// RFC 3744, section 5.4: the set may name an aggregate or its parts. A set that is not told says
// nothing: the book is taken for writable until it refuses.
bool isReadOnly(const DavResponse& response) {
  const auto* set = response.property(dav::kPrivileges);
  if (!set || set->elements.empty()) return false;
  const bool mayWrite =
      set->has("{DAV:}all") || set->has("{DAV:}write") ||
      (set->has("{DAV:}write-content") && set->has("{DAV:}bind") && set->has("{DAV:}unbind"));
  return !mayWrite;
}

// RFC 6352, section 6.2.2: the one sort of card that is always taken is 3.0, unless the property
// leaves it out.
bool wantsVersion4(const DavResponse& response) {
  const auto* versions = response.property(dav::kCardVersions);
  if (!versions) return false;
  bool offers3 = false;
  bool offers4 = false;
  for (const auto& element : versions->elements) {
    const auto version = std::ranges::find(element.attributes, "version", [](const auto& each) {
      return std::string_view(each.first);
    });
    if (version == element.attributes.end()) continue;
    offers3 = offers3 || version->second.starts_with("3");
    offers4 = offers4 || version->second.starts_with("4");
  }
  return offers4 && !offers3;
}

std::uint64_t numberIn(std::string_view text) {
  std::uint64_t number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  return error == std::errc() ? number : 0;
}

}  // namespace

DavCollection collectionOf(const DavResponse& response) {
  DavCollection collection;
  collection.href = response.href;
  if (const auto* type = response.property(dav::kResourceType)) {
    collection.isAddressbook = type->has(dav::kAddressbook);
    collection.isCollection = type->has(dav::kCollection);
  }
  collection.name = valueOf(response, dav::kDisplayName);
  collection.description = valueOf(response, dav::kDescription);
  if (const auto* owner = response.property(dav::kOwner)) {
    const auto hrefs = owner->hrefs();
    if (!hrefs.empty()) collection.owner = hrefs.front();
  }
  collection.isReadOnly = isReadOnly(response);
  // A report stands within `report`, or bare.
  if (const auto* reports = response.property(dav::kReports)) {
    collection.tellsReports = !reports->elements.empty();
    collection.hasSyncCollection = reports->has(dav::kSyncCollection);
    collection.hasMultiget = reports->has(dav::kMultiget);
  }
  collection.mostBytes = numberIn(valueOf(response, dav::kMostBytes));
  collection.wantsVersion4 = wantsVersion4(response);
  collection.token = valueOf(response, dav::kSyncToken);
  collection.ctag = valueOf(response, dav::kCtag);
  return collection;
}

}  // namespace ox::sync
