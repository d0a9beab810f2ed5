// The file form as it stands in bytes, and what of it is refused although its sum is right.
#include "ox/OxAddressBookSDK/general/book_format.hpp"

#include <gtest/gtest.h>
#include <limits>
#include <string>
#include <utility>
#include <vector>

#include "ox/OxAddressBookSDK/general/OxAddressBookGeneral.hpp"
#include "ox/OxAddressBookSDK/general/picture_bytes.hpp"
#include "ox/OxAddressBookSDK/objects/OxObjectPersonName.hpp"
#include "ox/OxAddressBookSDK/objects/OxObjectPhone.hpp"
#include "ox/OxAddressBookSDK/values/OxMutableMultipleValue.hpp"
#include "ox/base/base64.hpp"
#include "ox/base/failures.hpp"
#include "tests/OxAddressBookSDK/general/loose_group.hpp"

namespace ox {
namespace {

using book_format::kHeader;
using book_format::trailer;

std::shared_ptr<OxAddressBookGeneral> read(std::string file) {
  return OxAddressBookGeneral::addressBookWithData(makeData(std::move(file)));
}

std::shared_ptr<OxMutableSingleValue> single(Object object, std::int32_t type, TextView label) {
  auto value = OxMutableSingleValue::init();
  value->setType(type);
  value->setValue(std::move(object));
  if (label) {
    value->setLabel(OxLabel::init());
    value->label()->setName(label.toText());
  }
  return value;
}

// A file of one person whose note holds this, in JSON.
std::string fileWithJson(const std::string& json) {
  const auto body = std::string(kHeader) +
                    R"({"person":"p","values":[{"property":"OxProPertyNote","type":0,"value":)" +
                    json + "}]}\n";
  return body + trailer(body, 0, 1);
}

// The file of a book of one person whose note holds the object; missing when it cannot be written.
Data fileWithNote(Object object) {
  const auto person = OxGeneralPerson::make("p");
  person->setValue_byPropertyName(single(std::move(object), 0, nullptr), OxProPertyNote);
  const auto book = OxAddressBookGeneral::init();
  book->addPerson(person);
  return book->saveToData();
}

TEST(BookFormat, IsAHeaderALineForEachRecordAndATrailer) {
  const auto group = std::make_shared<LooseGroup>("g", "Friends");
  const auto person = OxGeneralPerson::make("p");
  const auto phones = OxMutableMultipleValue::init();
  phones->addValue(single(OxObjectPhone::initWithPhoneNumber("+1"), 6, "_$!<Home>!$_"));
  phones->addValue(single(OxObjectPhone::initWithPhoneNumber(std::nullopt), 6, nullptr));
  phones->setMainValue(phones->valueAtIndex(1));
  person->setValue_byPropertyName(phones, OxProPertyPhone);
  person->setValue_byPropertyName(
      single(OxObjectPersonName::initWithFirst_middle_last(std::nullopt, "", std::nullopt), 1,
             "Name"),
      OxProPertyName);
  group->members = {person, OxGeneralPerson::make("elsewhere")};
  const auto book = OxAddressBookGeneral::init();
  book->addGroup(group);
  book->addPerson(person);
  book->addPerson(OxGeneralPerson::make("bare"));

  const std::string body =
      R"({"format":"OxAddressBookGeneral","version":1}
{"group":"g","title":"Friends","subArray":[],"persons":["p","elsewhere"]}
{"person":"p","values":[)"
      R"({"property":"OxProPertyName","type":1,"label":{"name":"Name"},)"
      R"("value":{"kind":"personName","middle":""}},)"
      R"({"property":"OxProPertyPhone","type":12,"main":1,"values":[)"
      R"({"type":6,"label":{"name":"_$!<Home>!$_"},"value":{"kind":"phone","phoneNumber":"+1"}},)"
      R"({"type":6,"value":{"kind":"phone"}}]}]}
{"person":"bare","values":[]}
)";
  EXPECT_EQ(*book->saveToData(), body + trailer(body, 1, 2));
  EXPECT_TRUE(trailer(body, 1, 2).starts_with(R"({"groups":1,"persons":2,"checksum":")"));
}

TEST(BookFormat, OfAnEmptyBookStaysAsItIsForEver) {
  const std::string file =
      R"({"format":"OxAddressBookGeneral","version":1}
{"groups":0,"persons":0,"checksum":"8043a30c98d67bcf58a97db42754695a")"
      "}\n";
  EXPECT_EQ(*OxAddressBookGeneral::init()->saveToData(), file);
  ASSERT_TRUE(read(file));
}

TEST(BookFormat, WritesEveryKindOfObject) {
  const std::vector<std::pair<Object, std::string>> rows = {
      {"a\"\\\n\x01ü", R"("a\"\\\n\u0001ü")"},
      {std::int64_t{-7}, "-7"},
      {1.0, "1.0"},
      {-0.0, "-0.0"},
      {0.1, "0.1"},
      {1e300, "1e+300"},
      {std::numeric_limits<double>::quiet_NaN(), R"({"kind":"real","value":"nan"})"},
      {-std::numeric_limits<double>::infinity(), R"({"kind":"real","value":"-inf"})"},
      {*Date::fromText("--05-17"), R"({"kind":"date","value":"--05-17"})"},
      {makeData("foob"), R"({"kind":"data","base64":"Zm9vYg=="})"},
      {Array{1.5, Object(), "x"}, R"([1.5,null,"x"])"},
      {Dictionary{{"z", "1"}, {"a", Array()}},
       R"({"kind":"dictionary","entries":{"z":"1","a":[]}})"},
  };
  for (const auto& [object, json] : rows) {
    const auto written = fileWithNote(object);
    ASSERT_TRUE(written) << json;
    EXPECT_EQ(*written, fileWithJson(json));
    const auto again = read(*written);
    ASSERT_TRUE(again) << json;
    EXPECT_EQ(*again->saveToData(), *written);
  }
}

TEST(BookFormat, RepairsTextThatIsNotUtf8) {
  EXPECT_EQ(*fileWithNote(Object("a\xFFz")), fileWithJson("\"a\xEF\xBF\xBDz\""));
  const auto book = OxAddressBookGeneral::init();
  book->addPerson(OxGeneralPerson::make("p\xFF"));
  EXPECT_TRUE(book->personsDic().objectForKey("p\xEF\xBF\xBD"));
}

struct Foreign final : HostObject {
  bool equals(const HostObject&) const override { return false; }
};

Object nested(std::size_t depth, bool dictionaries) {
  Object object("x");
  for (; depth > 0; --depth) {
    object = dictionaries ? Object(Dictionary{{"k", object}}) : Object(Array{object});
  }
  return object;
}

TEST(BookFormat, IsNotWrittenRatherThanWrittenUnreadable) {
  const failures::Watch watch;
  Date impossible;
  impossible.month = 2;
  impossible.day = 30;
  EXPECT_FALSE(fileWithNote(Object(std::make_shared<Foreign>())));
  EXPECT_FALSE(fileWithNote(Object(impossible)));
  EXPECT_FALSE(fileWithNote(Object(std::make_shared<const Image>(Image{2, 2, {1, 2, 3}}))));
  EXPECT_FALSE(fileWithNote(Object(Dictionary{{"\xFF", "x"}})));
  EXPECT_FALSE(fileWithNote(nested(33, true)));
  EXPECT_FALSE(fileWithNote(nested(33, false)));
  EXPECT_EQ(watch.counts().failures, 6U);
  for (const bool dictionaries : {false, true}) {
    const auto file = fileWithNote(nested(32, dictionaries));
    ASSERT_TRUE(file);
    EXPECT_TRUE(read(*file));
  }
  EXPECT_EQ(watch.counts().failures, 6U);
}

// Why a book is not written whose one person has that value.
std::string reasonAgainst(TextView property, const OxValuePtr& value) {
  const auto person = OxGeneralPerson::make("p");
  person->setValue_byPropertyName(single("ACME", 0, nullptr), OxProPertyCompany);
  person->setValue_byPropertyName(value, property);
  const auto book = OxAddressBookGeneral::init();
  book->addPerson(OxGeneralPerson::make("another"));
  book->addPerson(person);
  const failures::Watch watch;
  return book->saveToData() ? "written" : watch.lastReason();
}

TEST(BookFormat, NamesThePersonAndThePropertyThatCannotBeWritten) {
  const auto dates = OxMutableMultipleValue::init();
  Date offsetOnly = *Date::fromText("--05-17");
  dates->addValue(single(offsetOnly, 10, nullptr));
  EXPECT_EQ(reasonAgainst("OxProPertyDate", dates), "written");
  offsetOnly.utcOffsetMinutes = std::int16_t{60};
  dates->addValue(single(offsetOnly, 10, nullptr));
  Dictionary large;
  large.reserve(10'001);
  for (int i = 0; i <= 10'000; ++i) large.set(std::to_string(i), "x");
  const std::string start = "the neutral book cannot be written: ";
  EXPECT_EQ(reasonAgainst("OxProPertyDate", dates),
            start + "OxProPertyDate of ACME, p: a date that does not exist");
  EXPECT_EQ(reasonAgainst("OxProPertyNote", single(large, 0, nullptr)),
            start + "OxProPertyNote of ACME, p: a dictionary of too many entries");
  EXPECT_EQ(reasonAgainst("OxProPertyCompany", single(std::make_shared<Foreign>(), 0, nullptr)),
            start + "OxProPertyCompany of p: a value object of a foreign kind");
}

TEST(BookFormat, RefusesValuesThatItDoesNotKnow) {
  ASSERT_TRUE(read(fileWithJson(R"("x")")));
  const std::vector<std::string> rows = {
      "true",
      "null",
      "18446744073709551615",
      "99999999999999999999999",
      "1e999",
      "01",
      "x",
      R"("\ud800")",
      "\"\xFF\"",
      R"({})",
      R"({"kind":"colour"})",
      R"({"kind":7})",
      R"({"kind":"phone","phoneNumber":7})",
      R"({"kind":"phone","phoneNumber":null})",
      R"({"kind":"phone","phoneNumber":"1","phoneNumber":"1"})",
      R"({"kind":"phone","email":"a"})",
      R"({"kind":"real","value":"1.0"})",
      R"({"kind":"date"})",
      R"({"kind":"date","value":"1990-02-30"})",
      R"({"kind":"data","base64":"Zg"})",
      R"({"kind":"dictionary","entries":[]})",
      R"({"kind":"dictionary","entries":{"a":1,"a":1}})",
      std::string(40, '[') + std::string(40, ']'),
      std::string(1'000'000, '['),
      R"("x"},{"property":"OxProPertyNote","type":0)",  // a property twice
      R"("x"},{"property":"","type":0)",
      R"("x"},{"property":"a","type":2147483648)",
      R"("x"},{"property":"a","type":12)",
      R"("x"},{"property":"a","type":0,"values":[])",
      R"("x"},{"property":"a","type":12,"main":0,"values":[])",
      R"("x"},{"property":"a","type":12,"main":-1,"values":[{"type":0}])",
      R"("x"},{"property":"a","type":12,"values":[{"type":12}])",
      R"("x"},{"property":"a","type":0,"colour":1)",
      R"("x"},{"type":0)",
  };
  for (const auto& row : rows) {
    EXPECT_FALSE(read(fileWithJson(row))) << row.substr(0, 200);
  }
}

TEST(BookFormat, RefusesLinesAndTrailersThatDoNotFit) {
  const auto sealed = [](const std::string& lines, std::size_t groups, std::size_t persons) {
    const auto body = std::string(kHeader) + lines;
    return body + trailer(body, groups, persons);
  };
  const std::string person = "{\"person\":\"p\",\"values\":[]}\n";
  const std::string group = "{\"group\":\"p\",\"subArray\":[],\"persons\":[]}\n";
  ASSERT_TRUE(read(sealed(group + person, 1, 1)));
  EXPECT_FALSE(read(sealed(group + person, 1, 2)));
  EXPECT_FALSE(read(sealed(group + person, 0, 1)));
  EXPECT_FALSE(read(sealed(person + person, 0, 2)));
  EXPECT_FALSE(read(sealed(person + person, 0, 1)));
  EXPECT_FALSE(read(sealed(group + group, 2, 0)));
  for (const std::string line :
       {"\n", "{}\n", "7\n", "{\"person\":7,\"values\":[]}\n", "{\"person\":\"p\"}\n",
        "{\"person\":\"p\",\"group\":\"p\",\"values\":[]}\n",
        "{\"person\":\"p\",\"values\":[],\"more\":1}\n", "{\"person\":\"p\",\"values\":[7]}\n"}) {
    EXPECT_FALSE(read(sealed(line, 0, 1))) << line;
  }
  for (const std::string line :
       {"{\"group\":\"g\"}\n", "{\"group\":\"g\",\"subArray\":[7],\"persons\":[]}\n",
        "{\"group\":\"g\",\"title\":7,\"subArray\":[],\"persons\":[]}\n"}) {
    EXPECT_FALSE(read(sealed(line, 1, 0))) << line;
  }
  const std::string other = "{\"format\":\"OxAddressBookGeneral\",\"version\":3}\n";
  EXPECT_FALSE(read(other + trailer(other, 0, 0)));
  EXPECT_FALSE(read(trailer("", 0, 0)));
}

std::string imageJson(std::uint32_t width, std::uint32_t height, const std::string& packed) {
  return R"({"kind":"image","width":)" + std::to_string(width) + R"(,"height":)" +
         std::to_string(height) + R"(,"pixels":")" + base64(packed) + "\"}";
}

TEST(BookFormat, RefusesPicturesThatAreNotWhatTheyClaim) {
  const Image flat{64, 64, std::vector<std::uint8_t>(64 * 64 * 4, 9)};
  const auto packed = packedPixels(flat);
  EXPECT_LT(packed.size(), 100U);
  // Large enough to be looked at through a window.
  const Image broad{1025, 1024, std::vector<std::uint8_t>(std::size_t{1025} * 1024 * 4, 9)};
  const auto large = packedPixels(broad);
  struct Row {
    std::string packed;
    std::uint32_t width;
    std::uint32_t height;
    bool fits;
  };
  const std::vector<Row> rows = {
      {packed, 64, 64, true},
      {packed, 32, 128, true},  // as many pixels: only the shape is told
      {packed, 64, 63, false},
      {packed, 64, 65, false},
      {packed, 0, 0, false},
      {packed, 0xFFFFFFFF, 0xFFFFFFFF, false},
      {packed, 8192, 8192, false},  // allowed, but more than it can hold
      {packed + "x", 64, 64, false},
      {packed.substr(0, packed.size() - 1), 64, 64, false},
      {packed.substr(0, packed.size() - 1) + "x", 64, 64, false},
      {large, 1025, 1024, true},
      {large, 1025, 1023, false},
      {large, 1025, 1025, false},
      {large + "x", 1025, 1024, false},
      {large.substr(0, large.size() - 1), 1025, 1024, false},
      {large.substr(0, large.size() - 1) + "x", 1025, 1024, false},
      {"", 0, 0, false},
      {packedPixels(Image{}), 0, 0, true},
      {packedPixels(Image{}), 9, 0, true},
  };
  for (std::size_t i = 0; i < rows.size(); ++i) {
    const auto& [bytes, width, height, fits] = rows[i];
    EXPECT_EQ(arePackedPixels(bytes, width, height), fits) << i;
    EXPECT_EQ(imageOfPackedPixels(bytes, width, height) != nullptr, fits) << i;
    EXPECT_EQ(read(fileWithJson(imageJson(width, height, bytes))) != nullptr, fits) << i;
  }
  EXPECT_EQ(*imageOfPackedPixels(packed, 64, 64), flat);
  EXPECT_EQ(*imageOfPackedPixels(large, 1025, 1024), broad);
  EXPECT_FALSE(read(fileWithJson(R"({"kind":"image","width":-1,"height":1,"pixels":")" +
                                 base64(packed) + "\"}")));
}

}  // namespace
}  // namespace ox
