// What another user of the machine can do to the files of the program, and read of them: nothing.
#include <cerrno>
#include <fcntl.h>
#include <filesystem>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include "tests/oxcontacts/program.hpp"
#include "tests/support/store_environment.hpp"

namespace ox::program_tests {
namespace {

namespace fs = std::filesystem;
using support::fileBytes;
using support::temporaryFile;
using support::temporaryPath;

constexpr uid_t kOther = 65534;

class SecondUser : public testing::Test {
 protected:
  void SetUp() override {
    if (::geteuid() != 0) GTEST_SKIP() << "only the superuser can try as another user";
    // Everybody may come as far as the files, and nothing is taken off their modes.
    fs::permissions(temporaryPath(""), fs::perms::others_exec, fs::perm_options::add);
    ::umask(0);
    const auto file = temporaryFile("one.vcf", card({"UID:a", "N:;Ann;;;", "FN:Ann"}));
    if (errorOfOther(file) != 0) GTEST_SKIP() << "another user does not come to temporary files";
    ASSERT_EQ(run({"import", file.string()}).exitCode, 0);
  }

  // The error that the other user gets who opens the file; 0 when she can.
  static int errorOfOther(const fs::path& file) {
    const pid_t child = ::fork();
    if (child == 0) {
      if (::setgid(kOther) != 0 || ::setuid(kOther) != 0) ::_exit(255);
      ::_exit(::open(file.c_str(), O_RDONLY) >= 0 ? 0 : errno);
    }
    int status = 0;
    ::waitpid(child, &status, 0);
    return WEXITSTATUS(status);
  }
};

TEST_F(SecondUser, ReadsNoFileThatTheProgramWrites) {
  const auto id = personIds().at("Ann");
  const auto in = [](const char* name) { return temporaryPath(name).string(); };
  const auto book = std::string(runJson({"books"})[0]["ID"]);
  for (const auto& command : std::vector<std::vector<std::string>>{
           {"tag", id, "--add", "private"},
           {"export", "-o", in("cards.vcf")},
           {"backup", book, in("book.json")},
           {"backup", "--all", in("all.db")},
           {"import", in("cards.vcf"), "--report", in("report.json")},
           {"restore", book, in("book.json")}}) {
    ASSERT_EQ(run(command).exitCode, 0) << command.front();
  }
  std::size_t files = 0;
  for (const auto& entry : fs::recursive_directory_iterator(temporaryPath(""))) {
    if (!entry.is_regular_file() || entry.path().filename() == "one.vcf") continue;
    ++files;
    EXPECT_EQ(errorOfOther(entry.path()), EACCES) << entry.path();
    struct stat status {};
    ASSERT_EQ(::stat(entry.path().c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0077U, 0U) << entry.path();
  }
  // The store, the tags, a copy of both before the restore, and four that were asked for.
  EXPECT_GE(files, 7U);
}

TEST_F(SecondUser, LeadsNoFileThatTheProgramWritesElsewhere) {
  const auto shared = temporaryPath("shared");
  fs::create_directory(shared);
  ASSERT_EQ(::chmod(shared.c_str(), 01777), 0);
  const auto target = temporaryFile("target", "untouched");
  const auto book = std::string(runJson({"books"})[0]["ID"]);
  const auto plant = [&](const char* name) {
    fs::create_symlink(target, shared / name);
    EXPECT_EQ(::lchown((shared / name).c_str(), kOther, kOther), 0);
    return (shared / name).string();
  };
  const auto planted = plant("planted");
  const auto store = plant("store.db");
  for (const auto& command :
       std::vector<std::vector<std::string>>{{"export", "-o", planted},
                                             {"backup", book, planted},
                                             {"backup", "--all", planted},
                                             {"import", "--report", planted, "/dev/null"},
                                             {"--store", store, "accounts"}}) {
    const auto result = run(command);
    EXPECT_EQ(result.exitCode, 1) << command.front();
    EXPECT_NE(result.errors.find("is a link of another user (65534), which is not followed"),
              std::string::npos)
        << command.front() << ": " << result.errors;
  }
  EXPECT_EQ(fileBytes(target), "untouched");
  EXPECT_TRUE(fs::is_symlink(planted));
}

TEST_F(SecondUser, GivesAReplacedFileNoMode) {
  const auto file = temporaryFile("given", "old");
  ASSERT_EQ(::chmod(file.c_str(), 0666), 0);
  ASSERT_EQ(::chown(file.c_str(), kOther, kOther), 0);
  ASSERT_EQ(run({"export", "-o", file.string()}).exitCode, 0);
  EXPECT_EQ(errorOfOther(file), EACCES);
}

TEST(OwnLinks, LeadTheProgramWhereTheUserWants) {
  const auto folder = temporaryPath("elsewhere");
  fs::create_directory(folder);
  fs::create_directory_symlink(folder, temporaryPath("mine"));
  const auto store = (temporaryPath("mine") / "contacts.db").string();
  const auto file = temporaryFile("one.vcf", card({"UID:a", "N:;Ann;;;", "FN:Ann"}));
  ASSERT_EQ(run({"--store", store, "import", file.string()}).exitCode, 0);
  const auto cards = (temporaryPath("mine") / "cards.vcf").string();
  ASSERT_EQ(run({"--store", store, "export", "-o", cards}).exitCode, 0);
  EXPECT_TRUE(fs::is_regular_file(folder / "contacts.db"));
  EXPECT_NE(fileBytes(folder / "cards.vcf").find("FN:Ann"), std::string::npos);
}

}  // namespace
}  // namespace ox::program_tests
