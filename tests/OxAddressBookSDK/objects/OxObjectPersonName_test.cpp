#include "ox/OxAddressBookSDK/objects/OxObjectPersonName.hpp"

#include <gtest/gtest.h>
#include <vector>

namespace ox {
namespace {

struct Row {
  Text first;
  Text middle;
  Text last;
  Text shown;
};

constexpr auto kMissing = std::nullopt;

TEST(OxObjectPersonName, ComposesTheNameForDisplay) {
  const std::vector<Row> rows = {
      {"Ann", "B.", "Lee", "Ann B. Lee"},
      {"Ann", kMissing, "Lee", "Ann Lee"},
      {"Ann", "", "Lee", "Ann Lee"},
      {kMissing, kMissing, "Lee", "Lee"},
      {"Ann", kMissing, kMissing, "Ann"},
      {" Ann", kMissing, "Lee", " Ann Lee"},
      {kMissing, kMissing, kMissing, kMissing},
      {"", kMissing, kMissing, ""},
      {"", "", "", ""},
      {"小明", kMissing, "王", "王小明"},
      {"小明", "中", "王", "王中小明"},
      {"小明", "", "王", "王小明"},
      {"たろう", kMissing, "山田", "山田たろう"},
      {"민준", kMissing, "김", "김민준"},
      {"王", kMissing, kMissing, "王"},
      {"小明", kMissing, "Wang", "小明 Wang"},
      {"小明", "A", "王", "小明 A 王"},
  };
  for (const auto& row : rows) {
    const auto name =
        OxObjectPersonName::initWithFirst_middle_last(row.first, row.middle, row.last);
    EXPECT_EQ(name->displayString(), row.shown)
        << row.first.value_or("-") << "|" << row.middle.value_or("-") << "|"
        << row.last.value_or("-");
  }
}

TEST(OxObjectPersonName, TellsAMissingPartFromAnEmptyOne) {
  const auto name = [](Text first) {
    return OxObjectPersonName::initWithFirst_middle_last(std::move(first), kMissing, "Lee");
  };
  EXPECT_TRUE(name("Ann")->equals(*name("Ann")));
  EXPECT_FALSE(name("")->equals(*name(kMissing)));
  EXPECT_FALSE(name("Ann")->equals(*name("Anna")));
  EXPECT_EQ(Object(name("Ann")), Object(name("Ann")));
}

}  // namespace
}  // namespace ox
