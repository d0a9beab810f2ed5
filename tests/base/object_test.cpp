#include "ox/base/object.hpp"

#include <gtest/gtest.h>
#include <limits>

namespace ox {
namespace {

class Boxed final : public HostObject {
 public:
  explicit Boxed(int content) : content_(content) {}
  bool equals(const HostObject& other) const override {
    const auto* same = dynamic_cast<const Boxed*>(&other);
    return same != nullptr && content_ == same->content_;
  }

 private:
  int content_;
};

class OtherBox final : public HostObject {
 public:
  bool equals(const HostObject& other) const override {
    return dynamic_cast<const OtherBox*>(&other) != nullptr;
  }
};

TEST(Object, IsMissingWhenMadeOfNothing) {
  EXPECT_TRUE(Object().isMissing());
  EXPECT_TRUE(Object(Text()).isMissing());
  EXPECT_TRUE(Object(TextView()).isMissing());
  EXPECT_TRUE(Object(Data()).isMissing());
  EXPECT_TRUE(Object(ImagePtr()).isMissing());
  EXPECT_TRUE(Object(Object::ArrayPtr()).isMissing());
  EXPECT_TRUE(Object(Object::DictionaryPtr()).isMissing());
  EXPECT_TRUE(Object(std::shared_ptr<Boxed>()).isMissing());
  EXPECT_FALSE(Object("").isMissing());
  EXPECT_FALSE(Object(Array()).isMissing());
  EXPECT_FALSE(Object(makeData("")).isMissing());
}

TEST(Object, ComparesSharedKindsByContent) {
  const auto image = [](std::uint8_t red) {
    return std::make_shared<const Image>(Image{1, 1, {red, 2, 3, 4}});
  };
  const Date day{.year = 1990, .month = 5, .day = 17, .secondOfDay = {}, .utcOffsetMinutes = {}};
  const std::vector<std::pair<Object, Object>> equal = {
      {Object(), Object(Text())},
      {Object("a"), Object(std::string("a"))},
      {Object(std::int64_t{1}), Object(std::int64_t{1})},
      {Object(0.5), Object(0.5)},
      {Object(day), Object(day)},
      {Object(makeData("x")), Object(makeData("x"))},
      {Object(image(1)), Object(image(1))},
      {Object(Array{"a", Array{"b"}}), Object(Array{"a", Array{"b"}})},
      {Object(Dictionary{{"a", 1.0}, {"b", "2"}}), Object(Dictionary{{"b", "2"}, {"a", 1.0}})},
      {Object(std::make_shared<Boxed>(1)), Object(std::make_shared<Boxed>(1))},
  };
  for (std::size_t i = 0; i < equal.size(); ++i) {
    for (std::size_t j = 0; j < equal.size(); ++j) {
      EXPECT_EQ(equal[i].first == equal[j].second, i == j) << i << " " << j;
    }
  }
  EXPECT_FALSE(Object("a") == Object("b"));
  EXPECT_FALSE(Object(makeData("x")) == Object(makeData("y")));
  EXPECT_FALSE(Object(image(1)) == Object(image(2)));
  EXPECT_FALSE(Object(Array{"a", "b"}) == Object(Array{"b", "a"}));
  EXPECT_FALSE(Object(Dictionary{{"a", 1.0}}) == Object(Dictionary{{"a", 2.0}}));
  EXPECT_FALSE(Object(Dictionary{{"a", Object()}}) == Object(Dictionary{{"b", Object()}}));
  EXPECT_FALSE(Object(std::make_shared<Boxed>(1)) == Object(std::make_shared<Boxed>(2)));
  EXPECT_FALSE(Object(std::make_shared<Boxed>(1)) == Object(std::make_shared<OtherBox>()));
}

TEST(Object, GivesWhatItHoldsOnlyAsItsOwnKind) {
  const auto boxed = std::make_shared<Boxed>(1);
  const Object object(boxed);
  EXPECT_EQ(object.host<Boxed>(), boxed);
  EXPECT_EQ(object.host<OtherBox>(), nullptr);
  EXPECT_EQ(object.text(), nullptr);
  EXPECT_EQ(object.toText(), std::nullopt);
  EXPECT_EQ(object.array(), nullptr);
  EXPECT_EQ(object.dictionary(), nullptr);
  EXPECT_EQ(object.image(), nullptr);
  EXPECT_EQ(object.data(), nullptr);
  EXPECT_EQ(Object("").toText(), Text(""));
  EXPECT_EQ(Object("a").host<Boxed>(), nullptr);
}

TEST(Dictionary, ReplacesInPlaceAndEnumeratesInTheOrderOfInsertion) {
  Dictionary dictionary = {{"z", "1"}, {"a", "2"}, {"m", "3"}};
  dictionary.set("a", "4");
  dictionary.set("b", Object());
  std::string order;
  for (const auto& [key, value] : dictionary.entries()) order += key + value.toText().value_or("-");
  EXPECT_EQ(order, "z1a4m3b-");
  EXPECT_EQ(dictionary.size(), 4U);
  EXPECT_TRUE(dictionary.contains("b"));
  EXPECT_TRUE(dictionary.get("b").isMissing());
  EXPECT_FALSE(dictionary.contains("q"));
  EXPECT_TRUE(dictionary.get("q").isMissing());
}

TEST(Dictionary, FindsEveryKeyHoweverManyThereAre) {
  Dictionary dictionary;
  for (int i = 0; i < 1000; ++i) {
    dictionary.set("key " + std::to_string(i), std::int64_t{i});
    ASSERT_EQ(dictionary.size(), static_cast<std::size_t>(i + 1));
    ASSERT_EQ(dictionary.get("key 0"), Object(std::int64_t{0})) << i;
    ASSERT_EQ(dictionary.get("key " + std::to_string(i)), Object(std::int64_t{i}));
    ASSERT_FALSE(dictionary.contains("key " + std::to_string(i + 1)));
  }
  const auto copy = dictionary;
  dictionary.set("key 7", "changed");
  EXPECT_EQ(dictionary.size(), 1000U);
  EXPECT_EQ(dictionary.entries()[7].second, Object("changed"));
  EXPECT_EQ(copy.get("key 7"), Object(std::int64_t{7}));
  EXPECT_FALSE(dictionary == copy);
  dictionary.set("key 7", std::int64_t{7});
  EXPECT_TRUE(dictionary == copy);
}

}  // namespace
}  // namespace ox
