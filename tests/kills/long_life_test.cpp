// One process works in a store for a very long time: its memory and its files stay as they are, but
// for the tables that hold an entry for each record that ever was, and it gets no slower.
#include <algorithm>
#include <array>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <random>
#include <sqlite3.h>
#include <sys/resource.h>
#include <unistd.h>

#include "ox/platform/journal/journal.hpp"
#include "tests/OxMacAddressBookSDK/fixtures.hpp"
#include "tests/faults/store_state.hpp"
#include "tests/kills/record_text.hpp"

namespace ox::kills {
namespace {

constexpr std::size_t kPersons = 200;
constexpr std::size_t kGroups = 20;

// How much of it; the environment asks for more.
std::size_t operations() {
  constexpr std::size_t kFew = 4'000;
  const auto* wanted = std::getenv("OX_LIFE_OPERATIONS");
  return wanted == nullptr ? kFew : std::strtoull(wanted, nullptr, 10);
}

void save() {
  ASSERT_TRUE(records()->save());
}

class Host {
 public:
  Host() : book_(test::bookNamed("_local")) {
    for (std::size_t i = 0; i < kPersons; ++i) addPerson();
    for (std::size_t i = 0; i < kGroups; ++i) addGroup();
  }

  void work() {
    using Step = void (Host::*)();
    static constexpr std::array kSteps = {
        &Host::replacePerson, &Host::replaceGroup, &Host::setNote,      &Host::setPhones,
        &Host::setPicture,    &Host::changeTags,   &Host::changeMember, &Host::readEverybody};
    const Step step = kSteps[below(kSteps.size())];
    (this->*step)();
    ++done_;
  }

  std::size_t made() const { return made_; }

 private:
  std::size_t below(std::size_t end) {
    return std::uniform_int_distribution<std::size_t>(0, end - 1)(chance_);
  }
  std::string next() { return std::to_string(made_) + "." + std::to_string(done_); }
  std::shared_ptr<_ABPerson> anyone() { return persons_[below(persons_.size())]; }
  std::shared_ptr<_ABGroup> anyGroup() { return groups_[below(groups_.size())]; }

  void addPerson() {
    ++made_;
    auto person = recordOf(book_->newPerson());
    person->setValue_forProperty(Object("P" + next()), kABFirstNameProperty);
    save();
    persons_.push_back(std::move(person));
  }

  void addGroup() {
    ++made_;
    groups_.push_back(std::dynamic_pointer_cast<_ABGroup>(book_->addGroupByName("G" + next())));
    save();
  }

  void replacePerson() {
    std::swap(persons_[below(persons_.size())], persons_.back());
    book_->removePersons({persons_.back()});
    persons_.pop_back();
    save();
    addPerson();
  }

  void replaceGroup() {
    std::swap(groups_[below(groups_.size())], groups_.back());
    book_->removeGroup(groups_.back());
    groups_.pop_back();
    save();
    addGroup();
  }

  void setNote() {
    anyone()->setValue_forProperty(Object("note " + next()), kABNoteProperty);
    save();
  }

  // A few numbers, one more or the first one gone.
  void setPhones() {
    const auto person = anyone();
    auto phones = entriesOf(*person, kABPhoneProperty);
    phones.add(Object(next()), "mobile");
    if (phones.entries.size() > 5) phones.entries.erase(phones.entries.begin());
    phones.primary = 0;
    person->setValue_forProperty(std::make_shared<const MultiValue>(std::move(phones)),
                                 kABPhoneProperty);
    save();
  }

  void setPicture() {
    anyone()->setImageData(makeData(std::string(500 + below(2'000), 'p') + next()));
    save();
  }

  void changeTags() {
    const auto person = anyone();
    const auto tags = person->tagArray();
    if (tags.size() < 4) return person->addTag("tag " + std::to_string(below(30)));
    person->removeTag(tags[below(tags.size())]);
  }

  void changeMember() {
    const auto group = anyGroup();
    const auto person = anyone();
    if (!group->addMember(person)) group->removeMember(person);
    save();
  }

  void readEverybody() {
    std::size_t size = 0;
    for (const auto& person : records()->people()) {
      size += textOf(*person, kABNoteProperty).size();
      size += entriesOf(*person, kABPhoneProperty).entries.size();
    }
    EXPECT_GT(size, 0U);
  }

  std::shared_ptr<OxMacAddressBook> book_;
  std::mt19937 chance_{1};
  std::vector<std::shared_ptr<_ABPerson>> persons_;
  std::vector<std::shared_ptr<_ABGroup>> groups_;
  std::size_t made_ = 0;  // records
  std::size_t done_ = 0;
};

struct Usage {
  double memory;     // bytes in RAM, without those of SQLite
  double database;   // bytes that SQLite holds, nearly all of them pages of the store
  double processor;  // seconds of this process
  std::size_t made;  // records so far
};

Usage usageNow(const Host& host) {
  std::ifstream statm("/proc/self/statm");
  double all = 0;
  double resident = 0;
  statm >> all >> resident;
  rusage used{};
  ::getrusage(RUSAGE_SELF, &used);
  const auto seconds = [](const timeval& time) {
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
  };
  const auto database = static_cast<double>(sqlite3_memory_used());
  return {resident * static_cast<double>(::sysconf(_SC_PAGESIZE)) - database, database,
          seconds(used.ru_utime) + seconds(used.ru_stime), host.made()};
}

double fileSize(const std::string& ending) {
  const auto path = support::StoreEnvironment::instance().contactStore().string() + ending;
  return std::filesystem::exists(path) ? static_cast<double>(std::filesystem::file_size(path)) : 0;
}

// Milliseconds of a question and of a way back and forth, of as many as show what is usual.
template <typename Work>
double usualMilliseconds(const Work& work) {
  std::array<double, 9> times{};
  for (auto& time : times) {
    const auto begin = std::chrono::steady_clock::now();
    work();
    time =
        std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - begin).count();
  }
  std::nth_element(times.begin(), times.begin() + times.size() / 2, times.end());
  return times[times.size() / 2];
}

void printWayBack() {
  const auto log = usualMilliseconds([] { EXPECT_EQ(journal::commands(20).size(), 20U); });
  const auto way = usualMilliseconds([] {
    EXPECT_TRUE(journal::undo().done);
    EXPECT_TRUE(journal::redo().done);
  });
  std::printf("log %.3f ms, undo and redo %.3f ms\n", log, way);
}

constexpr double kMiB = 1024 * 1024;
constexpr double kMostLog = 80 * kMiB;
constexpr double kMostStore = 160 * kMiB;  // the journal of what was done, and as much again
constexpr double kMostGrowth = 4 * kMiB;
constexpr double kMostOfDatabase = 72 * kMiB;  // its cache of pages is bounded by 64
constexpr double kMostForARecord = 300;  // bytes that the process remembers of one that has gone

// The sanitizers keep what was freed, to notice whoever uses it still.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool kFreedMemoryIsFree = false;
#else
constexpr bool kFreedMemoryIsFree = true;
#endif

// What an operation costs in each quarter is printed, for whoever runs a long one.
TEST(LongLife, StaysAsSmall) {
  OxMacAddressBook::addressBookArray();
  Host host;
  const auto quarter = operations() / 4;
  std::vector<Usage> usage;
  double largestLog = 0;
  for (std::size_t i = 0; i < 4 * quarter && !HasFailure(); ++i) {
    if (i % quarter == 0) {
      printWayBack();
      usage.push_back(usageNow(host));
    }
    host.work();
    if (i % 100 == 0) largestLog = std::max(largestLog, fileSize("-wal"));
  }
  usage.push_back(usageNow(host));
  printWayBack();
  ASSERT_EQ(usage.size(), 5U);

  for (std::size_t i = 1; i < usage.size(); ++i) {
    std::printf("quarter %zu: %.1f us an operation, %.1f MiB and %.1f of SQLite\n", i,
                1e6 * (usage[i].processor - usage[i - 1].processor) / static_cast<double>(quarter),
                usage[i].memory / kMiB, usage[i].database / kMiB);
  }
  std::printf("log %.1f MiB at most, store %.1f MiB\n", largestLog / kMiB, fileSize("") / kMiB);
  EXPECT_LT(largestLog, kMostLog);
  EXPECT_LT(fileSize(""), kMostStore);
  EXPECT_LT(usage[4].database, kMostOfDatabase);
  const auto madeMeanwhile = static_cast<double>(usage[4].made - usage[1].made);
  if (kFreedMemoryIsFree) {
    EXPECT_LT(usage[4].memory - usage[1].memory, kMostGrowth + kMostForARecord * madeMeanwhile);
  }
  EXPECT_EQ(faults::problemsOf(support::StoreEnvironment::instance().contactStore().string()), "");
}

}  // namespace
}  // namespace ox::kills
