// Reading a record together with those behind it put all of them into a bounded cache, and large
// neighbours pushed the record itself out again: it then read as empty, and saving an edit of one
// property wrote that emptiness over all others.
#include <gtest/gtest.h>

#include "ox/platform/AddressBook/ABAddressBook.hpp"
#include "tests/support/store_builder.hpp"

namespace ox {
namespace {

TEST(ReadAhead, NeverLosesTheRecordItWasAskedFor) {
  const std::string large(9U << 20U, 'x');
  support::StoreBuilder()
      .person("small", {.first = "Ann", .note = "kept"})
      .person("large1", {.note = large})
      .person("large2", {.note = large})
      .person("large3", {.note = large});
  const auto book = ABAddressBook::sharedAddressBook();
  const auto person = book->people().at(0);
  EXPECT_TRUE(person->setValue_forProperty(Object("Bea"), kABFirstNameProperty));
  EXPECT_TRUE(book->save());
  EXPECT_EQ(std::get<Object>(person->valueForProperty(kABFirstNameProperty)), Object("Bea"));
  EXPECT_EQ(std::get<Object>(person->valueForProperty(kABNoteProperty)), Object("kept"));
  EXPECT_EQ(std::get<Object>(book->people().at(3)->valueForProperty(kABNoteProperty)),
            Object(large));
}

}  // namespace
}  // namespace ox
