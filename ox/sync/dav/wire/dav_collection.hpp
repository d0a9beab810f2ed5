#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "ox/sync/dav/wire/dav_names.hpp"
#include "ox/sync/dav/wire/multistatus_reader.hpp"

namespace ox::sync {

// What a collection says of itself, as a PROPFIND for the properties below has told it.
struct DavCollection {
  std::string href;
  bool isAddressbook = false;
  bool isCollection = false;
  std::string name;
  std::string description;
  std::string owner;  // href; empty: not told
  bool isReadOnly = false;
  bool tellsReports = false;  // where not, nothing is known of the next two
  bool hasSyncCollection = false;
  bool hasMultiget = false;
  std::uint64_t mostBytes = 0;  // of a card; 0: not known
  bool wantsVersion4 = false;
  std::string token;
  std::string ctag;
};

// Neither token nor ctag: a server may have to read the whole book to tell them.
inline constexpr std::array kCollectionProperties = {
    dav::kResourceType, dav::kDisplayName, dav::kDescription,  dav::kOwner,
    dav::kPrivileges,   dav::kReports,     dav::kCardVersions, dav::kMostBytes,
};
// The least that tells whether it is there.
inline constexpr std::array kWhetherThere = {dav::kResourceType};

DavCollection collectionOf(const DavResponse& response);

}  // namespace ox::sync
