#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "ox/base/date.hpp"
#include "ox/vcard/card_version.hpp"

namespace ox::vcard {

// A date as a card writes it.
struct CardDate {
  Date date;
  bool isUnusual = false;  // in no form of any vCard version
};

// Reads the spellings of vCard and the usual ones beside them, as far as they can mean one day
// only: "1990-5-7", "1990/05/07", "17.05.1990" (day first), "25/12/1990" (one of both is no month),
// "June 12, 1999", "12 June 1999". The year 1604 stands for no year, and so does `omittedYear`, the
// value of X-APPLE-OMIT-YEAR. Missing when the text is no such date.
std::optional<CardDate> readCardDate(std::string_view text, std::string_view omittedYear);

// A date as a card writes it: in vCard 3.0 "1990-05-17", in 4.0 "19900517" or truncated.
struct WrittenDate {
  std::string text;
  bool omitsYear = false;  // the year is 1604 and X-APPLE-OMIT-YEAR has to say so
  bool isExact = true;     // reading it gives the same date
};
// Missing when the version has no form for it: vCard 3.0 wants month and day.
std::optional<WrittenDate> writeCardDate(const Date& date, CardVersion version);

}  // namespace ox::vcard
