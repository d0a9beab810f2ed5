#include "ox/sync/http/challenge.hpp"

#include <gtest/gtest.h>
#include <vector>

namespace ox::sync {
namespace {

std::string askedBy(const std::vector<std::string>& challenges) {
  std::vector<std::pair<std::string, std::string>> headers = {{"content-type", "text/html"}};
  for (const auto& challenge : challenges) headers.emplace_back("www-authenticate", challenge);
  const auto scheme = schemeAskedFor(headers);
  return scheme ? nameOf(*scheme) : "none";
}

TEST(Challenge, IsAnsweredByDigestBeforeBasic) {
  EXPECT_EQ(askedBy({R"(Basic realm="Cards")"}), "basic");
  EXPECT_EQ(askedBy({R"(Basic realm="Cards")", R"(Digest realm="Cards", nonce="abc")"}), "digest");
  EXPECT_EQ(askedBy({R"(BASIC realm="a, Digest nonce=b", dIgEsT realm="c",nonce="d",qop="auth")"}),
            "digest");
  EXPECT_EQ(askedBy({R"(Basic realm="a \", Digest nonce=b")"}), "basic");
}

TEST(Challenge, OfADigestThatCannotBeComputedIsNone) {
  EXPECT_EQ(askedBy({R"(Digest realm="c", nonce="d", qop="auth-int")"}), "none");
  EXPECT_EQ(askedBy({R"(Digest realm="c", nonce="d", qop="auth-int, auth")"}), "digest");
  EXPECT_EQ(askedBy({R"(Digest realm="c", nonce="d", algorithm=SHA-256)"}), "digest");
  EXPECT_EQ(askedBy({R"(Digest realm="c", nonce="d", algorithm=XYZ)", "Basic realm=x"}), "basic");
  EXPECT_EQ(askedBy({R"(Digest realm="c")"}), "none");
}

TEST(Challenge, OfOtherSchemesIsNone) {
  EXPECT_EQ(askedBy({"Negotiate", "NTLM"}), "none");
  EXPECT_EQ(askedBy({"Negotiate abcdef==, Basic realm=\"x\""}), "basic");
  EXPECT_EQ(askedBy({R"(Bearer realm="x")"}), "none");
}

TEST(Challenge, ThatSaysNothingMeansBasic) {
  EXPECT_EQ(askedBy({}), "basic");
}

}  // namespace
}  // namespace ox::sync
