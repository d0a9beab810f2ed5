#include "ox/vcard/unmodelled/property_detail.hpp"

#include <gtest/gtest.h>

#include "ox/vcard/unmodelled/collected_unmodelled.hpp"

namespace ox::vcard {
namespace {

struct DetailRow {
  PropertyDetail detail;
  std::string stored;
};

TEST(PropertyDetail, IsReadBackAsItWasStored) {
  const std::vector<DetailRow> rows = {
      {{property_id::kPhone, 2, DetailKind::Parameters, ";TYPE=MODEM;X-A=\"b;c\""},
       ";16#2;TYPE=MODEM;X-A=\"b;c\""},
      {{property_id::kLastPhonetic, 0, DetailKind::SortAs, ";SORT-AS=Lee"}, ";14#0;SORT-AS=Lee"},
      {{property_id::kFirstPhonetic, 0, DetailKind::Parameters, ";SORT-AS=Lee"},
       ";12#0;SORT-AS=Lee"},
      {{property_id::kPhone, 2, DetailKind::Group, "item1"}, ";16#2.item1"},
      {{property_id::kInstantMessage, 1, DetailKind::Verbatim, "sip:a@b"}, ";19#1:sip:a@b"},
      {{kPhotoDetails, 0, DetailKind::Verbatim, "image/x-own"}, ";0#0:image/x-own"},
      {{property_id::kUnmodelledLines, 0, DetailKind::Verbatim, "1a:-"}, ";97#0:1a:-"},
      {preferenceDetail(property_id::kPhone, 2, 100), ";16#2;PREF=100"},
      {{property_id::kPhone, 2, DetailKind::Parameters, ";PREF=101"}, ";16#2;PREF=101"},
      {{property_id::kPhone, 2, DetailKind::Parameters, ";PREF=3;X=1"}, ";16#2;PREF=3;X=1"},
  };
  for (const auto& [detail, stored] : rows) {
    EXPECT_EQ(encodeDetail(viewOf(detail)), stored);
    const auto read = decodeDetail(stored);
    ASSERT_TRUE(read) << stored;
    EXPECT_EQ(read->property, detail.property) << stored;
    EXPECT_EQ(read->entry, detail.entry) << stored;
    EXPECT_EQ(read->kind, detail.kind) << stored;
    EXPECT_EQ(read->text, detail.text) << stored;
  }
  EXPECT_EQ(rankOf(*decodeDetail(";16#2;PREF=3")), 3U);
  EXPECT_EQ(rankOf(*decodeDetail(";16#2;TYPE=MODEM")), 0U);
}

TEST(PropertyDetail, OtherStoredTextsAreNone) {
  for (const auto* text :
       {"", ";", "X-A:1", ";16", ";16#", ";16#2", ";a#2;X=1", ";16#b;X=1", ";99999#1;X=1",
        ";016#2;X=1", ";16#02;X=1", "AGENT:\nBEGIN:VCARD\nEND:VCARD"}) {
    EXPECT_FALSE(decodeDetail(text)) << text;
  }
}

TEST(CollectedUnmodelled, StandsInOneOrder) {
  CollectedUnmodelled collected;
  collected.details = {preferenceDetail(property_id::kPhone, 1, 3),
                       {property_id::kEmail, 1, DetailKind::Parameters, ";X=2"},
                       {property_id::kPhone, 1, DetailKind::Verbatim, "v"},
                       {property_id::kPhone, 1, DetailKind::Group, "g"}};
  collected.addEncoded("X-B:1");
  collected.addEncoded(";16#1;X=1");
  collected.addEncoded("X-A:1");
  std::vector<std::string> texts;
  for (const auto& text : collected.encoded()) texts.push_back(*text.text());
  EXPECT_EQ(texts, (std::vector<std::string>{"X-B:1", "X-A:1", ";16#1;X=1", ";16#1.g", ";16#1:v",
                                             ";16#1;PREF=3", ";17#1;X=2"}));
  EXPECT_TRUE(collected.empty());
}

}  // namespace
}  // namespace ox::vcard
