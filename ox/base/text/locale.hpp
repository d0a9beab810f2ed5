#pragma once

#include <string>

namespace ox {

// The user's locale for a category, "de_DE.UTF-8": the first of LC_ALL, that variable and LANG that
// is set and not empty, by the precedence of the POSIX locale categories; empty when none is. The
// environment is read on each call.
std::string localeNameFor(const char* category);

// The user's country as two upper-case letters (ISO 3166-1). The first of LC_ALL, LC_ADDRESS and
// LANG that is set and not empty decides: its territory, else the likely region of its language,
// else "US". The environment is read on each call.
std::string localCountryCode();

// The language that the user's texts are in: the first of LC_ALL, LC_CTYPE and LANG that is set and
// not empty, as "zh_TW" without codeset and modifier; empty for "C" and "POSIX", and without any.
// The environment is read on each call.
std::string textLanguage();

}  // namespace ox
