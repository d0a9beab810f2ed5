// Whatever a neutral book holds comes back from its file, and nothing but a whole file does.
#include <gtest/gtest.h>
#include <random>

#include "ox/OxAddressBookSDK/general/book_format.hpp"
#include "tests/OxAddressBookSDK/general/loose_group.hpp"
#include "tests/OxAddressBookSDK/general/random_book.hpp"

namespace ox {
namespace {

std::shared_ptr<OxAddressBookGeneral> read(std::string_view file) {
  return OxAddressBookGeneral::addressBookWithData(makeData(std::string(file)));
}

// The file of some random book that is not smaller than this.
std::string fileOfAtLeast(std::size_t size) {
  for (std::uint64_t seed = 1;; ++seed) {
    const auto file = randomBook(seed)->saveToData();
    if (file && file->size() >= size) return *file;
  }
}

// In parts, for one process each.
class RandomBooks : public testing::TestWithParam<std::uint64_t> {};

TEST_P(RandomBooks, ComeBackEqualAndGiveTheSameBytesAgain) {
  for (std::uint64_t seed = GetParam() * 250; seed < (GetParam() + 1) * 250; ++seed) {
    const auto book = randomBook(seed);
    const auto file = book->saveToData();
    ASSERT_TRUE(file) << seed;
    const auto again = OxAddressBookGeneral::addressBookWithData(file);
    ASSERT_TRUE(again) << seed << "\n" << *file;
    ASSERT_TRUE(haveSameContent(*book, *again)) << seed << "\n" << *file;
    ASSERT_EQ(*again->saveToData(), *file) << seed;
  }
}
INSTANTIATE_TEST_SUITE_P(OfAFixedSeed, RandomBooks, testing::Range<std::uint64_t>(0, 4));

TEST(BookFile, IsUnreadableWhenAnyBitIsFlipped) {
  auto file = fileOfAtLeast(2000);
  ASSERT_TRUE(read(file));
  for (auto& byte : file) {
    for (int bit = 0; bit < 8; ++bit) {
      byte = static_cast<char>(byte ^ 1 << bit);
      ASSERT_FALSE(read(file)) << "byte " << &byte - file.data() << ", bit " << bit;
      byte = static_cast<char>(byte ^ 1 << bit);
    }
  }
  EXPECT_TRUE(read(file));
}

TEST(BookFile, IsUnreadableWhenItIsCutOffAnywhere) {
  const auto small = fileOfAtLeast(2000);
  for (std::size_t size = 0; size < small.size(); ++size) {
    ASSERT_FALSE(read(std::string_view(small).substr(0, size))) << size;
  }
  const auto large = fileOfAtLeast(15'000);
  for (std::size_t size = 0; size < large.size(); size += 64) {
    ASSERT_FALSE(read(std::string_view(large).substr(0, size))) << size;
  }
}

TEST(BookFile, IsUnreadableWhenAnythingFollowsOrPrecedes) {
  const auto file = fileOfAtLeast(2000);
  for (const auto& more : {std::string("\n"), std::string(" "), std::string(1, '\0'), file}) {
    EXPECT_FALSE(read(file + more));
    EXPECT_FALSE(read(more + file));
  }
  EXPECT_FALSE(OxAddressBookGeneral::addressBookWithData(nullptr));
}

// Damage that bears a fitting sum, as somebody else's program would write it. It may be readable
// by chance; then it is a book like any other.
TEST(BookFile, IsUnreadableOrAWholeBookWhenDamageIsSealedAgain) {
  const auto file = fileOfAtLeast(8000);
  const auto trailerAt = file.rfind('\n', file.size() - 2) + 1;
  const auto book = read(file);
  std::mt19937_64 random(20);
  std::size_t readable = 0;
  for (int round = 0; round < 2000; ++round) {
    auto body = file.substr(0, trailerAt);
    const auto place = static_cast<std::size_t>(random() % body.size());
    const auto other = static_cast<std::size_t>(random() % body.size());
    if (round % 2 == 0) {
      body[place] = body[other];
    } else {
      body.erase(place, static_cast<std::size_t>(random() % 40));
    }
    const auto damaged = read(
        body + book_format::trailer(body, book->groupsDic().count(), book->personsDic().count()));
    if (!damaged) continue;
    ++readable;
    const auto again = damaged->saveToData();
    ASSERT_TRUE(again);
    const auto same = OxAddressBookGeneral::addressBookWithData(again);
    ASSERT_TRUE(same);
    ASSERT_TRUE(haveSameContent(*damaged, *same));
  }
  EXPECT_GT(readable, 0U);
  EXPECT_LT(readable, 2000U);
}

TEST(BookFile, KeepsThreeLevelsOfGroupsInOrder) {
  const auto top = std::make_shared<LooseGroup>("top", "Top");
  const auto middle = std::make_shared<LooseGroup>("middle", "");
  const auto bottom = std::make_shared<LooseGroup>("bottom", nullptr);
  const auto person = OxGeneralPerson::make("p");
  top->below = {middle};
  middle->below = {bottom};
  bottom->members = {person};
  const auto book = OxAddressBookGeneral::init();
  for (const auto& group : {bottom, top, middle}) book->addGroup(group);
  book->addPerson(person);
  const auto again = OxAddressBookGeneral::addressBookWithData(book->saveToData());
  ASSERT_TRUE(again);
  std::string shown;
  for (const auto& [key, group] : again->groupsDic()) {
    shown += key + "=" + group->title().value_or("-") + "(";
    for (const auto& inner : group->subArray()) shown += inner;
    for (const auto& inner : group->persons()) shown += inner;
    shown += ") ";
  }
  EXPECT_EQ(shown, "bottom=-(p) top=Top(middle) middle=(bottom) ");
}

}  // namespace
}  // namespace ox
