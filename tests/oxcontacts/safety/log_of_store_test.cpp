// The log of the store: in the store when the last program ends, and looked at when it is there.
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include "ox/base/sqlite/connection.hpp"
#include "tests/oxcontacts/program.hpp"
#include "tests/support/store_environment.hpp"

namespace ox::program_tests {
namespace {

namespace fs = std::filesystem;
using support::temporaryFile;
using support::temporaryPath;

std::string store() {
  return support::StoreEnvironment::instance().contactStore().string();
}

std::string tags() {
  return support::StoreEnvironment::instance().tagStore().string();
}

void addPerson(const std::string& name) {
  const auto cards = temporaryFile("one.vcf", card({"N:" + name + ";;;;", "FN:" + name}));
  ASSERT_EQ(run({"import", cards.string()}).exitCode, 0);
}

// The names in a copy of the one file.
std::string namesInCopy(const std::string& of) {
  const auto copy = temporaryPath("copy.db");
  fs::copy_file(of, copy, fs::copy_options::overwrite_existing);
  std::string names;
  for (const auto& person : runJson({"--store", copy.string(), "persons"})) {
    names += person["displayName"].get<std::string>() + " ";
  }
  return names;
}

// Has the store open, as a program that is still at work.
sqlite::Connection anotherProgram() {
  sqlite::Connection other(store(), sqlite::Connection::Mode::ReadWrite);
  EXPECT_EQ(other.queryInteger("SELECT count(*) FROM record WHERE 0"), 0);
  return other;
}

TEST(LogOfStore, IsInTheStoreWhenTheLastProgramEnds) {
  addPerson("Ann");
  run({"tag", "Ann", "--add", "friend"});
  EXPECT_FALSE(fs::exists(store() + "-wal"));
  EXPECT_FALSE(fs::exists(tags() + "-wal"));
  EXPECT_EQ(namesInCopy(store()), "Ann ");
  {
    const auto other = anotherProgram();
    addPerson("Ben");
    EXPECT_TRUE(fs::exists(store() + "-wal"));
  }
  EXPECT_FALSE(fs::exists(store() + "-wal"));
  EXPECT_EQ(namesInCopy(store()), "Ann Ben ");
}

TEST(LogOfStore, OfAKilledProgramIsInTheStoreAfterTheNext) {
  addPerson("Ann");
  const auto child = ::fork();
  if (child == 0) {
    auto other = anotherProgram();
    other.execute("UPDATE act SET at = at");
    ::_exit(0);
  }
  int status = 0;
  ::waitpid(child, &status, 0);
  EXPECT_TRUE(fs::exists(store() + "-wal"));
  run({"accounts"});
  EXPECT_FALSE(fs::exists(store() + "-wal"));
  EXPECT_EQ(namesInCopy(store()), "Ann ");
}

TEST(LogOfStore, ThatIsDamagedIsNamedByCheckAndStays) {
  addPerson("Ann");
  const auto damaged = temporaryPath("damaged.db").string();
  {
    const auto other = anotherProgram();
    // An import would empty the log.
    for (const auto* note : {"one", "two", "three"}) {
      EXPECT_EQ(run({"set", "Ann", std::string("note=") + note}).exitCode, 0);
    }
    fs::copy_file(store(), damaged);
    fs::copy_file(store() + "-wal", damaged + "-wal");
  }
  EXPECT_EQ(run({"--store", damaged, "check"}).output, "sound\n");
  {
    // A page that is neither the first nor the last of its commit.
    const auto bytes = support::fileBytes(damaged + "-wal");
    constexpr std::size_t kFrame = 24 + 4096;
    const auto isCommit = [&](std::size_t frame) {
      return bytes.substr(frame + 4, 4) != std::string(4, '\0');
    };
    auto page = 32 + kFrame;
    while (isCommit(page - kFrame) || isCommit(page)) page += kFrame;
    std::fstream log(damaged + "-wal", std::ios::in | std::ios::out | std::ios::binary);
    log.seekp(static_cast<std::streamoff>(page + 500));
    log << "damage";
  }
  const auto bytes = support::fileBytes(damaged + "-wal");
  const auto result = run({"--store", damaged, "check"});
  EXPECT_EQ(result.exitCode, 1);
  EXPECT_TRUE(result.output.starts_with("the log is damaged, ")) << result.output;
  EXPECT_EQ(support::fileBytes(damaged + "-wal"), bytes);

  EXPECT_EQ(run({"recover", damaged, "-o", temporaryPath("new.db").string()}).exitCode, 0);
  EXPECT_EQ(runJson({"--store", temporaryPath("new.db").string(), "persons"}).size(), 1U);
}

}  // namespace
}  // namespace ox::program_tests
