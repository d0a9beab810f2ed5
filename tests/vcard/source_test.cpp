#include <algorithm>
#include <atomic>
#include <chrono>
#include <csignal>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <pthread.h>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

#include "card_text.hpp"

namespace ox::vcard {
namespace {

// Gives the same text again and again without holding it, one read at a time.
class RepeatingSource : public ByteSource {
 public:
  RepeatingSource(std::string front, std::string repeated, std::uint64_t bytes, std::string back)
      : front_(std::move(front)),
        repeated_(std::move(repeated)),
        left_(bytes),
        back_(std::move(back)) {}

  std::size_t read(char* buffer, std::size_t size) override {
    if (!front_.empty()) return take(front_, buffer, size);
    if (left_ == 0) return take(back_, buffer, size);
    std::size_t count = 0;
    while (count < size && left_ > 0) {
      const auto part = std::min({size - count, repeated_.size(), static_cast<std::size_t>(left_)});
      std::memcpy(buffer + count, repeated_.data(), part);
      count += part;
      left_ -= part;
    }
    return count;
  }

 private:
  static std::size_t take(std::string& text, char* buffer, std::size_t size) {
    const auto count = std::min(size, text.size());
    std::copy_n(text.data(), count, buffer);
    text.erase(0, count);
    return count;
  }

  std::string front_;
  std::string repeated_;
  std::uint64_t left_;
  std::string back_;
};

std::string textOfSource(ByteSource& source) {
  Reader reader(source);
  std::string out;
  while (auto result = reader.next()) out += textOf(*result);
  return out;
}

const std::string kGood = "\nEND:VCARD\nBEGIN:VCARD\nVERSION:3.0\nTITLE:good\nEND:VCARD\n";

TEST(CardSource, OversizedCardsAreSkippedWithoutKeepingThem) {
  constexpr std::uint64_t kSize = 80U << 20U;
  RepeatingSource oneLine("BEGIN:VCARD\nVERSION:3.0\nNOTE:", std::string(65536, 'a'), kSize, kGood);
  EXPECT_EQ(textOfSource(oneLine), "refused 1: the card is larger than 64 MiB\nJobTitle=good\n");
  std::string lines;
  for (int i = 0; i < 1024; ++i) lines += std::string(99, 'b') + "\n";
  RepeatingSource manyLines("BEGIN:VCARD\nVERSION:3.0\n", lines, kSize, kGood);
  EXPECT_EQ(textOfSource(manyLines), "refused 1: the card is larger than 64 MiB\nJobTitle=good\n");
}

TEST(CardSource, TooManyLinesAreRefused) {
  RepeatingSource blank("BEGIN:VCARD\nVERSION:3.0\nTITLE:x\n", std::string(65536, '\n'), 2U << 20U,
                        kGood);
  EXPECT_EQ(textOfSource(blank),
            "refused 1: the card has more than 1048576 lines\nJobTitle=good\n");
}

TEST(CardSource, LongTextOutsideOfCardsIsSkipped) {
  RepeatingSource noise("", std::string(65536, '\0'), 40U << 20U, kGood);
  EXPECT_EQ(textOfSource(noise), "JobTitle=good\n");
}

TEST(CardSource, LargeCardsAreReadWhole) {
  constexpr std::uint64_t kSize = 5U << 20U;
  RepeatingSource source("BEGIN:VCARD\nVERSION:3.0\nNOTE:", std::string(65536, 'a'), kSize, kGood);
  Reader reader(source);
  const auto result = reader.next();
  ASSERT_TRUE(result);
  EXPECT_EQ(std::get<Card>(*result).properties.text(property_id::kNote)->size(), kSize);
  EXPECT_EQ(textOf(*reader.next()), "JobTitle=good\n");
}

TEST(CardSource, BlockBordersMayFallAnywhere) {
  std::string file;
  std::string expected;
  for (int i = 0; file.size() < (600U << 10U); ++i) {
    const auto number = std::to_string(i);
    file += "BEGIN:VCARD\r\nVERSION:3.0\r\nTITLE:" + number + "\r\nEND:VCARD\r\n";
    expected += "JobTitle=" + number + "\n";
  }
  for (int shift = 0; shift < 3; ++shift) {
    MemorySource source(file);
    EXPECT_EQ(textOfSource(source), expected) << shift;
    file.insert(0, "\r\n");
  }
}

TEST(CardSource, FilesAreReadAndFailuresNamed) {
  const auto path = std::filesystem::temp_directory_path() /
                    ("card_source_test_" + std::to_string(::getpid()) + ".vcf");
  std::ofstream(path) << "BEGIN:VCARD\nVERSION:2.1\nTITLE:\xE9\nEND:VCARD\n";
  FileSource source(path);
  EXPECT_EQ(source.size(), 42U);
  Reader reader(source);
  EXPECT_EQ(textOf(*reader.next()),
            "JobTitle=é\nrepair 3: text is not UTF-8, read as windows-1252 (a guess)\n");
  EXPECT_FALSE(reader.next());
  EXPECT_EQ(reader.bytesRead(), 42U);
  std::filesystem::remove(path);
  const auto reasonFor = [](const std::string& name) -> std::string {
    try {
      FileSource opened(name);
    } catch (const SourceError& error) {
      return error.what();
    }
    return "";
  };
  EXPECT_EQ(reasonFor(path), path.string() + ": No such file or directory");
  EXPECT_EQ(reasonFor("/"), "/: Is a directory");
}

TEST(CardSource, StopEndsTheWaitForAWriterOfAPipe) {
  const auto path = std::filesystem::temp_directory_path() /
                    ("card_source_test_" + std::to_string(::getpid()) + ".pipe");
  ASSERT_EQ(::mkfifo(path.c_str(), 0600), 0);
  struct sigaction action {};
  action.sa_handler = [](int) {};
  ::sigaction(SIGUSR1, &action, nullptr);
  std::atomic<bool> stop{false};
  std::atomic<bool> isOpen{false};
  // Without the stop an interruption ends nothing.
  std::thread interrupting([&, waiting = ::pthread_self()] {
    for (int count = 0; !isOpen; ++count) {
      if (count == 20) stop = true;
      ::pthread_kill(waiting, SIGUSR1);
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
  });
  FileSource source(path, &stop);
  EXPECT_TRUE(stop);
  isOpen = true;
  interrupting.join();
  std::filesystem::remove(path);
  char byte = 0;
  EXPECT_EQ(source.read(&byte, 1), 0U);
  EXPECT_EQ(source.peekAt(0, &byte, 1), 0U);
}

}  // namespace
}  // namespace ox::vcard
