#pragma once

#include <cstdint>
#include <string_view>

// What is known of the services that books belong to, by service type code.

namespace ox::services {

inline constexpr std::int32_t kLocal = 0;
inline constexpr std::int32_t kGoogle = 1;
inline constexpr std::int32_t kQQ = 2;
inline constexpr std::int32_t kFacebook = 3;
inline constexpr std::int32_t kYahoo = 4;
inline constexpr std::int32_t kLinkedIn = 5;
inline constexpr std::int32_t kAOL = 6;
inline constexpr std::int32_t kExchange = 7;
inline constexpr std::int32_t kICloud = 8;
inline constexpr std::int32_t kOther = 9;

inline constexpr std::string_view kLocalName = "On My Mac";

struct Service {
  std::string_view name;
  std::int32_t type;
};

// The service whose CardDAV containers bear that name, case ignored; null when there is none.
const Service* serviceOfContainerNamed(std::string_view name);

// The middle of the artwork's file names; "other" for an unknown code.
std::string_view artworkStem(std::int32_t type);

}  // namespace ox::services
