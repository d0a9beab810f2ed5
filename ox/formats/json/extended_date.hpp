#pragma once

#include <string>
#include <string_view>

namespace ox::formats {

// Dates and times of vCard 4.0 with the separators that JSON wants (RFC 7095, sections 3.5.3 to
// 3.5.6): "19850412" is "1985-04-12", "--0412" "--04-12", "T102200Z" "T10:22:00Z". What is in no
// such form comes back as it is.
std::string extendedDateTime(std::string_view text);  // a date, a date and time, or T and a time
std::string extendedTime(std::string_view text);
std::string extendedOffset(std::string_view text);

}  // namespace ox::formats
