#include <algorithm>
#include <atomic>
#include <cstdio>
#include <gtest/gtest.h>
#include <signal.h>
#include <string>
#include <thread>
#include <vector>

#include "ox/platform/AddressBook/ABAddressBook.hpp"
#include "ox/platform/Contacts/CNContactStore.hpp"
#include "ox/platform/store/contact_source.hpp"
#include "ox/platform/store/upkeep/check.hpp"
#include "tests/support/second_process.hpp"
#include "tests/support/store_builder.hpp"
#include "tests/support/store_environment.hpp"

namespace ox {
namespace {

std::string storePath() {
  return support::StoreEnvironment::instance().contactStore().string();
}

bool addContact(const std::string& name) {
  const auto contact = CNMutableContact::init();
  PropertyBag values;
  values.set(property_id::kFirst, Object(name));
  contact->setProperties(values);
  const auto request = CNSaveRequest::init();
  request->addContact_toContainerWithIdentifier(contact, "_local");
  std::string error;
  const bool added = CNContactStore::init()->executeSaveRequest_error(*request, &error);
  if (!added) std::fprintf(stderr, "%s: %s\n", name.c_str(), error.c_str());
  return added;
}

const support::SecondProcess addsMany("addsMany", [](const auto& arguments) {
  for (int i = 0; i < 50; ++i) {
    if (!addContact(arguments.at(0) + std::to_string(i))) return 1;
  }
  return 0;
});

const support::SecondProcess addsForever("addsForever", [](const auto&) {
  for (int i = 0;; ++i) {
    if (!addContact("n" + std::to_string(i))) return 1;
    std::printf("%d\n", i);
    std::fflush(stdout);
  }
});

TEST(StoreThreads, ServesManyReadingEditingAndSaving) {
  support::StoreBuilder().persons("p", 20).group("g", "G");
  const auto book = ABAddressBook::sharedAddressBook();
  std::atomic<int> failed = 0;
  std::vector<std::thread> threads;
  for (int t = 0; t < 4; ++t) {
    threads.emplace_back([&, t] {
      for (int i = 0; i < 30; ++i) {
        const auto people = book->people();
        const auto& person = people[static_cast<std::size_t>((t * 7 + i) % 20)];
        const auto text = std::to_string(t * 100 + i);
        if (!person->setValue_forProperty(Object(text), kABNoteProperty)) ++failed;
        const auto group = std::dynamic_pointer_cast<ABGroup>(book->recordForUniqueId("g"));
        group->addMember(person);
        if (group->members().empty() && i % 5 != 0) group->addMember(person);
        if (i % 10 == 0 && !book->save()) ++failed;
        if (i % 7 == 0 && !addContact("t" + text)) ++failed;
      }
    });
  }
  for (auto& thread : threads) thread.join();
  EXPECT_EQ(failed, 0);
  EXPECT_TRUE(book->save());
  EXPECT_EQ(book->people().size(), 40U);
  EXPECT_EQ(storeProblems(storePath()), std::vector<std::string>{});
}

TEST(Store, LosesNoUpdateOfFourWritingProcesses) {
  support::StoreBuilder().persons("p", 1);
  std::vector<std::unique_ptr<support::RunningProcess>> writers;
  for (const char* name : {"a", "b", "c", "d"}) {
    writers.push_back(std::make_unique<support::RunningProcess>(addsMany.command({name})));
  }
  for (auto& writer : writers) {
    const auto ended = writer->wait();
    EXPECT_EQ(ended.exitCode, 0) << ended.errors;
  }
  EXPECT_EQ(ABAddressBook::sharedAddressBook()->people().size(), 201U);
  EXPECT_EQ(storeProblems(storePath()), std::vector<std::string>{});
}

TEST(Store, IsMadeOnceBySeveralProcessesAtTheSameMoment) {
  std::vector<std::unique_ptr<support::RunningProcess>> writers;
  for (const char* name : {"a", "b", "c", "d"}) {
    writers.push_back(std::make_unique<support::RunningProcess>(addsMany.command({name})));
  }
  for (auto& writer : writers) {
    const auto ended = writer->wait();
    EXPECT_EQ(ended.exitCode, 0) << ended.errors;
  }
  EXPECT_EQ(ABAddressBook::sharedAddressBook()->people().size(), 200U);
  EXPECT_EQ(contactSource().containers().size(), 1U);
}

TEST(Store, KeepsWhatAKilledProcessHadCommitted) {
  support::StoreBuilder().persons("p", 1);
  support::RunningProcess writer(addsForever.command());
  ASSERT_TRUE(writer.waitForOutput("\n20\n"));
  writer.signal(SIGKILL);
  const auto output = writer.wait().output;
  const auto promised = static_cast<std::size_t>(std::count(output.begin(), output.end(), '\n'));
  const auto people = ABAddressBook::sharedAddressBook()->people().size();
  EXPECT_GE(people, promised + 1);
  EXPECT_LE(people, promised + 2);
  EXPECT_EQ(storeProblems(storePath()), std::vector<std::string>{});
}

}  // namespace
}  // namespace ox
