#pragma once

#include <optional>
#include <string_view>

#include "base/date.hpp"

namespace ox::vcard {

// A date as cards spell it.
struct CardDate {
  Date date;
  bool mended = false;  // not a spelling of any vCard version
};

// Reads the spellings of vCard and the usual ones beside them, as far as they can mean one day
// only: "1990-5-7", "1990/05/07", "17.05.1990" (day first), "25/12/1990" (one of both is no month),
// "June 12, 1999", "12 June 1999". The year 1604 stands for no year, and so does `omittedYear`, the
// value of X-APPLE-OMIT-YEAR. Missing when the text is no such date.
std::optional<CardDate> readCardDate(std::string_view text, std::string_view omittedYear);

}  // namespace ox::vcard
