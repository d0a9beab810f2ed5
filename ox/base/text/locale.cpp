#include "ox/base/text/locale.hpp"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <string_view>
#include <unicode/uloc.h>

namespace ox {
namespace {

constexpr std::string_view kDefaultCountry = "US";

bool isLetter(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

std::string upper(std::string_view text) {
  std::string result(text);
  std::transform(result.begin(), result.end(), result.begin(),
                 [](char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 32) : c; });
  return result;
}

bool isLetters(std::string_view text, std::size_t least, std::size_t most) {
  return text.size() >= least && text.size() <= most &&
         std::all_of(text.begin(), text.end(), isLetter);
}

std::string likelyCountry(std::string_view language) {
  if (!isLetters(language, 2, 3)) return {};
  UErrorCode status = U_ZERO_ERROR;
  std::array<char, ULOC_FULLNAME_CAPACITY> full{};
  uloc_addLikelySubtags(std::string(language).c_str(), full.data(), full.size(), &status);
  std::array<char, ULOC_COUNTRY_CAPACITY> country{};
  uloc_getCountry(full.data(), country.data(), country.size(), &status);
  return U_SUCCESS(status) && isLetters(country.data(), 2, 2) ? country.data() : std::string();
}

}  // namespace

std::string localeNameFor(const char* category) {
  for (const char* variable : {"LC_ALL", category, "LANG"}) {
    const char* value = std::getenv(variable);
    if (value != nullptr && *value != '\0') return value;
  }
  return {};
}

std::string localCountryCode() {
  // language[_territory][.codeset][@modifier]
  const auto locale = localeNameFor("LC_ADDRESS");
  std::string_view name = locale;
  name = name.substr(0, name.find_first_of(".@"));
  const auto languageEnd = std::min(name.find_first_of("_-"), name.size());
  const auto territory = name.substr(std::min(languageEnd + 1, name.size()));
  if (isLetters(territory, 2, 2)) return upper(territory);
  const auto likely = likelyCountry(name.substr(0, languageEnd));
  return likely.empty() ? std::string(kDefaultCountry) : likely;
}

std::string textLanguage() {
  auto name = localeNameFor("LC_CTYPE");
  name.resize(std::min(name.find_first_of(".@"), name.size()));
  if (name == "C" || name == "POSIX") name.clear();
  return name;
}

}  // namespace ox
