#include "ox/base/text/search_forms.hpp"

#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace ox {
namespace {

TEST(SearchForms, AreWhatPeopleType) {
  struct Row {
    std::string text;
    std::vector<std::string> forms;
  };
  const std::vector<Row> rows = {
      {"", {""}},
      {"Ann LEE", {"ann lee"}},
      {"Müller", {"muller", "mueller"}},
      {"Søren Ørsted", {"soren orsted", "soeren oersted"}},
      {"Åse Łódź", {"ase lodz", "aase lodz"}},
      {"Æsop Weiß", {"aesop weiss"}},
      {"İpek Işık", {"ipek isik"}},
      {"王小明", {"王小明", "wang xiao ming"}},
      {"Чехов", {"чехов", "cehov", "chekhov"}},
      {"Παπαδόπουλος", {"παπαδοπουλοσ", "papadopoulos"}},
      {"たかはし", {"たかはし", "takahashi"}},
      {"ヤマダ", {"ヤマタ", "yamada"}},
      {"김민준", {"김민준", "gimminjun"}},
  };
  for (const auto& row : rows) EXPECT_EQ(searchForms(row.text), row.forms) << row.text;
}

TEST(SearchForms, OfALongTextAreThoseOfItsBeginning) {
  std::string text;
  for (int i = 0; i < 100'000; ++i) text += "ж";
  const auto forms = searchForms(text);
  ASSERT_EQ(forms.size(), 3U);
  EXPECT_EQ(forms[0], text);
  EXPECT_EQ(forms[1], std::string(500, 'z'));
}

}  // namespace
}  // namespace ox
