#pragma once

#include <cstdlib>
#include <ctime>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <map>
#include <string>
#include <sys/stat.h>
#include <vector>

#include "ox/sync/folder/folder_book.hpp"
#include "ox/sync/remote/remote_error.hpp"

namespace ox::sync {

// A folder of vCards of its own for each case.
class BookFolder : public testing::Test {
 protected:
  BookFolder() {
    auto pattern = (std::filesystem::temp_directory_path() / "ox-folder-XXXXXX").string();
    if (::mkdtemp(pattern.data()) != nullptr) folder_ = pattern;
  }
  ~BookFolder() override {
    std::filesystem::permissions(folder_, std::filesystem::perms::owner_all);
    std::filesystem::remove_all(folder_);
  }

  std::string path(const std::string& name = {}) const {
    return name.empty() ? folder_.string() : (folder_ / name).string();
  }

  void write(const std::string& name, const std::string& bytes) const {
    std::ofstream(path(name), std::ios::binary) << bytes;
  }

  std::string bytes(const std::string& name) const {
    std::ifstream file(path(name), std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
  }

  std::vector<std::string> names() const {
    std::vector<std::string> found;
    for (const auto& entry : std::filesystem::directory_iterator(folder_)) {
      found.push_back(entry.path().filename().string());
    }
    std::sort(found.begin(), found.end());
    return found;
  }

  // Gives the file another time of its last change.
  void stamp(const std::string& name, std::time_t seconds, long nanoseconds) const {
    const struct timespec times[2] = {{seconds, nanoseconds}, {seconds, nanoseconds}};
    ASSERT_EQ(::utimensat(AT_FDCWD, path(name).c_str(), times, 0), 0);
  }

  // Names and ETags as a listing gives them.
  std::map<std::string, std::string> listed() const {
    std::map<std::string, std::string> found;
    for (const auto& card : FolderBook(path()).list("").cards) found[card.href] = card.etag;
    return found;
  }

  std::vector<std::string> hrefs() const {
    std::vector<std::string> found;
    for (const auto& card : FolderBook(path()).list("").cards) found.push_back(card.href);
    return found;
  }

  FetchedCard fetched(const std::string& href) const {
    std::vector<FetchedCard> cards;
    const ListedCard card{href, "as listed", 0};
    FolderBook(path()).fetch({&card, 1}, [&](const FetchedCard& one) { cards.push_back(one); });
    EXPECT_EQ(cards.size(), 1u);
    return cards.empty() ? FetchedCard() : cards.front();
  }

  Pushed pushed(Push::Kind kind, const std::string& href, const std::string& etag,
                const std::string& text) const {
    std::vector<Pushed> done;
    const Push push{kind, href, etag, [&] { return text; }};
    FolderBook(path()).push({&push, 1},
                            [&](std::size_t, const Pushed& one) { done.push_back(one); });
    EXPECT_EQ(done.size(), 1u);
    return done.empty() ? Pushed() : done.front();
  }

  static bool isSuperuser() { return ::geteuid() == 0; }

  std::filesystem::path folder_;
};

// The kind of the failure that the act ends with, and its words.
template <typename Act>
std::pair<RemoteFailure, std::string> failureOf(Act act) {
  try {
    act();
  } catch (const RemoteError& error) {
    return {error.kind(), error.what()};
  }
  return {RemoteFailure::Usage, "nothing failed"};
}

}  // namespace ox::sync
