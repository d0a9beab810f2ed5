#include "ox/base/replacement_file.hpp"

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <set>
#include <sys/wait.h>
#include <unistd.h>

namespace ox {
namespace {

using Names = std::set<std::string>;

class Replacement : public testing::Test {
 protected:
  Replacement() {
    auto pattern = (std::filesystem::temp_directory_path() / "ox-replacement-XXXXXX").string();
    if (::mkdtemp(pattern.data()) != nullptr) folder_ = pattern;
  }
  ~Replacement() override { std::filesystem::remove_all(folder_); }

  std::string temporaryPath(const std::string& name) const { return (folder_ / name).string(); }

  std::string temporaryFile(const std::string& name, const std::string& bytes) const {
    std::ofstream(temporaryPath(name), std::ios::binary) << bytes;
    return temporaryPath(name);
  }

  Names names() const {
    Names found;
    for (const auto& entry : std::filesystem::directory_iterator(folder_)) {
      found.insert(entry.path().filename().string());
    }
    return found;
  }

  static std::string bytesOf(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
  }

  // What a process leaves that is killed while it writes, with what was put beside it.
  static void leaveUnfinished(const std::string& target) {
    const auto child = ::fork();
    if (child == 0) {
      ReplacementFile file(target);
      file.write("half");
      for (const auto* ending : {"-journal", "-synced"}) {
        std::ofstream(file.path() + ending) << "beside";
      }
      ::kill(::getpid(), SIGKILL);
    }
    ::waitpid(child, nullptr, 0);
  }

  std::filesystem::path folder_;
};

TEST_F(Replacement, CanHaveItsStartReplaced) {
  const auto target = temporaryFile("target", "before");
  ReplacementFile file(target);
  file.write("first, then more");
  file.replaceStart("FIRST");
  file.write("!");
  EXPECT_EQ(bytesOf(target), "before");
  file.commit();
  EXPECT_EQ(bytesOf(target), "FIRST, then more!");
}

TEST_F(Replacement, TakesAwayWhatAKilledProcessLeft) {
  const auto target = temporaryFile("target", "old");
  leaveUnfinished(target);
  EXPECT_EQ(names().size(), 4U);
  {
    ReplacementFile file(target);
    file.write("new");
    EXPECT_EQ(names().size(), 2U);
    file.commit();
  }
  EXPECT_EQ(names(), Names{"target"});
  EXPECT_EQ(bytesOf(target), "new");
}

TEST_F(Replacement, LeavesWhatIsStillWrittenAndWhatIsOfAnotherTarget) {
  const auto target = temporaryPath("target");
  const auto other = temporaryPath("other");
  leaveUnfinished(other);
  auto expected = names();
  expected.insert({"target", "target.new", "target.notes.new"});
  temporaryFile("target.new", "mine");
  temporaryFile("target.notes.new", "mine");
  ReplacementFile first(target);
  first.write("first");
  ReplacementFile second(target);
  second.commit();
  first.commit();
  EXPECT_EQ(names(), expected);
  EXPECT_EQ(bytesOf(target), "first");
}

TEST_F(Replacement, TakesAwayWhatIsLeftBesideAFileThatIsGone) {
  leaveUnfinished(temporaryPath("target"));
  for (const auto& name : names()) {
    if (name.ends_with(".new")) std::filesystem::remove(temporaryPath(name));
  }
  ASSERT_EQ(names().size(), 2U);
  ReplacementFile(temporaryPath("target")).commit();
  EXPECT_EQ(names(), Names{"target"});
}

}  // namespace
}  // namespace ox
