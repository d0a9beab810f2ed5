#include <gtest/gtest.h>

#include "card_text.hpp"
#include "ox/records/property_keys.hpp"
#include "written_card.hpp"

// ADR, and LABEL, the formatted text of an address.

namespace ox::vcard {
namespace {

TEST(CardAddress, FormattedTextBelongsToTheAddressOfItsTypeOrGroup) {
  const std::string home = "Address[_$!<Home>!$_]={Street=1 Way,Label=A\nB}\n";
  expectRows({
      {"3.0", "ADR;TYPE=HOME:;;1 Way;;;;\nLABEL;TYPE=home:A\\nB\n", home},
      {"3.0", "LABEL;TYPE=home:A\\nB\nADR;TYPE=HOME:;;1 Way;;;;\n", home},
      {"2.1", "ADR;HOME:;;1 Way\nLABEL;HOME;ENCODING=QUOTED-PRINTABLE:A=0D=0AB\n", home},
      {"3.0", "ADR;TYPE=HOME:;;1 Way\nLABEL;TYPE=dom,postal,home,pref:A\\nB\n", home},
      {"4.0", "ADR;TYPE=home;LABEL=\"A\\nB\":;;1 Way;;;;\n", home},
      {"4.0", "ADR;TYPE=home;LABEL=A^nB:;;1 Way;;;;\n", home},
      {"3.0", "ADR:;;a\nADR;TYPE=WORK:;;b\nADR:;;c\nLABEL:A\nLABEL:C\nLABEL;TYPE=WORK:B\n",
       "Address[-]={Street=a,Label=A}\nAddress[_$!<Work>!$_]={Street=b,Label=B}\n"
       "Address[-]={Street=c,Label=C}\n"},
      {"3.0", "item1.ADR:;;a\nitem2.ADR:;;b\nitem2.X-ABLabel:Boat\nitem2.LABEL:B\n",
       "Address[-]={Street=a}\nAddress[Boat]={Street=b,Label=B}\n"},
  });
}

// Whatever the order of the lines, which changes when they are written.
TEST(CardAddress, FormattedTextThatSaysMoreStaysBesideTheAddress) {
  const std::string other = "LABEL;TYPE=HOME;TYPE=W:b\n";
  const std::string in30 = "ADR;TYPE=HOME:;;a;;;;\nLABEL;TYPE=HOME:a\n";
  for (const auto& lines : {in30 + other, other + in30}) {
    const auto bag = propertiesOf("3.0", "N:Ray;Al;;;\n" + lines);
    const auto text = linesOf(bag, {});
    EXPECT_EQ(text, "N:Ray;Al;;;\nFN:Al Ray\n" + in30 + other);
    EXPECT_EQ(linesOf(propertiesOf("3.0", text), {}), text);
  }
}

TEST(CardAddress, StaysInItsPlaceWhateverIsKnownOfIt) {
  const std::string lines =
      "item1.LABEL:A\nitem2.ADR:;;b;;;;\nitem2.LABEL:B\nitem3.LABEL:C\nADR:;;d;;;;\n";
  expectThrough({{"3.0", lines, lines,
                  "ADR;LABEL=A:;;;;;;\nADR;LABEL=B:;;b;;;;\nADR;LABEL=C:;;;;;;\nADR:;;d;;;;\n"}});
}

TEST(CardAddress, FormattedTextAloneIsAnAddress) {
  const std::string known = "Address[_$!<Work>!$_]={Street=A\nB,Label=A\nB}\nkept=;21#1:;;;;;;\n";
  expectRows({
      {"3.0", "LABEL;TYPE=WORK:A\\nB\n", known},
      {"4.0", "ADR;TYPE=work;LABEL=\"A\\nB\":;;;;;;\n", known},
      {"3.0", "ADR;TYPE=HOME:;;a\nLABEL;TYPE=WORK:b\n",
       "Address[_$!<Home>!$_]={Street=a}\nAddress[_$!<Work>!$_]={Street=b,Label=b}\n"
       "kept=;21#2:;;;;;;\n"},
      {"3.0", "TITLE:x\nLABEL: \n", "JobTitle=x\nkept=LABEL: \n"},
      // Another language is another text.
      {"3.0", "ADR:;;a\nLABEL;LANGUAGE=de:b\n",
       "Address[-]={Street=a}\nkept=LABEL;LANGUAGE=de:b\n"},
  });
}

TEST(CardAddress, FormattedTextTakesTheFormOfTheVersion) {
  const auto both = [](const std::string& in30, const std::string& in40) {
    return std::vector{ThroughRow{"3.0", in30, in30, in40}, ThroughRow{"4.0", in40, in30, in40}};
  };
  for (const auto& rows : {
           both("ADR;TYPE=HOME:;;1 Way;;;;\nLABEL;TYPE=HOME:1 Way\\, A\\\\B\\n\"C\"\n",
                "ADR;TYPE=home;LABEL=\"1 Way, A\\\\B\\n^'C^'\":;;1 Way;;;;\n"),
           both("LABEL;TYPE=WORK:1 Way\\nTown\n", "ADR;TYPE=work;LABEL=1 Way\\nTown:;;;;;;\n"),
           both("ADR;TYPE=HOME:;;a;;;;\nADR;TYPE=WORK:;;b;;;;\nLABEL;TYPE=WORK:B\n",
                "ADR;TYPE=home:;;a;;;;\nADR;TYPE=work;LABEL=B:;;b;;;;\n"),
           both("ADR:;;a;;;;\nitem1.ADR:;;b;;;;\nitem1.LABEL:B\n",
                "ADR:;;a;;;;\nADR;LABEL=B:;;b;;;;\n"),
           both("ADR:;;a;;;;\nitem1.LABEL:B\n", "ADR:;;a;;;;\nADR;LABEL=B:;;;;;;\n"),
           both("item1.ADR;TYPE=X-Boat:;;a;;;;\nitem1.LABEL:A\n",
                "ADR;TYPE=X-Boat;LABEL=A:;;a;;;;\n"),
           both("item1.ADR:;;a;;;;\nitem1.X-ABLabel:Boat\nitem1.LABEL:A\nitem1.X-ABADR:de\n",
                "item1.ADR;LABEL=A:;;a;;;;\nitem1.X-ABLabel:Boat\nitem1.X-ABADR:de\n"),
       }) {
    expectThrough(rows);
  }
}

TEST(CardAddress, EditedHasNoFormattedTextOfItsFormerSelf) {
  auto bag = propertiesOf("3.0", "N:Ray;Al;;;\nLABEL;TYPE=WORK:Old\n");
  auto held = *std::get<MultiValuePtr>(*bag.find(property_id::kAddress));
  Dictionary edited;
  edited.set(kABAddressStreetKey, "New");
  held.entries[0].value = edited;
  bag.set(property_id::kAddress, std::make_shared<const MultiValue>(held));
  EXPECT_EQ(linesOf(bag, {}), "N:Ray;Al;;;\nFN:Al Ray\nADR;TYPE=WORK:;;New;;;;\n");
}

TEST(CardAddress, FormattedTextThatNoAddressHasAnyMoreIsNone) {
  auto bag = propertiesOf("3.0", "N:Ray;Al;;;\nADR:;;a\nLABEL;LANGUAGE=de:b\n");
  const auto beside =
      linesOf(propertiesOf("3.0", "TITLE:x\nADR:;;\x01\nLABEL;LANGUAGE=de:b\n"), {});
  EXPECT_NE(beside.find("\nX-OX-LINE:LABEL"), beside.npos) << beside;
  EXPECT_EQ(linesOf(propertiesOf("3.0", beside), {}), beside);
  bag.set(property_id::kAddress, PropertyValue());
  EXPECT_EQ(linesOf(bag, {}), "N:Ray;Al;;;\nFN:Al Ray\nX-OX-LINE:LABEL%3BLANGUAGE%3Dde%3Ab\n");
}

// RFC 9554 adds eleven components.
TEST(CardAddress, KeepsTheComponentsThatOnlyNewerCardsHave) {
  const std::string value = ";;1 Way;Town;;12345;Land;Room 3;;2;1;Way;;;;;;";
  expectRows(
      {{"4.0", "ADR:" + value + "\n",
        "Address[-]={Street=1 Way,City=Town,ZIP=12345,Country=Land}\nkept=;21#1:" + value + "\n"}});
  expectThrough({
      {"4.0", "ADR:" + value + "\n",
       "ADR:;;1 Way;Town;;12345;Land\n"
       "X-OX-LINE:%3B21%231%3A%3B%3B1%20Way%3BTown%3B%3B12345%3BLand%3BRoom%203%3B%3B2%3B1%3BWay"
       "%3B%3B%3B%3B%3B%3B\n",
       "ADR:" + value + "\n"},
      {"4.0", "ADR:;;1 Way;Town;;12345;Land;;;;\n", "ADR:;;1 Way;Town;;12345;Land\n",
       "ADR:;;1 Way;Town;;12345;Land\n"},
  });
}

}  // namespace
}  // namespace ox::vcard
