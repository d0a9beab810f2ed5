#include "ox/vcard/properties/card_date.hpp"

#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace ox::vcard {
namespace {

struct Row {
  std::string text;
  std::string expected;  // "~" in front: unusual; empty: unreadable
};

TEST(CardDate, ReadsWhatCanMeanOneDayOnly) {
  const std::vector<Row> rows = {
      {"1990-05-17", "1990-05-17"},
      {" 19900517 ", "1990-05-17"},
      {"--0517", "--05-17"},
      {"---17", "---17"},
      {"1604-05-17", "--05-17"},
      {"1604", "1604"},
      {"19890612T143000Z", "1989-06-12T14:30:00Z"},
      {"1990-5-7", "~1990-05-07"},
      {"1990/05/17", "~1990-05-17"},
      {"1990.5.17", "~1990-05-17"},
      {"17.05.1990", "~1990-05-17"},
      {"5.6.1990", "~1990-06-05"},
      {"25/12/1990", "~1990-12-25"},
      {"12/25/1990", "~1990-12-25"},
      {"12-25-1990", "~1990-12-25"},
      {"6/6/1990", "~1990-06-06"},
      {"5/6/1990", ""},
      {"June 12, 1999", "~1999-06-12"},
      {"12 June 1999", "~1999-06-12"},
      {"12. Jun 1999", "~1999-06-12"},
      {"12-jun-1999", "~1999-06-12"},
      {"1999 June 12", "~1999-06-12"},
      {"June 31, 1999", ""},
      {"31/12/90", ""},
      {"circa 1800", ""},
      {"1/2/3/1990", ""},
      {"", ""},
      {"-", ""},
      {"/", ""},
      {"1990-13-45", ""},
  };
  for (const auto& row : rows) {
    const auto read = readCardDate(row.text, "");
    EXPECT_EQ(read ? (read->isUnusual ? "~" : "") + read->date.toText() : "", row.expected)
        << row.text;
  }
}

TEST(CardDate, OmittedYearIsTheOneThatTheParameterNames) {
  EXPECT_EQ(readCardDate("1900-02-03", "1900")->date.toText(), "--02-03");
  EXPECT_EQ(readCardDate("1901-02-03", "1900")->date.toText(), "1901-02-03");
  EXPECT_EQ(readCardDate("1604-02-29", "")->date.toText(), "--02-29");
}

}  // namespace
}  // namespace ox::vcard
