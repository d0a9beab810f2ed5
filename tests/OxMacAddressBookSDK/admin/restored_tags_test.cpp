#include "ox/OxMacAddressBookSDK/admin/restored_tags.hpp"

#include <gtest/gtest.h>

#include "ox/OxAddressBookSDK/tags/OxTagManager.hpp"
#include "tests/OxMacAddressBookSDK/book/bulk_runs.hpp"
#include "tests/support/second_process.hpp"

namespace ox::test {
namespace {

const support::SecondProcess addsAPerson("addsAPerson", [](const auto& arguments) {
  StoreBuilder().in(arguments.at(0)).person(arguments.at(1), {.first = "Intruder"});
  return 0;
});

// "Ann[sailing] Intruder[] " in the store's order.
std::string tagsIn(const OxMacAddressBook& book) {
  std::string text;
  for (const auto& key : contactSource().recordsIn(*book.validContainerID(), RecordKind::Person)) {
    text += *person(key.text())->displayName() + '[';
    const auto tags = book.tagManager()->tagsByPersonID(key.text());
    for (const auto& tag : tags.value_or(std::vector<std::string>())) text += tag + ' ';
    text += "] ";
  }
  return text;
}

TEST(RestoredTags, GoToThePersonsThatTheLoadMadeWhateverOthersAdd) {
  StoreBuilder()
      .person("a", {.first = "Ann"})
      .person("b", {.first = "Ben"})
      .container("E:ABAccount", "Empty", 3);
  const auto data = savedData(bookNamed("_local"));
  const auto book = OxMacAddressBook::initWithContainer(containerOf("E:ABAccount", "Empty", 3));
  Reports run;
  book->loadWithData_progressBlock(data,
                                   [report = run.loadCallback()](double percent, bool finished) {
                                     if (percent == 0.0) addsAPerson.run({"E:ABAccount", "first"});
                                     if (percent == 25.0)
                                       addsAPerson.run({"E:ABAccount", "between"});
                                     report(percent, finished);
                                   });
  EXPECT_EQ(run.wait(), "0 25 50 50 100 100 100!");
  settleRestoredTags(*book, {}, {{"sailing"}, {"chess", "tea"}});
  EXPECT_EQ(tagsIn(*book), "Intruder[] Ann[sailing ] Ben[chess tea ] ");
}

TEST(RestoredTags, OfPersonsThatWereRemovedGo) {
  StoreBuilder().person("a", {.first = "Ann"});
  const auto book = bookNamed("_local");
  book->tagManager()->setTags_forPersonID(std::vector<std::string>{"old"}, "a");
  const auto data = savedData(book);
  loaded(book, data);
  settleRestoredTags(*book, {RecordKey::of("a")}, {{"new"}});
  EXPECT_EQ(tagsIn(*book), "Ann[new ] ");
  EXPECT_FALSE(book->tagManager()->tagsByPersonID("a"));
}

TEST(RestoredTags, GoToNobodyWhenFewerPersonsWereMade) {
  StoreBuilder().person("a", {.first = "Ann"});
  const auto book = bookNamed("_local");
  loaded(book, savedData(book));
  settleRestoredTags(*book, {RecordKey::of("a")}, {{"one"}, {"two"}});
  EXPECT_EQ(tagsIn(*book), "Ann[] ");
}

}  // namespace
}  // namespace ox::test
