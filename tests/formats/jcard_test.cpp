#include "ox/formats/json/jcard.hpp"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "tests/formats/card_lines.hpp"

namespace ox::formats_tests {
namespace {

// The properties of that card after VERSION, as JSON text.
std::string propertiesOf(std::initializer_list<std::string> lines) {
  JsonWriter out;
  formats::writeJCard(formats::WrittenCard(cardOf(lines)), out);
  const std::string front = R"(["vcard",[["version",{},"text","4.0"],)";
  const std::string text(out.text());
  EXPECT_TRUE(text.starts_with(front) && text.ends_with("]]")) << text;
  return text.substr(front.size(), text.size() - front.size() - 2);
}

struct Row {
  std::string line;
  std::string property;
};

TEST(JCard, WritesEachLineAsOneProperty) {
  const Row rows[] = {
      {"FN:Ann\\, Lee", R"(["fn",{},"text","Ann, Lee"])"},
      {"N:Lee;Ann;Mary,Jane;;MD", R"(["n",{},"text",["Lee","Ann",["Mary","Jane"],"","MD"]])"},
      {R"(N;SORT-AS="Lee,Ann":Lee;Ann;;;)",
       R"(["n",{"sort-as":["Lee","Ann"]},"text",["Lee","Ann","","",""]])"},
      {"NICKNAME:Annie,Nan\\,Nana", R"(["nickname",{},"text","Annie","Nan,Nana"])"},
      {"CATEGORIES:one", R"(["categories",{},"text","one"])"},
      {"ORG:ACME", R"(["org",{},"text","ACME"])"},
      {"ORG:ACME\\, Inc.;Sales\\;East;West",
       R"(["org",{},"text",["ACME, Inc.","Sales;East","West"]])"},
      {"GENDER:O;it's\\nit", R"(["gender",{},"text",["O","it's\nit"]])"},
      {"item1.TEL;TYPE=home;TYPE=voice;PREF=1:+1 55",
       R"(["tel",{"group":"item1","type":["home","voice"],"pref":"1"},"text","+1 55"])"},
      {R"(TEL;VALUE=uri;TYPE="home,cell":tel:+1-55)",
       R"(["tel",{"type":["home","cell"]},"uri","tel:+1-55"])"},
      {R"(ADR;LABEL="1 Main St^n^'Town^'":;;1 Main St;Town;;;)",
       R"(["adr",{"label":"1 Main St\n\"Town\""},"text",["","","1 Main St","Town","","",""]])"},
      {"URL:http://x.org/a,b;c", R"(["url",{},"uri","http://x.org/a,b;c"])"},
      {"UID;VALUE=text:plain", R"(["uid",{},"text","plain"])"},
      {"REV:20200203T040506Z", R"(["rev",{},"timestamp","2020-02-03T04:05:06Z"])"},
      {R"(X-FOO;X-BAR=1,"2,3":a\,b;c)", R"(["x-foo",{"x-bar":["1","2,3"]},"unknown","a\\,b;c"])"},
      {"X-FOO;VALUE=text:a\\,b", R"(["x-foo",{},"text","a,b"])"},
      {"X-FOO;VALUE=integer:-12", R"(["x-foo",{},"integer",-12])"},
      {"X-FOO;VALUE=integer:12a", R"(["x-foo",{},"integer","12a"])"},
      {"X-FOO;VALUE=float:1.5", R"(["x-foo",{},"float",1.5])"},
      {"X-FOO;VALUE=boolean:TRUE", R"(["x-foo",{},"boolean",true])"},
      {"TZ;VALUE=utc-offset:-0500", R"(["tz",{},"utc-offset","-05:00"])"},
      {"BDAY;VALUE=text:circa 1800", R"(["bday",{},"text","circa 1800"])"},
      {R"(NOTE:\"a\\b)", R"(["note",{},"text","\"a\\b"])"},
      {"NOTE:tab\there \u2028", "[\"note\",{},\"text\",\"tab\\u0009here \u2028\"]"},
  };
  for (const auto& [line, property] : rows) EXPECT_EQ(propertiesOf({line}), property);
}

TEST(JCard, WritesDatesWithTheirSeparators) {
  const Row rows[] = {
      {"19850412", "1985-04-12"},
      {"1985-04", "1985-04"},
      {"1985", "1985"},
      {"--0412", "--04-12"},
      {"---12", "---12"},
      {"T102200", "T10:22:00"},
      {"T1022", "T10:22"},
      {"T10", "T10"},
      {"T-2200", "T-22:00"},
      {"T--00", "T--00"},
      {"T102200Z", "T10:22:00Z"},
      {"T102200-0800", "T10:22:00-08:00"},
      {"19850412T232050", "1985-04-12T23:20:50"},
      {"--0412T1400", "--04-12T14:00"},
      {"---12T14", "---12T14"},
      {"19961022T140000-05", "1996-10-22T14:00:00-05"},
  };
  for (const auto& [value, written] : rows) {
    EXPECT_EQ(propertiesOf({"BDAY:" + value}),
              R"(["bday",{},"date-and-or-time",")" + written + R"("])");
  }
}

TEST(JCard, UnfoldsLinesAndKeepsTheirOrder) {
  EXPECT_EQ(propertiesOf({"NOTE:one t\r\n wo", "X-A:1", "NOTE:three"}),
            R"(["note",{},"text","one two"],["x-a",{},"unknown","1"],["note",{},"text","three"])");
}

TEST(JCard, IsJsonUnderEveryCharacterOfALine) {
  std::string note;
  for (char c = ' '; c < '\x7f'; ++c) {
    if (c == '\\' || c == ',' || c == ';') note += '\\';
    note += c;
  }
  JsonWriter out;
  formats::writeJCard(formats::WrittenCard(cardOf({"NOTE:" + note + "\t\u2028\u0085"})), out);
  const auto json = nlohmann::json::parse(out.text());
  const auto text = json[1][1][3].get<std::string>();
  EXPECT_EQ(text.size(), 95 + 1 + 3 + 2);
  EXPECT_TRUE(text.ends_with("}~\t\u2028\u0085"));
}

}  // namespace
}  // namespace ox::formats_tests
