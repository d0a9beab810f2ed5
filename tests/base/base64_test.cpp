#include "ox/base/base64.hpp"

#include <gtest/gtest.h>
#include <utility>
#include <vector>

namespace ox {
namespace {

TEST(Base64, WritesAndReadsTheVectorsOfTheStandard) {
  const std::vector<std::pair<std::string, std::string>> rows = {
      {"", ""},
      {"f", "Zg=="},
      {"fo", "Zm8="},
      {"foo", "Zm9v"},
      {"foob", "Zm9vYg=="},
      {"fooba", "Zm9vYmE="},
      {"foobar", "Zm9vYmFy"},
      {{"\0\xFF\xFE\x00\x10", 5}, "AP/+ABA="},
  };
  for (const auto& [bytes, text] : rows) {
    EXPECT_EQ(base64(bytes), text);
    EXPECT_EQ(bytesOfBase64(text), bytes);
  }
}

TEST(Base64, ReadsNothingButTheOneSpelling) {
  for (const auto* text : {"Z", "Zg", "Zg=", "Zg===", "Zh==", "Zm9=", "Z===", "====", "Zm9v\n",
                           "Zm-v", "Zg==Zg==", "Zm\xC3\xB6", "=Zm9"}) {
    EXPECT_EQ(bytesOfBase64(text), std::nullopt) << text;
  }
}

}  // namespace
}  // namespace ox
