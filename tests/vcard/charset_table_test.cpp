#include <algorithm>
#include <array>
#include <gtest/gtest.h>
#include <unicode/ucnv.h>

#include "card_text.hpp"
#include "charset_names.hpp"
#include "ox/base/text/utf8.hpp"

// How many names are read rightly of files of one, three and twenty cards that do not tell their
// charset.
namespace ox::vcard {
namespace {

struct Name {
  std::string last;
  std::string first;
};

std::string inCharset(const std::string& text, std::string_view charset) {
  std::string bytes(4 * text.size() + 8, '\0');
  UErrorCode status = U_ZERO_ERROR;
  auto* converter = ucnv_open(std::string(charset).c_str(), &status);
  auto* utf8 = ucnv_open("UTF-8", &status);
  auto* out = bytes.data();
  const auto* in = text.data();
  ucnv_setFromUCallBack(converter, UCNV_FROM_U_CALLBACK_STOP, nullptr, nullptr, nullptr, &status);
  ucnv_convertEx(converter, utf8, &out, out + bytes.size(), &in, in + text.size(), nullptr, nullptr,
                 nullptr, nullptr, 1, 1, &status);
  EXPECT_TRUE(U_SUCCESS(status)) << text << " in " << charset;
  bytes.resize(static_cast<std::size_t>(out - bytes.data()));
  ucnv_close(utf8);
  ucnv_close(converter);
  return bytes;
}

std::vector<Name> namesOf(std::string_view names) {
  std::vector<Name> result;
  while (!names.empty()) {
    const auto end = std::min(names.find('|'), names.size());
    const auto name = names.substr(0, end);
    const auto comma = name.find(',');
    result.push_back({std::string(name.substr(0, comma)), std::string(name.substr(comma + 1))});
    names.remove_prefix(std::min(end + 1, names.size()));
  }
  return result;
}

std::string fileOf(const std::vector<Name>& names, std::size_t start, std::size_t count,
                   std::string_view charset) {
  std::string file;
  for (std::size_t i = start; i < start + count; ++i) {
    const auto& name = names[i % names.size()];
    file += "BEGIN:VCARD\nVERSION:3.0\nN:" + inCharset(name.last + ";" + name.first, charset) +
            ";;;\nFN:" + inCharset(name.first + " " + name.last, charset) + "\nEND:VCARD\n";
  }
  return file;
}

bool hasName(const Card& card, const Name& name) {
  const auto is = [&](PropertyId id, const std::string& wanted) {
    const auto* text = card.properties.text(id);
    return text != nullptr && *text == wanted;
  };
  return is(property_id::kLast, name.last) && is(property_id::kFirst, name.first);
}

// True for a card that says what its text was taken for, and how sure that is.
bool tellsItsGuess(const Card& card) {
  const auto start = "text is not UTF-8, read as " + card.charset + " (";
  return std::ranges::any_of(card.repairs, [&](const Problem& repair) {
    return repair.reason == start + "nearly certain)" || repair.reason == start + "likely)" ||
           repair.reason == start + "a guess)";
  });
}

struct Rate {
  int right = 0;
  int all = 0;
  int untold = 0;  // guesses that were not reported
};

Rate rateOf(const CharsetNames& row, std::size_t cards, const std::string& language) {
  const auto names = namesOf(row.names);
  EXPECT_EQ(names.size(), 40U) << row.charset;
  std::vector<std::string> languages;
  if (!language.empty()) languages.push_back(language);
  Rate rate;
  const std::size_t step = cards == 20 ? 20 : 1;
  for (std::size_t start = 0; start < names.size(); start += step) {
    const auto file = fileOf(names, start, cards, row.charset);
    MemorySource source(file);
    const auto batch = std::make_shared<CharsetBatch>(std::vector<std::string>(), languages);
    Reader reader(source, Reader::Threads::One, {{}, {}, batch});
    for (std::size_t i = start; i < start + cards; ++i) {
      const auto result = reader.next();
      const auto& card = std::get<Card>(result.value());
      ++rate.all;
      if (hasName(card, names[i % names.size()])) ++rate.right;
      if (!tellsItsGuess(card)) ++rate.untold;
    }
  }
  return rate;
}

class CharsetTable : public testing::TestWithParam<CharsetNames> {};

TEST_P(CharsetTable, NearlyAllNamesAreReadWithTheFittingLocale) {
  const auto& row = GetParam();
  for (const std::size_t cards : {1U, 3U, 20U}) {
    const auto rate = rateOf(row, cards, std::string(row.locale.substr(0, row.locale.find('.'))));
    EXPECT_GE(100 * rate.right, 95 * rate.all) << rate.right << " of " << rate.all;
    EXPECT_EQ(rate.untold, 0);
  }
}

TEST_P(CharsetTable, MostNamesAreReadWithoutALocale) {
  const auto& row = GetParam();
  for (const std::size_t cards : {1U, 3U, 20U}) {
    const auto rate = rateOf(row, cards, {});
    EXPECT_GE(100 * rate.right, 80 * rate.all) << rate.right << " of " << rate.all;
    EXPECT_EQ(rate.untold, 0);
  }
}

std::string nameOf(const testing::TestParamInfo<CharsetNames>& row) {
  std::string name(row.param.charset);
  std::erase_if(name, [](char c) { return c == '-' || c == '_'; });
  return name;
}

INSTANTIATE_TEST_SUITE_P(Of, CharsetTable, testing::ValuesIn(kCharsetNames), nameOf);

}  // namespace
}  // namespace ox::vcard
