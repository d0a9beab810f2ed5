#include "ox/vcard/unmodelled/kept_lines.hpp"

#include <gtest/gtest.h>

namespace ox::vcard {
namespace {

TEST(KeptDetail, AreReadBackAsTheyWereWritten) {
  const KeptDetail kept{property_id::kPhone, 2, ";TYPE=MODEM;X-A=\"b;c\""};
  EXPECT_EQ(kept.text(), ";16#2;TYPE=MODEM;X-A=\"b;c\"");
  const auto text = kept.text();
  const auto read = readKeptDetail(text);
  ASSERT_TRUE(read);
  EXPECT_EQ(read->property, property_id::kPhone);
  EXPECT_EQ(read->entry, 2U);
  EXPECT_EQ(read->said, ";TYPE=MODEM;X-A=\"b;c\"");
}

TEST(KeptDetail, OtherKeptTextsAreNone) {
  for (const auto* text : {"", ";", "X-A:1", ";16", ";16#", ";16#2", ";a#2;X=1", ";16#b;X=1",
                           ";99999#1;X=1", "AGENT:\nBEGIN:VCARD\nEND:VCARD"}) {
    EXPECT_FALSE(readKeptDetail(text)) << text;
  }
}

}  // namespace
}  // namespace ox::vcard
