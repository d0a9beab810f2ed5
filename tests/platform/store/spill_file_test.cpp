#include "ox/platform/store/values/spill_file.hpp"

#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace ox {
namespace {

std::string piece(std::size_t number, std::size_t size) {
  return std::to_string(number) + std::string(size, static_cast<char>('a' + number % 26));
}

TEST(SpillFile, GivesBackPiecesOfEverySize) {
  SpillFile file;
  std::vector<std::string> pieces = {"", "x"};
  for (std::size_t number = 0; number < 2'000; ++number) pieces.push_back(piece(number, number));
  pieces.push_back(piece(7, 300'000));
  pieces.push_back("");
  pieces.push_back(piece(8, 5));
  std::vector<BytesAside> aside;
  for (const auto& each : pieces) {
    aside.emplace_back(each, file);
    ASSERT_EQ(aside.back().get(), each);
  }
  for (std::size_t at = 0; at < pieces.size(); ++at) ASSERT_EQ(aside.at(at).get(), pieces.at(at));
}

TEST(SpillFile, KeepsTheOthersWhenOneIsDropped) {
  SpillFile file;
  const auto first = file.put(piece(1, 200'000));
  const auto second = file.put(piece(2, 200'000));
  const auto third = file.put(piece(3, 10));
  file.drop(first);
  file.drop(third);
  EXPECT_EQ(*file.get(second), piece(2, 200'000));
}

TEST(SpillFile, BeginsAnewWhenItIsCleared) {
  SpillFile file;
  file.put(piece(1, 300'000));
  file.put(piece(2, 10));
  file.clear();
  const auto place = file.put("new");
  EXPECT_EQ(place.offset, 0U);
  EXPECT_EQ(*file.get(place), "new");
}

}  // namespace
}  // namespace ox
