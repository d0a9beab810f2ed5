#pragma once

#include <string>

namespace ox {

// The user's country as two upper-case letters (ISO 3166-1). The first of LC_ALL, LC_ADDRESS and
// LANG that is set and not empty decides: its territory, else the likely region of its language,
// else "US". The environment is read on each call.
std::string localCountryCode();

}  // namespace ox
