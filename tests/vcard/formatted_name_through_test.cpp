#include <gtest/gtest.h>

#include "written_card.hpp"

// How a record is called where N and FN say different things, through the store and out again.

namespace ox::vcard {
namespace {

TEST(FormattedNameThrough, FormattedNameGoesWithTheNameThatItCameWith) {
  for (const std::string names :
       {"N:Doe;Jane\nFN:Janey the Great\nFN;LANGUAGE=de:Hannchen\n", "FN:田 中\n"}) {
    auto bag = propertiesOf("3.0", names);
    const auto before = linesOf(bag, {});
    EXPECT_EQ(linesOf(propertiesOf("3.0", before), {}), before);
    EXPECT_NE(before.find(names.substr(names.find("FN:"))), before.npos) << before;
    bag.set(property_id::kLast, Object("Roe"));
    bag.set(property_id::kFirst, Object("Bob"));
    EXPECT_EQ(linesOf(bag, {}), "N:Roe;Bob;;;\nFN:Bob Roe\n");
    EXPECT_EQ(linesOf(bag, {.version = CardVersion::V40}), "N:Roe;Bob;;;\nFN:Bob Roe\n");
  }
  // A line that an older store kept, without the name that it came with.
  PropertyBag old;
  old.set(property_id::kFirst, Object("Jane"));
  old.set(property_id::kUnmodelledLines, Object(Array{"FN:Janey"}));
  EXPECT_EQ(linesOf(old, {}), "N:;Jane;;;\nFN:Janey\n");
}

TEST(FormattedNameThrough, FormattedNameThatCannotBeSaidStaysInItsPlace) {
  const std::string second = "N:Both;;;;\nFN:Both\nX-A:1\nX-OX-LINE:FN%3AAni%04\n";
  const auto bag = propertiesOf("3.0", "N:Both\nFN:Both\nX-A:1\nFN:Ani\x04\n");
  EXPECT_EQ(linesOf(bag, {}), second);
  EXPECT_EQ(linesOf(propertiesOf("3.0", second), {}), second);
  // The first one stays, since it is not the only one.
  const std::string first = "N:Lee;Ann\\;Jo;;;\nFN:Ann\\;Jo Lee\nX-OX-LINE:FN%3AAni%04\n";
  EXPECT_EQ(linesOf(propertiesOf("3.0", first), {}), first);
  const auto text =
      linesOf(propertiesOf("3.0", "N:Lee;Ann;;;\nFN:Ann\x1d\nFN:Both\nUID:a-1\nX-A:1\n"), {});
  EXPECT_EQ(text, "N:Lee;Ann;;;\nFN:Ann\nUID:a-1\nX-OX-LINE:FN%3AAnn%1D\nFN:Both\nX-A:1\n");
  EXPECT_EQ(linesOf(propertiesOf("3.0", text), {}), text);
}

// Whatever stands around the name of a line, a writer has to take it for the same property as the
// reader did.
TEST(FormattedNameThrough, TheFormattedNameThatCountsIsWrittenFirst) {
  const auto expectWrittenAs = [](const std::string& lines, const std::string& expected,
                                  CardVersion version) {
    for (const auto& each : {lines, expected}) {
      EXPECT_EQ(linesOf(propertiesOf("4.0", each), {.version = version}), expected) << each;
    }
  };
  const auto expectBoth = [&](const std::string& lines, const std::string& in30,
                              const std::string& in40) {
    expectWrittenAs(lines, in30, CardVersion::V30);
    expectWrittenAs(lines, in40, CardVersion::V40);
  };
  const std::string none = "N:;;;;\n";
  const std::string dot = "FN:Firm\nORG:Firm\nX-OX-LINE:.FN%3AFirm\nFN:Firm\\;Unit\n";
  expectBoth(".FN:Firm\nORG:Firm\nFN:Firm\\;Unit\n", none + dot, dot);
  const std::string dots = "FN:Annie\nX-OX-LINE:a.b.FN%3AAnnie\nFN:Ann\n";
  expectBoth("N:Lee;Ann;;;\na.b.FN:Annie\nFN:Ann\n", "N:Lee;Ann;;;\n" + dots,
             "N:Lee;Ann;;;\n" + dots);
  const std::string made = "FN;DERIVED=TRUE:x\nFN;DERIVED=TRUE:y\n";
  expectBoth(made, none + made, made);
  expectBoth("FN;DERIVED=TRUE:x\nFN;DERIVED=TRUE:y\nFN: \n", none + made, made);
  expectBoth("FN;DERIVED=TRUE;A=\x02:x\nFN;DERIVED=TRUE:y\n",
             none +
                 "FN;X-DERIVED=TRUE:x\nX-OX-LINE:FN%3BDERIVED%3DTRUE%3BA%3D%02%3Ax\n"
                 "FN;DERIVED=TRUE:y\n",
             "FN;DERIVED=TRUE:x\nX-OX-LINE:FN%3BDERIVED%3DTRUE%3BA%3D%02%3Ax\n"
             "FN;DERIVED=TRUE:y\n");
}

TEST(FormattedNameThrough, AFormattedNameOfBlanksIsNone) {
  EXPECT_EQ(linesOf(propertiesOf("4.0", "FN: \nFN:Ann Lee\nFN:\x01\n"), {}),
            "N:Lee;Ann;;;\nFN:Ann Lee\n");
}

// A name is text: what says that it is base64 was not decoded, and may hold blanks.
TEST(FormattedNameThrough, AFormattedNameInBase64IsPreservedAsText) {
  const std::string text = "N:Lee;Ann;;;\nFN;TYPE=JPEG: Ann Lee\n";
  for (const std::string line :
       {"FN;JPEG;BASE64: Ann Lee\n\n", "FN;TYPE=JPEG;ENCODING=b: Ann Lee\n"}) {
    EXPECT_EQ(linesOf(propertiesOf("2.1", line), {}), text) << line;
  }
  EXPECT_EQ(linesOf(propertiesOf("3.0", text), {}), text);
}

TEST(FormattedNameThrough, AFormerNameOfTheCompanyIsNobodysName) {
  auto bag = propertiesOf("3.0", "FN:Firm\nFN:The Firm\nORG:Firm\n");
  EXPECT_EQ(linesOf(bag, {}), "N:;;;;\nFN:Firm\nORG:Firm\nFN:The Firm\n");
  bag.set(property_id::kOrganization, Object("Works"));
  EXPECT_EQ(linesOf(bag, {}), "N:;;;;\nFN:Works\nORG:Works\n");
}

}  // namespace
}  // namespace ox::vcard
