// Whatever a book can hold goes through the store into a neutral book, and from there into another
// account's book, without a change.
#include <gtest/gtest.h>
#include <set>
#include <string>

#include "ox/base/failures.hpp"
#include "tests/OxMacAddressBookSDK/book/bulk_runs.hpp"
#include "tests/OxMacAddressBookSDK/book/same_records.hpp"
#include "tests/OxMacAddressBookSDK/book/storable_book.hpp"
#include "tests/OxMacAddressBookSDK/fixtures.hpp"

namespace ox::test {
namespace {

// What the book gives out once it has taken the data; missing when the load did not end well.
Data savedAfterLoading(const std::shared_ptr<OxMacAddressBook>& book, const Data& data) {
  if (!loaded(book, data).ends_with(" 100!")) return nullptr;
  book->allPersonArray()->clear();  // it still lists the persons that the load has removed
  return savedData(book);
}

// The names of the properties and the keys of the labels that occur.
void note(const OxAddressBookGeneral& book, std::set<std::string>& properties,
          std::set<std::string>& labels) {
  for (const auto& [key, person] : book.personsDic()) {
    for (const auto& [property, value] : person->values()) {
      properties.insert(property->name());
      const auto* const multiple = dynamic_cast<const OxMutableMultipleValue*>(value.get());
      for (std::uint64_t i = 0; multiple != nullptr && i < multiple->count(); ++i) {
        labels.insert(multiple->valueAtIndex(i)->label()->name().value_or("(missing)"));
      }
    }
  }
}

// In parts, for one process each.
class BookRoundTrip : public testing::TestWithParam<std::uint64_t> {};

TEST_P(BookRoundTrip, ThroughTheStoreIntoAnotherAccountKeepsEverything) {
  const failures::Watch watch;
  StoreBuilder().persons("p", 1).container("A:ABAccount", "iCloud", 3).persons("a", 1);
  const auto local = bookNamed("_local");
  const auto cloud = bookNamed("A");
  ASSERT_TRUE(local && cloud);
  std::set<std::string> properties;
  std::set<std::string> labels;
  for (std::uint64_t seed = GetParam() * 250; seed < (GetParam() + 1) * 250; ++seed) {
    const auto made = storableBook(seed);
    const auto data = savedAfterLoading(local, made->saveToData());
    const auto inLocal = OxAddressBookGeneral::addressBookWithData(data);
    ASSERT_TRUE(inLocal) << seed;
    ASSERT_TRUE(holdTheSame(*made, *inLocal)) << seed;
    const auto inCloud = OxAddressBookGeneral::addressBookWithData(savedAfterLoading(cloud, data));
    ASSERT_TRUE(inCloud) << seed;
    ASSERT_TRUE(holdTheSame(*inLocal, *inCloud)) << seed;
    note(*inCloud, properties, labels);
  }
  EXPECT_EQ(properties.size(), OxProperty::StandardPropertyArray().size());
  EXPECT_EQ(labels.size(), 30U) << "24 built-in ones, 5 of a user's own, and none";
  EXPECT_EQ(watch.counts(), failures::Counts());
  EXPECT_FALSE(ABAddressBook::sharedAddressBook()->hasUnsavedChanges());
}
INSTANTIATE_TEST_SUITE_P(OfAFixedSeed, BookRoundTrip, testing::Range<std::uint64_t>(0, 4));

}  // namespace
}  // namespace ox::test
