#include "ox/OxMacAddressBookSDK/persons/likely_duplicates.hpp"

#include <gtest/gtest.h>

namespace ox {
namespace {

// "0-1 name e-mail; 2-3 near", in the order of the result.
std::string told(const std::vector<KnownBy>& persons) {
  std::string text;
  for (const auto& each : likelyDuplicates(persons)) {
    text +=
        (text.empty() ? "" : "; ") + std::to_string(each.first) + "-" + std::to_string(each.second);
    for (const auto& reason : each.reasons) {
      switch (reason.likeness) {
        case Likeness::SameName:
          text += " name";
          break;
        case Likeness::SameEmail:
          text += " e-mail";
          break;
        case Likeness::SamePhone:
          text += " phone";
          break;
        case Likeness::NearName:
          text += " near";
          break;
      }
    }
  }
  return text;
}

KnownBy named(std::string name, std::string latin = {}) {
  return {std::move(name), std::move(latin), {}, {}};
}

TEST(LikelyDuplicates, HaveOneNameHoweverItIsWritten) {
  EXPECT_EQ(told({named("Jürgen Müller"), named("MULLER, Jurgen")}), "0-1 name");
  EXPECT_EQ(told({named("O'Neil, Ann-Marie"), named("ann marie o neil")}), "0-1 name");
  EXPECT_EQ(told({named(""), named(" ")}), "");
  EXPECT_EQ(told({named("王小明"), named("王小明"), named("王小民")}), "0-1 name");
  EXPECT_EQ(told({named("A B"), named("B A"), named("A B")}), "0-1 name; 0-2 name");
}

TEST(LikelyDuplicates, HaveNearNames) {
  struct Row {
    const char* one;
    const char* other;
    bool near;
  };
  for (const auto& row : std::vector<Row>{
           {"Katharina Berg", "Katarina Berg", true},
           {"Katharina Berg", "Katharine Berg", true},
           {"Katharina Berg", "Katharian Berg", true},
           {"Katharina Berg", "Katrina Berg", false},
           {"Ann Lee", "Ann B. Lee", true},
           {"Ann Lee", "Ann B. C. Lee", false},
           {"Ann B. Lee", "Ann C. Lee", true},  // one letter
           {"Ann Boris Lee", "Ann Clara Lee", false},
           {"Bo Li", "Bo Le", false},
           {"Müllerchen", "Mullerche", true},
       }) {
    EXPECT_EQ(told({named(row.one), named(row.other)}), row.near ? "0-1 near" : "")
        << row.one << ", " << row.other;
  }
  EXPECT_EQ(told({named("王小明", "WANG XIAO MING"), named("Wang Xiaoming")}), "0-1 near");
}

TEST(LikelyDuplicates, ShareAddressesAndNumbers) {
  EXPECT_EQ(told({{"Ann", "", {"A@b.example"}, {}}, {"Bo", "", {"x", "a@B.example"}, {}}}),
            "0-1 e-mail");
  EXPECT_EQ(told({{"Ann", "", {}, {"+49 30 1234567"}}, {"Bo", "", {}, {"(030) 123 45 67"}}}),
            "0-1 phone");
  EXPECT_EQ(told({{"Ann", "", {}, {"0046 701234567"}}, {"Bo", "", {}, {"070-123 45 67"}}}),
            "0-1 phone");
  EXPECT_EQ(told({{"Ann", "", {}, {"+46 70 1234567"}}, {"Bo", "", {}, {"+966 50 1234567"}}}), "");
  EXPECT_EQ(told({{"Ann", "", {}, {"12345"}}, {"Bo", "", {}, {"9 12345"}}}), "");
  EXPECT_EQ(told({{"Ann", "", {}, {"1234"}}, {"Bo", "", {}, {"1234"}}}), "");
  EXPECT_EQ(told({{"Ann", "", {"a@b", "a@b"}, {}}}), "");
}

TEST(LikelyDuplicates, AreToldWithAllReasonsTheLikeliestFirst) {
  const auto list = std::vector<KnownBy>{{"Sue Kay", "", {}, {}},
                                         {"Ann Lee", "", {"a@b"}, {"1234567"}},
                                         {"Suey Kay", "", {}, {}},
                                         {"Lee Ann", "", {"A@B"}, {"1-234-567"}}};
  EXPECT_EQ(told(list), "1-3 name e-mail phone; 0-2 near");
  EXPECT_EQ(likelyDuplicates(list)[0].reasons[1].shared, "a@b");
}

TEST(LikelyDuplicates, AreNotAllWhoShareAHouse) {
  std::vector<KnownBy> house;
  for (int i = 0; i < 9; ++i) {
    house.push_back({std::string(8, static_cast<char>('a' + i)), "", {}, {"+1 555 1234567"}});
  }
  EXPECT_EQ(told(house), "");
  house.pop_back();
  EXPECT_EQ(likelyDuplicates(house).size(), 28U);
}

}  // namespace
}  // namespace ox
