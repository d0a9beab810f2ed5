#pragma once

#include <chrono>
#include <optional>
#include <string>

#include "ox/base/date.hpp"

namespace ox::program {

// The user's day.
std::chrono::year_month_day today();

// The first day, that one or later, on which the date comes round: one of 29 February in other
// years on the 28th. Missing when it names no day of a year.
std::optional<std::chrono::year_month_day> nextReturn(const Date& date,
                                                      std::chrono::year_month_day from);

// "2026-12-31".
std::string textOf(std::chrono::year_month_day day);

}  // namespace ox::program
