#pragma once

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "tests/oxcontacts/program.hpp"
#include "tests/support/store_environment.hpp"

namespace ox::program_tests {

// A folder of vCards beside the store of the test, as another program keeps it.
class SyncedFolder : public testing::Test {
 protected:
  SyncedFolder() : folder_(support::temporaryPath("cards")) {
    std::filesystem::create_directory(folder_);
  }

  std::string path(const std::string& name = {}) const {
    return name.empty() ? folder_.string() : (folder_ / name).string();
  }
  void write(const std::string& name, const std::vector<std::string>& lines) const {
    writeText(name, card(lines));
  }
  void writeText(const std::string& name, const std::string& text) const {
    std::ofstream(path(name), std::ios::binary) << text;
  }
  std::string text(const std::string& name) const { return support::fileBytes(path(name)); }
  std::vector<std::string> names() const {
    std::vector<std::string> found;
    for (const auto& entry : std::filesystem::directory_iterator(folder_)) {
      found.push_back(entry.path().filename().string());
    }
    std::sort(found.begin(), found.end());
    return found;
  }

  // Ann and Bob.
  void writeTwo() const {
    write("ann.vcf", {"UID:ann", "N:Lee;Ann;;;", "FN:Ann Lee", "TITLE:Director", "X-FOO:bar"});
    write("bob.vcf", {"UID:bob", "N:Berg;Bob;;;", "FN:Bob Berg", "TEL;TYPE=HOME:+47 1"});
  }
  // The account Cards, with Ann and Bob on either side.
  void synchroniseTwo() const {
    writeTwo();
    ASSERT_EQ(run({"accounts", "add", "Cards", "--folder", path()}).exitCode, 0);
    const auto first = run({"sync"});
    ASSERT_EQ(first.exitCode, 0) << first.errors;
    ASSERT_EQ(first.output, "Cards: 2 new, 0 changed, 0 deleted here; 0 sent, 0 deleted there\n");
  }

 private:
  std::filesystem::path folder_;
};

// In the order of the list, joined.
inline std::string namesOfPersons() {
  std::string all;
  for (const auto& person : runJson({"persons"})) {
    all += (all.empty() ? "" : "|") + person["displayName"].get<std::string>();
  }
  return all;
}

// A run that did nothing at all.
inline const std::string kNothingDone =
    "Cards: 0 new, 0 changed, 0 deleted here; 0 sent, 0 deleted there\n";

}  // namespace ox::program_tests
