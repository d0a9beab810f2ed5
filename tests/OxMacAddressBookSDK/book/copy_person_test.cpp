#include <gtest/gtest.h>

#include "ox/OxAddressBookSDK/general/OxAddressBookGeneral.hpp"
#include "tests/OxMacAddressBookSDK/fixtures.hpp"

namespace ox::test {
namespace {

// A host person that holds nothing at all, not even a name value.
class EmptyPerson final : public IOxPerson {
 public:
  Text ID() const override { return "empty"; }
  Text addressBookID() const override { return std::nullopt; }
  Text displayName() const override { return std::nullopt; }
  OxValuePtr valueByProperty(const OxPropertyPtr&) const override { return nullptr; }
  OxValuePtr valueByPropertyName(TextView) const override { return nullptr; }
  void setValue_byProperty(const OxValuePtr&, const OxPropertyPtr&) override {}
  void setValue_byPropertyName(const OxValuePtr&, TextView) override {}
  ImagePtr thumbnail() const override { return nullptr; }
  void setThumbnail(const ImagePtr&) override {}
  std::shared_ptr<const OxObjectPhone> mainPhone() const override { return nullptr; }
  std::shared_ptr<const OxObjectEmail> mainEmail() const override { return nullptr; }
  std::vector<std::shared_ptr<IOxGroup>> groups() const override { return {}; }
  std::vector<OxPropertyPtr> notNullValueProperty() const override { return {}; }
  std::vector<std::string> tagArray() const override { return {}; }
  void addTag(TextView) override {}
  void removeTag(TextView) override {}
  void setTags(const std::optional<std::vector<std::string>>&) override {}
};

constexpr Date kBirthday{1990, 5, 17, {}, {}};

CNContactPtr contact(const std::string& id) {
  return CNContactStore::init()
      ->unifiedContactsMatchingPredicate_keysToFetch_error(
          CNContact::predicateForContactsWithIdentifiers({id}), {"all"}, nullptr)
      .at(0);
}

TEST(CopyPerson, OfNothingIsNothing) {
  const auto book = bookNamed("_local");
  EXPECT_EQ(book->addOneFromOtherPerson(std::shared_ptr<IOxPerson>()), nullptr);
  EXPECT_EQ(book->addOneFromOtherPerson(CNContactPtr()), nullptr);
  EXPECT_EQ(cachedIn(*book), "");
  EXPECT_EQ(ABAddressBook::sharedAddressBook()->people().size(), 0U);
}

TEST(CopyPerson, OfAHostPersonWithoutValuesLeavesAnEmptyPersonAndAnswersMissing) {
  const auto book = bookNamed("_local");
  EXPECT_EQ(book->addOneFromOtherPerson(std::make_shared<EmptyPerson>()), nullptr);
  EXPECT_EQ(ABAddressBook::sharedAddressBook()->people().size(), 1U);
  EXPECT_EQ(book->allPersonsCount(), 1U);
}

TEST(CopyPerson, FromAnotherBookCopiesEverySupportedValue) {
  StoreBuilder()
      .person("p", {.first = "Ann",
                    .company = "ACME",
                    .note = "n",
                    .phones = {{"_$!<Home>!$_", "1"}, {"Boat", "2", true}}})
      .container("A:ABAccount", "iCloud", 3)
      .persons("a", 1);
  const auto cloud = bookNamed("A");
  person("p")->addTag("friend");
  const auto copy = cloud->addOneFromOtherPerson(person("p"));
  ASSERT_TRUE(copy);
  EXPECT_NE(copy->ID(), "p");
  EXPECT_EQ(copy->addressBookID(), "A");
  EXPECT_EQ(copy->displayName(), "Ann");
  EXPECT_EQ(copy->tagArray(), std::vector<std::string>{"friend"});
  for (const auto& each : cloud->supportProperty()) {
    const auto ours = copy->valueByProperty(each);
    const auto theirs = person("p")->valueByProperty(each);
    ASSERT_EQ(ours == nullptr, theirs == nullptr) << each->name();
    if (ours) {
      EXPECT_TRUE(ours->equals(*theirs)) << each->name();
    }
  }
  EXPECT_EQ(cachedIn(*cloud), "a0 " + *copy->ID());
}

TEST(CopyContact, ComesInWithoutStampCacheEntryOrEmptySingleValues) {
  StoreBuilder()
      .container("A:ABAccount", "iCloud", 3)
      .person("a0", {.first = "", .note = "", .phones = {{"x", ""}}});
  const auto local =
      OxMacAddressBook::initWithContainer(containerOf("_local:ABAccount", "On My Mac", 1));
  const auto copy = recordOf(local->addOneFromOtherPerson(contact("a0")));
  ASSERT_TRUE(copy);
  EXPECT_NE(copy->ID(), "a0");
  EXPECT_EQ(copy->addressBookID(), "_local");
  EXPECT_EQ(cachedIn(*local), "");
  EXPECT_EQ(copy->valueByPropertyName(OxProPertyNote), nullptr);
  EXPECT_EQ(std::get<Object>(copy->valueForProperty(kABFirstNameProperty)), Object(""));
  const auto phones =
      std::dynamic_pointer_cast<OxMutableMultipleValue>(copy->valueByPropertyName(OxProPertyPhone));
  ASSERT_TRUE(phones) << "multiple values are left as they came";
  EXPECT_EQ(phones->count(), 1U);
  // A book whose ID is not the container's standard id shows that the copy does not bear it.
  const auto another = OxMacAddressBook::initWithID("_local:ABAccount");
  EXPECT_EQ(another->addOneFromOtherPerson(contact("a0"))->addressBookID(), "_local");
}

TEST(CopyContact, ComesInWithItsBirthdayAndWithoutTags) {
  StoreBuilder()
      .container("A:ABAccount", "iCloud", 3)
      .person("a0", {.more = {{property_id::kBirthday, Object(kBirthday)}}});
  const auto book = bookNamed("_local");
  person("a0")->addTag("friend");
  const auto copy = recordOf(book->addOneFromOtherPerson(contact("a0")));
  ASSERT_TRUE(copy);
  EXPECT_EQ(std::get<Object>(copy->valueForProperty(kABBirthdayProperty)), Object(kBirthday));
  EXPECT_EQ(copy->tagArray(), std::vector<std::string>());
  EXPECT_EQ(person("a0")->tagArray(), std::vector<std::string>{"friend"});
}

TEST(CopyContact, HasNoneOfItsMultipleValuesLookedAt) {
  auto& source = SwitchedSource::install();
  StoreBuilder(source.real())
      .person("p", {.first = "Ann", .note = "", .phones = {{"x", ""}}, .emails = {{"x", "y"}}});
  const auto book = bookNamed("_local");
  source.resetCounts();
  ASSERT_TRUE(book->addOneFromOtherPerson(contact("p")));
  const auto reads = source.counts().valueOf;
  EXPECT_TRUE(reads.contains(property_id::kNote));
  for (const auto& [id, times] : reads) {
    EXPECT_EQ(property_table::typeOf(id) & kABMultiValueMask, 0) << property_table::nameOf(id);
  }
}

TEST(CopyContact, IntoAnUnknownContainerIsMissing) {
  StoreBuilder().persons("p", 1);
  const auto book = OxMacAddressBook::initWithContainer(containerOf("gone:ABAccount", "x", 3));
  EXPECT_EQ(book->addOneFromOtherPerson(contact("p0")), nullptr);
  EXPECT_EQ(ABAddressBook::sharedAddressBook()->people().size(), 1U);
}

TEST(ClearSingleValue, LeavesNameBirthdayTagsAndSpeakingValues) {
  auto& source = SwitchedSource::install();
  const auto made = newPersonWith({.first = "", .company = "", .nickname = "Nick", .note = ""});
  source.giveValue("p", property_id::kBirthday, Object(""));
  const auto book = bookNamed("_local");
  made->addTag("friend");
  source.resetCounts();
  for (const auto& each : book->supportProperty()) {
    book->needSingValueClearValue_property(made, each);
  }
  book->needSingValueClearValue_property(nullptr, property(OxProPertyNote));
  book->needSingValueClearValue_property(made, nullptr);
  EXPECT_EQ(source.counts().setValue, 2U) << "the company and the note, not the empty birthday";
  EXPECT_EQ(made->tagArray(), std::vector<std::string>{"friend"});
  EXPECT_EQ(std::get<Object>(made->valueForProperty(kABFirstNameProperty)), Object(""));
  EXPECT_EQ(std::get<Object>(made->valueForProperty(kABOrganizationProperty)), Object());
  EXPECT_EQ(std::get<Object>(made->valueForProperty(kABNicknameProperty)), Object("Nick"));
  EXPECT_EQ(std::get<Object>(made->valueForProperty(kABNoteProperty)), Object());
}

}  // namespace
}  // namespace ox::test
