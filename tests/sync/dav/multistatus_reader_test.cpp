#include "ox/sync/dav/wire/multistatus_reader.hpp"

#include <cstddef>
#include <gtest/gtest.h>
#include <string>
#include <string_view>
#include <vector>

#include "ox/sync/remote/remote_error.hpp"

using namespace ox::sync;

namespace {

// Everything that was read, one line a response; ends with the token or with what was wrong.
std::string readIn(const std::vector<std::string_view>& parts) {
  std::string text;
  MultistatusReader reader([&](const DavResponse& response) {
    text += response.href;
    if (response.status != 0) text += " " + std::to_string(response.status);
    for (const auto& property : response.properties) {
      text += " " + property.name.substr(property.name.rfind('}') + 1) + ":" +
              std::to_string(property.status) + "=" + std::string(property.value());
      for (const auto& element : property.elements) {
        text += "<" + element.name + ">" + element.text;
        for (const auto& [name, value] : element.attributes) text += "@" + name + "=" + value;
      }
    }
    for (const auto& error : response.errors) text += " !" + error;
    if (!response.said.empty()) text += " \"" + response.said + "\"";
    text += "\n";
  });
  try {
    for (const auto part : parts) reader.take(part);
    reader.finish();
  } catch (const RemoteError& error) {
    EXPECT_EQ(error.kind(), RemoteFailure::Protocol);
    return text + "broken: " + error.what();
  }
  return text + "token: " + reader.syncToken();
}

std::string readAll(std::string_view document) {
  return readIn({document});
}

const std::string kThree =
    "<?xml version='1.0' encoding='utf-8'?>\n"
    "<d:multistatus xmlns:d='DAV:' xmlns:card='urn:ietf:params:xml:ns:carddav'>"
    "<d:response><d:href>\n /b/a%20b.vcf </d:href><d:propstat><d:prop><d:getetag>\"1\"</d:getetag>"
    "<card:address-data><![CDATA[BEGIN:VCARD & <x>]]>&#13;\r\nEND&amp;</card:address-data></d:prop>"
    "<d:status>HTTP/1.1 200 OK</d:status></d:propstat></d:response>"
    "<d:response><d:href>/b/gone.vcf</d:href><d:status>HTTP/1.1 404 Not Found</d:status>"
    "<d:propstat><d:prop><d:getetag/></d:prop><d:status>HTTP/1.1 418 Teapot</d:status></d:propstat>"
    "</d:response>"
    "<d:response><d:href>/b/</d:href><d:propstat><d:status>HTTP/1.0 200 OK</d:status><d:prop>"
    "<d:resourcetype><d:collection/><card:addressbook/></"
    "d:resourcetype><card:supported-address-data>"
    "<card:address-data-type content-type='text/vcard' "
    "version=\"4.0\"/></card:supported-address-data>"
    "</d:prop></d:propstat><d:propstat><d:prop><d:displayname>x</d:displayname></d:prop>"
    "<d:status>HTTP/1.1 404 Not Found</d:status></d:propstat></d:response>"
    "<d:sync-token> data:,7 </d:sync-token></d:multistatus>\n";

const std::string kThreeRead =
    "/b/a%20b.vcf getetag:200=\"1\" address-data:200=BEGIN:VCARD & <x>\r\nEND&\n"
    "/b/gone.vcf 404 getetag:418=\n"
    "/b/ resourcetype:200=<{DAV:}collection><{urn:ietf:params:xml:ns:carddav}addressbook>"
    " supported-address-data:200=<{urn:ietf:params:xml:ns:carddav}address-data-type>"
    "@content-type=text/vcard@version=4.0 displayname:404=x\n"
    "token: data:,7";

std::string inResponse(const std::string& inner) {
  return "<multistatus xmlns='DAV:'><response><href>/a</href>" + inner +
         "</response></multistatus>";
}

}  // namespace

TEST(MultistatusReader, ReadsOneResponseAfterTheOther) {
  EXPECT_EQ(readAll(kThree), kThreeRead);
}

TEST(MultistatusReader, ReadsTheSameFromPartsBrokenAnywhere) {
  for (std::size_t at = 1; at < kThree.size(); ++at) {
    const std::string_view text = kThree;
    ASSERT_EQ(readIn({text.substr(0, at), text.substr(at)}), kThreeRead) << "broken at " << at;
  }
}

TEST(MultistatusReader, ReadsTheSameByteByByte) {
  std::vector<std::string_view> bytes;
  for (std::size_t at = 0; at < kThree.size(); ++at) {
    bytes.push_back(std::string_view(kThree).substr(at, 1));
  }
  EXPECT_EQ(readIn(bytes), kThreeRead);
}

TEST(MultistatusReader, ComparesByNamespaceAndNotByPrefix) {
  for (std::string prefix : {"", "d:", "ns0:", "carddav:"}) {
    const auto bound = prefix.empty() ? "xmlns" : "xmlns:" + prefix.substr(0, prefix.size() - 1);
    const auto document = "<" + prefix + "multistatus " + bound + "='DAV:'><" + prefix +
                          "response><" + prefix + "href>/a</" + prefix + "href><" + prefix +
                          "status>HTTP/1.1 404 x</" + prefix + "status></" + prefix +
                          "response></" + prefix + "multistatus>";
    EXPECT_EQ(readAll(document), "/a 404\ntoken: ");
  }
  EXPECT_EQ(readAll("<d:multistatus xmlns:d='urn:other'/>"),
            "broken: The answer is XML, and no multistatus of WebDAV.");
  EXPECT_EQ(readAll("<multistatus/>"), "broken: The answer is XML, and no multistatus of WebDAV.");
  EXPECT_EQ(readAll("<multistatus xmlns='DAV:'><response xmlns='urn:other'><href>/a</href>"
                    "</response></multistatus>"),
            "token: ");
}

TEST(MultistatusReader, GivesAPropertyOnlyOfAPropstatThatSucceeded) {
  std::vector<DavResponse> responses;
  MultistatusReader reader([&](DavResponse response) { responses.push_back(std::move(response)); });
  reader.take(kThree);
  reader.finish();
  ASSERT_EQ(responses.size(), 3U);
  ASSERT_NE(responses[0].property("{DAV:}getetag"), nullptr);
  EXPECT_EQ(responses[0].property("{DAV:}getetag")->text, "\"1\"");
  EXPECT_EQ(responses[1].property("{DAV:}getetag"), nullptr);
  EXPECT_EQ(responses[2].property("{DAV:}displayname"), nullptr);
  EXPECT_EQ(responses[2].property("{DAV:}owner"), nullptr);
}

TEST(MultistatusReader, MakesOneResponseOfEachHref) {
  EXPECT_EQ(readAll(inResponse("<href>/b</href><status>HTTP/1.1 404 x</status>")),
            "/a 404\n/b 404\ntoken: ");
}

TEST(MultistatusReader, ReadsWhatStandsWithinAnError) {
  EXPECT_EQ(readAll(inResponse("<status>HTTP/1.1 507 x</status><error>"
                               "<number-of-matches-within-limits/></error>"
                               "<responsedescription>too  many</responsedescription>")),
            "/a 507 !{DAV:}number-of-matches-within-limits \"too  many\"\ntoken: ");
}

TEST(MultistatusReader, PassesOverWhatItDoesNotKnow) {
  EXPECT_EQ(readAll("<multistatus xmlns='DAV:'><x><response><href>/no</href></response></x>"
                    "<response><y>z</y><href>/a<b>c</b></href></response>text</multistatus>"),
            "/a\ntoken: ");
}

TEST(MultistatusReader, IsWholeOnlyWhenTheRootWasClosed) {
  for (std::size_t eighth = 0; eighth < 8; ++eighth) {
    const auto read = readAll(std::string_view(kThree).substr(0, kThree.size() * eighth / 8));
    EXPECT_NE(read.find("broken: The XML of the answer cannot be read: "), std::string::npos)
        << eighth << "/8: " << read;
  }
  EXPECT_NE(readAll(kThree + "<more/>").find("broken: "), std::string::npos);
}

TEST(MultistatusReader, StopsAtADocumentType) {
  EXPECT_EQ(readAll("<!DOCTYPE multistatus [<!ENTITY a 'aaaa'><!ENTITY b '&a;&a;&a;&a;'>]>"
                    "<multistatus xmlns='DAV:'>&b;</multistatus>"),
            "broken: The XML of the answer cannot be read: it has a document type.");
  EXPECT_EQ(
      readAll("<!DOCTYPE multistatus SYSTEM 'http://127.0.0.1/x'><multistatus xmlns='DAV:'/>"),
      "broken: The XML of the answer cannot be read: it has a document type.");
}

TEST(MultistatusReader, StopsAtDepth32) {
  const auto nested = [](std::size_t depth) {
    std::string text = "<multistatus xmlns='DAV:'>";
    for (std::size_t at = 1; at < depth; ++at) text += "<a>";
    for (std::size_t at = 1; at < depth; ++at) text += "</a>";
    return text + "</multistatus>";
  };
  EXPECT_EQ(readAll(nested(32)), "token: ");
  EXPECT_EQ(readAll(nested(33)),
            "broken: The XML of the answer cannot be read: it is nested deeper than 32.");
}

TEST(MultistatusReader, StopsAtLongNames) {
  const std::string longest(1024 - 5, 'n');  // with "DAV:" and what stands between
  EXPECT_EQ(readAll("<multistatus xmlns='DAV:'><" + longest + "/></multistatus>"), "token: ");
  EXPECT_EQ(readAll("<multistatus xmlns='DAV:'><n" + longest + "/></multistatus>"),
            "broken: The XML of the answer cannot be read: a name is longer than 1 KiB.");
}

// expat would keep it until it ends.
TEST(MultistatusReader, StopsAtATagOrACommentThatDoesNotEnd) {
  const std::string much(std::size_t{3} << 20, 'x');
  for (const std::string start : {"<a b='", "<!--", "<?", "<"}) {
    EXPECT_EQ(readAll("<multistatus xmlns='DAV:'>" + start + much),
              "broken: The XML of the answer cannot be read: a tag or a comment is longer than 2 "
              "MiB.");
  }
  EXPECT_EQ(readAll("<multistatus xmlns='DAV:'><!--" + much.substr(0, std::size_t{1} << 20) +
                    "--><a b='" + much.substr(0, std::size_t{1} << 19) + "'/></multistatus>"),
            "token: ");
}

TEST(MultistatusReader, StopsAtMoreThan64MiBOfTextInOneElement) {
  const std::string part(std::size_t{1} << 20, 'x');
  const auto readWith = [&](std::size_t parts, const std::string& more) {
    std::string read;
    MultistatusReader reader([&](const DavResponse& response) {
      read = std::to_string(response.properties.front().text.size());
    });
    try {
      reader.take("<multistatus xmlns='DAV:'><response><href>/a</href><propstat><prop><a>");
      for (std::size_t at = 0; at < parts; ++at) reader.take(part);
      reader.take(more + "</a></prop></propstat></response></multistatus>");
      reader.finish();
    } catch (const RemoteError& error) {
      return std::string(error.what());
    }
    return read;
  };
  EXPECT_EQ(readWith(64, ""), "67108864");
  EXPECT_EQ(readWith(64, "x"),
            "The XML of the answer cannot be read: one element holds more than 64 MiB.");
}

TEST(MultistatusReader, StopsAtMoreThanTenThousandElementsInOneResponse) {
  const auto with = [](std::size_t elements) {
    std::string inner;
    for (std::size_t at = 0; at < elements; ++at) inner += "<a/>";
    return readAll(inResponse(inner) /* response and href count too */);
  };
  EXPECT_EQ(with(9'997), "/a\ntoken: ");
  EXPECT_EQ(with(9'999), "broken: One entry of the answer has more than 10,000 elements.");
}

TEST(MultistatusReader, TakesNothingMoreAfterAnError) {
  std::size_t responses = 0;
  MultistatusReader reader([&](const DavResponse&) { ++responses; });
  EXPECT_THROW(reader.take("<multistatus xmlns='DAV:'><a></b>"), RemoteError);
  EXPECT_THROW(reader.take("<response><href>/a</href></response></multistatus>"), RemoteError);
  EXPECT_THROW(reader.finish(), RemoteError);
  EXPECT_EQ(responses, 0U);
}

TEST(MultistatusReader, LetsThroughWhatItsSinkThrows) {
  MultistatusReader reader([](const DavResponse&) { throw std::runtime_error("no room"); });
  EXPECT_THROW(
      {
        try {
          reader.take(kThree);
        } catch (const std::runtime_error& error) {
          EXPECT_STREQ(error.what(), "no room");
          throw;
        }
      },
      std::runtime_error);
}

TEST(MultistatusReader, GivesWhatCameBeforeACharacterThatXmlCannotHold) {
  EXPECT_EQ(readAll("<multistatus xmlns='DAV:'><response><href>/a</href></response><response>"
                    "<href>/\x01</href></response></multistatus>"),
            "/a\nbroken: The XML of the answer cannot be read: not well-formed (invalid token).");
  EXPECT_EQ(readAll("<multistatus xmlns='DAV:'><response><href>/\xFF</href></response>"
                    "</multistatus>"),
            "broken: The XML of the answer cannot be read: not well-formed (invalid token).");
}

TEST(StatusCode, IsTheNumberOfAStatusLine) {
  EXPECT_EQ(statusCode("HTTP/1.1 200 OK"), 200);
  EXPECT_EQ(statusCode(" HTTP/2 404\n"), 404);
  EXPECT_EQ(statusCode("HTTP/1.1  507 Insufficient Storage"), 507);
  EXPECT_EQ(statusCode("HTTP/1.1 20"), 0);
  EXPECT_EQ(statusCode("HTTP/1.1 2000"), 0);
  EXPECT_EQ(statusCode("200 OK"), 0);
  EXPECT_EQ(statusCode(""), 0);
}
