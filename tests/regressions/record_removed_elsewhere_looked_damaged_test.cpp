// A record that another process removed within the last few milliseconds was still listed, and its
// values, which were gone, were reported as damage: exports and backups beside a busy program
// failed.
#include <gtest/gtest.h>
#include <string>

#include "ox/base/store_location.hpp"
#include "ox/platform/store/contact_source.hpp"
#include "ox/platform/store/store_source.hpp"
#include "tests/support/store_builder.hpp"

namespace ox {
namespace {

constexpr int kRounds = 40;  // a slow machine may look again before it asks

class OtherProcess {
 public:
  void remove(const RecordKey& key) {
    ASSERT_TRUE(source_->remove(key, RecordKind::Person));
    ASSERT_TRUE(source_->save().done);
  }
  void make(const std::string& id, const std::string& name) {
    support::StoreBuilder(*source_).person(id, {.first = name});
  }

 private:
  std::shared_ptr<ContactSource> source_ = openStoreSource(contactStorePath());
};

PropertyValue firstName(const RecordKey& key) {
  return contactSource().value(key, property_id::kFirst);
}

TEST(RecordRemovedElsewhere, HasNoValues) {
  OtherProcess other;
  for (int round = 0; round < kRounds; ++round) {
    const auto id = "p" + std::to_string(round);
    support::StoreBuilder().person(id, {.first = "Ann"});
    const auto key = RecordKey::of(id);
    EXPECT_EQ(contactSource().records(RecordKind::Person), RecordKeys{key});
    other.remove(key);
    EXPECT_TRUE(isMissing(firstName(key)));
    EXPECT_EQ(contactSource().committedValues(key), nullptr);
    EXPECT_EQ(contactSource().committedImage(key), nullptr);
    EXPECT_FALSE(contactSource().record(id));
  }
}

TEST(RecordRemovedElsewhere, AndMadeAgainHasItsNewValues) {
  OtherProcess other;
  for (int round = 0; round < kRounds; ++round) {
    const auto id = "p" + std::to_string(round);
    support::StoreBuilder().person(id, {.first = "Ann"});
    const auto key = RecordKey::of(id);
    contactSource().records(RecordKind::Person);  // known from now on
    other.remove(key);
    other.make(id, "Bob");
    EXPECT_EQ(std::get<Object>(firstName(key)), Object("Bob"));
  }
}

}  // namespace
}  // namespace ox
