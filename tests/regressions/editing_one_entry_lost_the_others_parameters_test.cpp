// Hosts change one entry of a list by writing the whole list anew. Every entry then counted as new,
// and what a card had said of the other entries beyond the model was no longer theirs.
#include <fstream>
#include <gtest/gtest.h>

#include "ox/platform/AddressBook/ABAddressBook.hpp"
#include "ox/platform/AddressBook/ABMultiValue.hpp"
#include "ox/platform/store/contact_source.hpp"
#include "ox/transfer/exporter.hpp"
#include "ox/transfer/importer.hpp"
#include "tests/support/store_environment.hpp"

namespace ox {
namespace {

std::string telephoneLines() {
  std::string lines;
  vcard::exportCards(contactSource().recordsIn("_local", RecordKind::Person), {},
                     vcard::CardVersion::V30, [&](std::string_view card) {
                       for (std::size_t at = 0; at < card.size();) {
                         const auto end = card.find("\r\n", at);
                         const auto line = card.substr(at, end - at);
                         if (line.starts_with("TEL")) (lines += line) += '|';
                         at = end + 2;
                       }
                       return true;
                     });
  return lines;
}

TEST(EditingOneEntry, LeavesTheOthersWhatTheirCardSaidOfThem) {
  const auto path = support::temporaryFile("card.vcf",
                                           "BEGIN:VCARD\r\nVERSION:3.0\r\nN:Lee;Ann\r\n"
                                           "TEL;X-A=one:1\r\nTEL;X-A=two:2\r\n"
                                           "TEL;X-A=three:1\r\nEND:VCARD\r\n");
  ASSERT_EQ(vcard::importFiles({path.string()}, "_local", {}).added, 1U);
  ASSERT_EQ(telephoneLines(), "TEL;X-A=one:1|TEL;X-A=two:2|TEL;X-A=three:1|");
  const auto book = ABAddressBook::sharedAddressBook();
  auto phones = ABMutableMultiValue::init();
  for (const auto* number : {"4", "1", "22", "1"}) phones.addValue_withLabel(Object(number), "");
  phones.setPrimaryIdentifier(phones.identifierAtIndex(3));
  ASSERT_TRUE(book->people().at(0)->setValue_forProperty(phones.content(), kABPhoneProperty));
  const ABMultiValue stored(
      std::get<MultiValuePtr>(book->people().at(0)->valueForProperty(kABPhoneProperty)));
  EXPECT_EQ(stored.indexForIdentifier(stored.primaryIdentifier()), 3U);
  ASSERT_TRUE(book->save());
  EXPECT_EQ(telephoneLines(), "TEL:4|TEL;X-A=one:1|TEL:22|TEL;TYPE=pref;X-A=three:1|");
}

}  // namespace
}  // namespace ox
