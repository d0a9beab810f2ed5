#include "ox/base/text/locale.hpp"

#include <cstdlib>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace ox {
namespace {

void setOrClear(const char* name, const std::string& value) {
  if (value == "-") {
    unsetenv(name);
  } else {
    setenv(name, value.c_str(), 1);
  }
}

TEST(Locale, TakesTheTerritoryElseTheLikelyRegionOfTheLanguage) {
  struct Row {
    std::string all;  // "-": not set
    std::string address;
    std::string lang;
    std::string country;
  };
  const std::vector<Row> rows = {
      {"-", "-", "-", "US"},
      {"-", "-", "de_DE.UTF-8", "DE"},
      {"-", "fr_CH.UTF-8", "de_DE.UTF-8", "CH"},
      {"en_GB", "fr_CH.UTF-8", "de_DE.UTF-8", "GB"},
      {"", "", "pt_BR", "BR"},
      {"-", "-", "sr_RS@latin", "RS"},
      {"-", "-", "zh_tw.UTF-8", "TW"},
      {"-", "-", "ja", "JP"},
      {"-", "-", "de.UTF-8", "DE"},
      {"-", "-", "zh", "CN"},
      {"-", "-", "es_419", "ES"},
      {"-", "-", "en", "US"},
      {"-", "-", "C", "US"},
      {"-", "-", "C.UTF-8", "US"},
      {"-", "-", "POSIX", "US"},
      {"C", "-", "de_DE.UTF-8", "US"},
      {"-", "-", "_", "US"},
      {"-", "-", "xx_", "US"},
      {"-", "-", "../../etc/passwd", "US"},
  };
  for (const auto& row : rows) {
    setOrClear("LC_ALL", row.all);
    setOrClear("LC_ADDRESS", row.address);
    setOrClear("LANG", row.lang);
    EXPECT_EQ(localCountryCode(), row.country) << row.all << ' ' << row.address << ' ' << row.lang;
  }
}

TEST(Locale, NamesTheLanguageOfTexts) {
  struct Row {
    std::string all;
    std::string characters;
    std::string lang;
    std::string language;
  };
  const std::vector<Row> rows = {
      {"-", "-", "-", ""},
      {"-", "-", "de_DE.UTF-8", "de_DE"},
      {"-", "zh_TW.UTF-8", "de_DE.UTF-8", "zh_TW"},
      {"sr@latin", "zh_TW", "de_DE", "sr"},
      {"C.UTF-8", "zh_TW", "de_DE", ""},
      {"POSIX", "-", "-", ""},
      {"", "", "ja", "ja"},
  };
  for (const auto& row : rows) {
    setOrClear("LC_ALL", row.all);
    setOrClear("LC_CTYPE", row.characters);
    setOrClear("LANG", row.lang);
    EXPECT_EQ(textLanguage(), row.language) << row.all << row.characters << row.lang;
  }
}

}  // namespace
}  // namespace ox
