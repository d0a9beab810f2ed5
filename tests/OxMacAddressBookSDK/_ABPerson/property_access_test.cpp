#include <gtest/gtest.h>

#include "ox/OxMacAddressBookSDK/_ABPerson/stored_picture.hpp"
#include "ox/base/failures.hpp"
#include "ox/images/image_codec.hpp"
#include "tests/OxMacAddressBookSDK/fixtures.hpp"

namespace ox::test {
namespace {

using Tags = std::vector<std::string>;

std::string namesOf(const std::vector<OxPropertyPtr>& properties) {
  std::string names;
  for (const auto& each : properties) {
    names += each->name().substr(std::string_view("OxProPerty").size()) + ' ';
  }
  return names;
}

Object inner(const OxValuePtr& value) {
  const auto single = std::dynamic_pointer_cast<OxMutableSingleValue>(value);
  return single ? single->value() : Object();
}

ImagePtr redPixel() {
  return std::make_shared<const Image>(1, 1, Pixels{255, 0, 0, 255});
}

TEST(PropertyAccess, WithoutPropertyReadsNothingAndChangesNothing) {
  const auto ann = newPersonWith({.first = "Ann", .company = "ACME"});
  EXPECT_EQ(ann->valueByProperty(nullptr), nullptr);
  EXPECT_EQ(ann->valueByPropertyName(std::nullopt), nullptr);
  EXPECT_EQ(ann->valueByPropertyName(OxProPertyNote), nullptr);
  EXPECT_EQ(ann->valueByPropertyName("unknown"), nullptr);
  ann->setValue_byProperty(nullptr, nullptr);
  ann->setValue_byPropertyName(nullptr, std::nullopt);
  ann->setValue_byPropertyName(single("x", 0), "unknown");
  EXPECT_FALSE(ABAddressBook::sharedAddressBook()->hasUnsavedChanges());
}

TEST(PropertyAccess, ANameOfTheStorePassesThrough) {
  const auto ann = newPersonWith({.first = "Ann"});
  EXPECT_EQ(inner(ann->valueByPropertyName(kABFirstNameProperty)), Object("Ann"));
}

TEST(NameValue, IsPresentWithoutAnyPartAndLosesLineFeeds) {
  const auto nobody = newPersonWith({});
  const auto none = inner(nobody->valueByPropertyName(OxProPertyName)).host<OxObjectPersonName>();
  ASSERT_NE(none, nullptr);
  EXPECT_EQ(none->first(), Text());
  EXPECT_EQ(none->middle(), Text());
  EXPECT_EQ(none->last(), Text());
  EXPECT_EQ(nobody->nameValue()->type(), value_type::kPersonName);

  StoreBuilder().person("q", {.first = "Ann\n", .middle = "\n", .last = "L\nee"});
  const auto name = person("q")->nameValue()->value().host<OxObjectPersonName>();
  EXPECT_EQ(name->first(), Text("Ann"));
  EXPECT_EQ(name->middle(), Text(""));
  EXPECT_EQ(name->last(), Text("Lee"));
}

TEST(NameValue, IsWrittenPartByPartAndAMissingOneClearsAll) {
  const auto ann = newPersonWith({.first = "A", .middle = "B", .last = "C"});
  const auto stored = [&ann](std::string_view key) {
    return std::get<Object>(ann->valueForProperty(key)).toText();
  };
  ann->setNameValue(single(OxObjectPersonName::initWithFirst_middle_last("Z", std::nullopt, ""),
                           value_type::kPersonName));
  EXPECT_EQ(stored(kABFirstNameProperty), Text("Z"));
  EXPECT_EQ(stored(kABMiddleNameProperty), Text());
  EXPECT_EQ(stored(kABLastNameProperty), Text(""));
  // A multiple value is of the wrong kind: refused.
  ann->setValue_byPropertyName(OxMutableMultipleValue::init(), OxProPertyName);
  EXPECT_EQ(stored(kABFirstNameProperty), Text("Z"));
  ann->setValue_byPropertyName(nullptr, OxProPertyName);
  EXPECT_EQ(stored(kABFirstNameProperty), Text());
  EXPECT_EQ(stored(kABLastNameProperty), Text());
}

TEST(Thumbnail, IsStoredAsTiffAndReadBack) {
  const auto ann = newPersonWith({});
  EXPECT_EQ(ann->thumbnail(), nullptr);
  ann->setThumbnail(redPixel());
  EXPECT_EQ(*ann->thumbnail(), *redPixel());
  EXPECT_EQ(ann->thumbnailValue()->type(), value_type::kImage);
  const std::string start = ann->imageData()->substr(0, 2);
  EXPECT_TRUE(start == "II" || start == "MM") << start;
  ann->setThumbnail(nullptr);
  EXPECT_EQ(ann->thumbnail(), nullptr);
  EXPECT_EQ(ann->imageData(), nullptr);
}

TEST(Thumbnail, ThatWasATiffIsStoredAsItWas) {
  auto tiff = *images::encodeTiff(*redPixel());
  tiff += "behind its end";  // whoever encoded it anew would leave that out
  const auto jpeg = images::encodeJpeg(Image{8, 8, std::vector<std::uint8_t>(256, 200)});
  StoreBuilder().person("tiff", {.image = makeData(tiff)}).person("jpeg", {.image = jpeg});
  const auto ann = newPersonWith({});
  ann->setThumbnail(person("tiff")->thumbnail());
  EXPECT_EQ(*ann->imageData(), tiff);
  const auto shown = person("jpeg")->thumbnail();
  ann->setThumbnail(shown);
  EXPECT_TRUE(images::isTiff(*ann->imageData()));
  EXPECT_EQ(*ann->thumbnail(), *shown);
}

TEST(Thumbnail, ThatCannotBeReadOrDecodedIsNone) {
  const failures::Watch watch;
  const auto jpeg = images::encodeJpeg(Image(64, 64, Pixels(64 * 64 * 4, 200)));
  auto& source = SwitchedSource::install();
  StoreBuilder(source.real())
      .person("unreadable", {.image = images::encodeTiff(*redPixel())})
      .person("no picture", {.image = makeData("no picture")})
      .person("half", {.image = makeData(jpeg->substr(0, jpeg->size() / 2))});
  source.raiseOnImageOf("unreadable");
  EXPECT_EQ(person("unreadable")->valueByPropertyName(OxProPertyThumbnail), nullptr);
  EXPECT_EQ(watch.counts().failures, 1U);
  EXPECT_EQ(person("no picture")->valueByPropertyName(OxProPertyThumbnail), nullptr);
  EXPECT_EQ(person("half")->valueByPropertyName(OxProPertyThumbnail), nullptr);
  EXPECT_EQ(watch.counts().failures, 1U);
}

TEST(Thumbnail, ThatIsStoredButCannotBeReadCanBeAskedFor) {
  auto& source = SwitchedSource::install();
  const auto whole = images::encodeTiff(*redPixel());
  StoreBuilder(source.real())
      .person("none", {})
      .person("whole", {.image = whole})
      .person("unreadable", {.image = whole})
      .person("cut off", {.image = makeData(whole->substr(0, whole->size() - 1))})
      .person("of another kind", {.image = makeData("GIF89a")});
  source.raiseOnImageOf("unreadable");
  EXPECT_FALSE(hasUnreadablePicture(*person("none")));
  EXPECT_FALSE(hasUnreadablePicture(*person("whole")));
  EXPECT_TRUE(hasUnreadablePicture(*person("unreadable")));
  EXPECT_TRUE(hasUnreadablePicture(*person("cut off")));
  EXPECT_TRUE(hasUnreadablePicture(*person("of another kind")));
}

TEST(Tags, LiveInTheBooksTagStoreUnderThePersonsId) {
  StoreBuilder().container("A:ABAccount", "iCloud", 3).person("p", {});
  const auto ann = person("p");
  EXPECT_EQ(ann->tagArray(), Tags());
  EXPECT_EQ(ann->valueByPropertyName(OxProPertyTags), nullptr);
  ann->addTag("b");
  ann->addTag("a");
  ann->addTag(std::nullopt);
  EXPECT_EQ(ann->tagArray(), (Tags{"b", "a"}));
  EXPECT_EQ(OxTagManager::tagManagerWithID("A")->tagsByPersonID("p"), (Tags{"b", "a"}));
  ann->removeTag("b");
  EXPECT_EQ(inner(ann->valueByPropertyName(OxProPertyTags)), Object(Array{Object("a")}));
  EXPECT_EQ(ann->tagsValue()->type(), value_type::kTags);
  ann->setTags(Tags{"x", "y"});
  EXPECT_EQ(ann->tagArray(), (Tags{"x", "y"}));
  ann->setTags(std::nullopt);
  EXPECT_EQ(ann->tagArray(), Tags());
  EXPECT_EQ(OxTagManager::tagManagerWithID("A")->tagsByPersonID("p"), std::nullopt);
}

TEST(Tags, AreSetThroughThePropertyAndClearedByAMissingValue) {
  const auto ann = newPersonWith({});
  const auto tags = single(Array{Object("x"), Object("y")}, value_type::kTags);
  ann->setValue_byPropertyName(tags, OxProPertyTags);
  EXPECT_EQ(ann->tagArray(), (Tags{"x", "y"}));
  ann->setValue_byPropertyName(nullptr, OxProPertyTags);
  EXPECT_EQ(ann->tagArray(), Tags());
  ann->setTagsValue(tags);
  EXPECT_EQ(ann->tagArray(), (Tags{"x", "y"}));
  ann->setTagsValue(nullptr);
  EXPECT_EQ(ann->tagsValue(), nullptr);
}

TEST(Tags, OfAPersonInNoDiscoveredBookAreNoneAndSettingThemDoesNothing) {
  const auto ann = newPersonWith({});
  OxMacAddressBook::addressBookArray();  // would stamp the person anew
  ann->setAddressID("unknown");
  ann->addTag("x");
  ann->setTags(Tags{"y"});
  ann->removeTag("x");
  EXPECT_EQ(ann->tagArray(), Tags());
  EXPECT_EQ(OxTagManager::tagManagerWithID("unknown")->tagsByPersonID("p"), std::nullopt);
}

TEST(PersonGroups, AreThoseThatHoldThePersonDirectly) {
  StoreBuilder()
      .person("p", {})
      .group("1", "one")
      .group("2", "two")
      .group("3", "three")
      .subgroup("3", "2")
      .member("2", "p")
      .member("1", "p");
  EXPECT_EQ(idsOf(person("p")->groups()), "2 1");
}

TEST(NotNullValueProperty, KeepsWhatHoldsSomethingInListOrder) {
  const auto ann = newPersonWith({.nickname = "", .phones = {{"a", "1"}}});
  EXPECT_EQ(namesOf(ann->notNullValueProperty()), "Name Phone Nickname ");
  ann->addTag("x");
  ann->setThumbnail(redPixel());
  EXPECT_EQ(namesOf(ann->notNullValueProperty()), "Name Thumbnail Tags Phone Nickname ");
}

TEST(NotNullValueProperty, OfAPersonWithoutBookGoesByTheStandardList) {
  const auto ann = newPersonWith({.company = "ACME"});
  OxMacAddressBook::addressBookArray();  // would stamp the person anew
  ann->setAddressID("unknown");
  EXPECT_EQ(ann->personAddressBook(), nullptr);
  EXPECT_EQ(namesOf(ann->notNullValueProperty()), "Name Company ");
}

TEST(OtherProperty, IsHeldByTheCustomPropertyOfTheStore) {
  OxMacAddressBook::init();
  const auto ann = newPersonWith({});
  auto value = OxMutableMultipleValue::init();
  value->addValue(single("x", value_type::kString));
  ann->setValue_byPropertyName(value, OxProPertyOther);
  const auto stored = std::get<MultiValuePtr>(ann->valueForProperty(OxMacOtherProperty));
  EXPECT_EQ(stored->entries.at(0).value, Object("x"));
  const auto read =
      std::dynamic_pointer_cast<OxMutableMultipleValue>(ann->valueByPropertyName(OxProPertyOther));
  EXPECT_EQ(read->valueAtIndex(0)->value(), Object("x"));
}

}  // namespace
}  // namespace ox::test
