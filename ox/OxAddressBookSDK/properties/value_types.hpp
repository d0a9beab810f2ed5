#pragma once

#include <cstdint>

// Type codes of values. Files of the neutral book hold them: never renumber, only append.

namespace ox::value_type {

inline constexpr std::int32_t kString = 0;
inline constexpr std::int32_t kPersonName = 1;
inline constexpr std::int32_t kImage = 2;
inline constexpr std::int32_t kTags = 3;
inline constexpr std::int32_t kDate = 4;
inline constexpr std::int32_t kNumber = 5;  // no standard property has it
inline constexpr std::int32_t kPhone = 6;
inline constexpr std::int32_t kEmail = 7;
inline constexpr std::int32_t kURL = 8;
inline constexpr std::int32_t kAddress = 9;
inline constexpr std::int32_t kDateElement = 10;
inline constexpr std::int32_t kDictionaryElement = 11;
inline constexpr std::int32_t kMultiple = 12;
inline constexpr std::int32_t kInstantMessage = 13;

}  // namespace ox::value_type
