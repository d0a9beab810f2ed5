#include "ox/sync/dav/wire/dav_href.hpp"

#include <gtest/gtest.h>

using namespace ox::sync;

namespace {

const std::string kBook = "https://dav.example.org/ann/book/";

}  // namespace

TEST(ComparablePath, IsTheSameForEverySpellingOfOnePlace) {
  for (const auto* href :
       {"/ann/book/a%40b%2bc.vcf", "/ann/book/a@b%2Bc.vcf", "/ann/book/a@b+c.vcf",
        "https://dav.example.org/ann/book/a@b+c.vcf",
        "HTTPS://DAV.example.org:443/ann/book/a@b+c.vcf",
        "http://dav.example.org:8080/ann/book/a@b+c.vcf", "//dav.example.org/ann/book/a@b+c.vcf",
        "/%61nn/book/a@b+c.vcf", "a@b+c.vcf"}) {
    EXPECT_EQ(comparablePath(kBook, href), "/ann/book/a@b+c.vcf") << href;
  }
}

TEST(ComparablePath, KeepsApartWhatIsNotOne) {
  EXPECT_EQ(comparablePath(kBook, "/ann/book/A.vcf"), "/ann/book/A.vcf");
  EXPECT_EQ(comparablePath(kBook, "/ann/book/a.vcf"), "/ann/book/a.vcf");
  EXPECT_EQ(comparablePath(kBook, "/ann/book/a%2Fb"), "/ann/book/a%2Fb");
  EXPECT_EQ(comparablePath(kBook, "/ann/book/a%2fb"), "/ann/book/a%2Fb");
  EXPECT_EQ(comparablePath(kBook, "/ann/book/a%252Fb"), "/ann/book/a%252Fb");
  EXPECT_EQ(comparablePath(kBook, "/ann/book/100%"), "/ann/book/100%25");
  EXPECT_EQ(comparablePath(kBook, "/ann/book/%zz"), "/ann/book/%25zz");
  EXPECT_EQ(comparablePath(kBook, "/ann/book/%E4%b8%ad.vcf"), "/ann/book/\xE4\xB8\xAD.vcf");
  EXPECT_EQ(comparablePath(kBook, "/ann/book/\xFF.vcf"), "/ann/book/\xFF.vcf");
}

TEST(ComparablePath, RefusesDotSegmentsAndOtherHosts) {
  for (const auto* href :
       {"/ann/book/../x.vcf", "/ann/book/./x.vcf", "/ann/book/%2e%2E/x.vcf", "..", "../x.vcf",
        "https://evil.example/ann/book/x.vcf", "//evil.example/ann/book/x.vcf",
        "https://dav.example.org@evil.example/ann/book/x.vcf",
        "https://dav.example.org.evil.example/ann/book/x.vcf"}) {
    EXPECT_EQ(comparablePath(kBook, href), "") << href;
  }
}

TEST(AskableUrl, KeepsTheSpellingAndEncodesWhatAUrlCannotHold) {
  EXPECT_EQ(askableUrl(kBook, "/ann/book/a%40b%2b@.vcf"),
            "https://dav.example.org/ann/book/a%40b%2b@.vcf");
  EXPECT_EQ(askableUrl(kBook, "/ann/book/a b#c\"\xC3\xA4.vcf"),
            "https://dav.example.org/ann/book/a%20b%23c%22%C3%A4.vcf");
  EXPECT_EQ(askableUrl(kBook, "/ann/book/100%"), "https://dav.example.org/ann/book/100%25");
  EXPECT_EQ(askableUrl(kBook, "x.vcf"), "https://dav.example.org/ann/book/x.vcf");
  EXPECT_EQ(askableUrl(kBook, "https://other.example:8443/home/"),
            "https://other.example:8443/home/");
  EXPECT_EQ(askableUrl("http://127.0.0.1:8080/", "/ann/"), "http://127.0.0.1:8080/ann/");
}

TEST(HostOf, HasNoPortAndNoUser) {
  EXPECT_EQ(hostOf("HTTPS://ann:x@DAV.Example.org:443/a"), "dav.example.org");
  EXPECT_EQ(hostOf("http://[::1]:8080/a"), "[::1]");
}

TEST(EscapedXml, HoldsAnyText) {
  EXPECT_EQ(escapedXml("a<b>&\"c'\r\n\t"), "a&lt;b&gt;&amp;&quot;c'&#13;\n\t");
  EXPECT_EQ(escapedXml(std::string("\x01\xFFz", 3)), "\xEF\xBF\xBD\xEF\xBF\xBDz");
}
