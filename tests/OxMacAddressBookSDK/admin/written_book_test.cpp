#include "ox/OxMacAddressBookSDK/admin/written_book.hpp"

#include <gtest/gtest.h>
#include <string>

#include "ox/OxAddressBookSDK/general/OxAddressBookGeneral.hpp"
#include "ox/OxAddressBookSDK/general/book_writer.hpp"
#include "tests/OxMacAddressBookSDK/book/bulk_runs.hpp"
#include "tests/OxMacAddressBookSDK/fixtures.hpp"

namespace ox::test {
namespace {

struct Written {
  Data data;
  std::string reports;
};

Written written(OxMacAddressBook& book) {
  Written result;
  BookData data;
  const bool isWhole = writeBook(
      book, data, [&](double percent) { result.reports += support::shortest(percent) + " "; });
  EXPECT_TRUE(isWhole);
  result.data = data.take();
  return result;
}

TEST(WrittenBook, IsTheDataOfASaveWithItsReports) {
  StoreBuilder().persons("p", 2).group("g", "G").group("h", "H");
  const auto book = bookNamed("_local");
  const auto [data, reports] = written(*book);
  EXPECT_EQ(reports, "0 25 50 75 100 ");
  EXPECT_EQ(*data, *savedData(book));
}

TEST(WrittenBook, NeedsNobodyToReportTo) {
  StoreBuilder().persons("p", 2);
  const auto book = bookNamed("_local");
  BookData data;
  EXPECT_TRUE(writeBook(*book, data, {}));
  EXPECT_EQ(*data.take(), *savedData(book));
}

TEST(WrittenBook, HoldsARecordOnceThatIsListedTwice) {
  StoreBuilder().persons("p", 2);
  const auto book = bookNamed("_local");
  book->allPersonArray()->append(book->allPersons()->element(0));
  ASSERT_EQ(book->allPersonsCount(), 3U);
  const auto [data, reports] = written(*book);
  EXPECT_EQ(reports, "0 33.33333206176758 66.66666412353516 100 ");
  const auto read = OxAddressBookGeneral::addressBookWithData(data);
  ASSERT_TRUE(read);
  EXPECT_EQ(read->personsDic().count(), 2U);
}

TEST(WrittenBook, HoldsOneOfTwoWhoseIdentifiersAreRepairedToTheSame) {
  StoreBuilder().person("p\xFF", {.note = "first"}).person("p\xFE", {.note = "second"});
  const auto [data, reports] = written(*bookNamed("_local"));
  const auto read = OxAddressBookGeneral::addressBookWithData(data);
  ASSERT_TRUE(read);
  ASSERT_EQ(read->personsDic().count(), 1U);
  EXPECT_EQ(data->find("first"), std::string::npos);
  EXPECT_NE(data->find("second"), std::string::npos);
}

}  // namespace
}  // namespace ox::test
