#pragma once

#include <string>
#include <string_view>

#include "ox/records/property_types.hpp"

namespace ox::sync {

inline constexpr std::string_view kPhotoWord = "photo";
inline constexpr std::string_view kGroupNameWord = "name";
inline constexpr std::string_view kCategoriesWord = "tags";
inline constexpr std::string_view kMembersWord = "members";

// What people call a property: "phone", "job title"; the name of a custom one.
std::string wordFor(PropertyId property);
// The same of an unmodelled line of that name, in upper case: "role".
std::string wordForLine(std::string_view name);

}  // namespace ox::sync
