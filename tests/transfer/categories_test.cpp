#include "ox/vcard/properties/categories.hpp"

#include <algorithm>
#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "imported_cards.hpp"
#include "ox/OxAddressBookSDK/tags/OxTagManager.hpp"
#include "ox/OxAddressBookSDK/tags/tag_store.hpp"
#include "ox/OxMacAddressBookSDK/ground/contacts_and_tags.hpp"
#include "ox/platform/journal/journal.hpp"
#include "ox/transfer/exporter.hpp"
#include "tests/support/store_builder.hpp"
#include "tests/support/store_environment.hpp"

// CATEGORIES of persons and their tags.

namespace ox::vcard {
namespace {

constexpr std::string_view kLocal = "_local:ABAccount";

std::string cardWith(const std::string& name, const std::string& lines) {
  return "BEGIN:VCARD\r\nVERSION:3.0\r\nN:;" + name + ";;;\r\nFN:" + name + "\r\n" + lines +
         "END:VCARD\r\n";
}

ImportReport import(const std::string& text, const ImportOptions& options = {},
                    const std::string& container = "_local") {
  return importFiles({support::temporaryFile("cards.vcf", text)}, container, options);
}

RecordKeys persons(const std::string& container = "_local") {
  return contactSource().recordsIn(container, RecordKind::Person);
}

// Those of every person, "Ann(a b) Bo()".
std::string tagsOfAll(const std::string& container = "_local") {
  std::string text;
  for (const auto& key : persons(container)) {
    text += (text.empty() ? "" : " ") +
            *contactSource().committedValues(key)->text(property_id::kFirst) + "(";
    const auto manager = OxTagManager::tagManagerWithID(std::string_view(container));
    const auto tags = manager->tagsByPersonID(key.text()).value_or(std::vector<std::string>());
    for (const auto& tag : tags) text += (&tag == tags.data() ? "" : "|") + tag;
    text += ")";
  }
  return text;
}

// The CATEGORIES lines of an export.
std::string exportedCategories(CardVersion version = CardVersion::V30) {
  std::string lines;
  exportCards(persons(), {}, version, [&](std::string_view card) {
    for (auto at = card.find("\r\nCATEGORIES"); at != card.npos;
         at = card.find("\r\nCATEGORIES", at + 2)) {
      lines += std::string(card.substr(at + 2, card.find("\r\n", at + 2) - at - 2)) + "\n";
    }
    return true;
  });
  return lines;
}

std::string exported() {
  std::string text;
  exportCards(persons(), {}, CardVersion::V40, [&](std::string_view card) {
    text += card;
    return true;
  });
  return text;
}

void changeTags(std::size_t person, const std::vector<std::string>& removed,
                const std::vector<std::string>& added) {
  OxTagManager::tagManagerWithID(std::string_view("_local"))
      ->changeTags(removed, added, persons().at(person).text());
}

TEST(Categories, BecomeTagsAndGoOutAsTheyCame) {
  const std::string lines = "CATEGORIES;X-A=b:work, Old\\, friends,work\r\ncategories:c\r\n";
  const auto cards = cardWith("Ann", lines + "UID:u1\r\n") + cardWith("Bo", "CATEGORIES:work\r\n") +
                     cardWith("Cy", "NOTE:n\r\n");
  EXPECT_EQ(countsOf(import(cards)), "3 = 3 + 0 + 0 + 0 + 0");
  EXPECT_EQ(tagsOfAll(), "Ann(work|Old, friends|c) Bo(work) Cy()");
  const std::string written = "CATEGORIES;X-A=b:work, Old\\, friends,work\n";
  EXPECT_EQ(exportedCategories(), written + "CATEGORIES:work\n");
  EXPECT_EQ(exportedCategories(CardVersion::V40), written + "CATEGORIES:work\n");
  EXPECT_EQ(countsOf(import(cards)), "3 = 0 + 0 + 3 + 0 + 0");
  EXPECT_EQ(countsOf(import(exported())), "3 = 0 + 0 + 3 + 0 + 0");
  EXPECT_EQ(tagsOfAll(), "Ann(work|Old, friends|c) Bo(work) Cy()");
}

TEST(Categories, AreTheTagsThatThePersonHasNow) {
  import(cardWith("Ann", "CATEGORIES:a,b\r\nREV:20200203T040506Z\r\n") +
         cardWith("Bo", "CATEGORIES:a\r\n") + cardWith("Cy", ""));
  changeTags(0, {"a"}, {"c,d"});
  changeTags(1, {"a"}, {});
  changeTags(2, {}, {"e"});
  EXPECT_EQ(exportedCategories(), "CATEGORIES:b,c\\,d\nCATEGORIES:e\n");
  const auto text = exported();
  EXPECT_EQ(text.find("REV"), text.npos);
  // They are there already, and nothing is to be updated.
  ImportOptions updating;
  updating.update = true;
  EXPECT_EQ(countsOf(import(text, updating)), "3 = 0 + 0 + 3 + 0 + 0");
  EXPECT_EQ(tagsOfAll(), "Ann(b|c,d) Bo() Cy(e)");
  support::StoreBuilder().container("other:ABAccount", "Other", 1);
  EXPECT_EQ(countsOf(import(text, {}, "other")), "3 = 3 + 0 + 0 + 0 + 0");
  EXPECT_EQ(tagsOfAll("other"), "Ann(b|c,d) Bo() Cy(e)");
}

TEST(Categories, OfAnUpdateTakeThePlaceOfThoseOfTheFormerCard) {
  import(cardWith("Ann", "UID:1\r\nCATEGORIES:a,b\r\n"));
  changeTags(0, {}, {"own"});
  const auto changed = cardWith("Ann", "UID:1\r\nCATEGORIES:b,c\r\nNOTE:n\r\n");
  EXPECT_EQ(countsOf(import(changed)), "1 = 0 + 0 + 1 + 0 + 0");
  EXPECT_EQ(tagsOfAll(), "Ann(a|b|own)");
  ImportOptions updating;
  updating.update = true;
  EXPECT_EQ(countsOf(import(changed, updating)), "1 = 0 + 1 + 0 + 0 + 0");
  EXPECT_EQ(tagsOfAll(), "Ann(b|own|c)");
  // A card that says no category does not say that there is none.
  const auto silent = cardWith("Ann", "UID:1\r\nNOTE:m\r\n");
  EXPECT_EQ(countsOf(import(silent, updating)), "1 = 0 + 1 + 0 + 0 + 0");
  EXPECT_EQ(tagsOfAll(), "Ann(b|own|c)");
  EXPECT_EQ(countsOf(import(silent, updating)), "1 = 0 + 0 + 1 + 0 + 0");
  EXPECT_EQ(exportedCategories(), "CATEGORIES:b,own,c\n");
}

TEST(Categories, OfOneUidTwiceInAnImportAreThoseOfTheLastCard) {
  ImportOptions updating;
  updating.update = true;
  import(
      cardWith("Ann", "UID:1\r\nCATEGORIES:a\r\n") + cardWith("Ann", "UID:1\r\nCATEGORIES:b\r\n"),
      updating);
  EXPECT_EQ(tagsOfAll(), "Ann(b)");
}

TEST(Categories, OfAnImportThatFailsLeaveNoTags) {
  EXPECT_NE(import(cardWith("Ann", "CATEGORIES:a\r\n"), {}, "nowhere").failure, "");
  EXPECT_TRUE(TagStore::shared().isEmpty());
}

TEST(Categories, AreTakenBackWithTheImport) {
  import(cardWith("Ann", "CATEGORIES:a\r\n"));
  EXPECT_EQ(tagsOfAll(), "Ann(a)");
  journal::undo(1);
  followTags();
  EXPECT_EQ(persons().size(), 0U);
  EXPECT_TRUE(TagStore::shared().isEmpty());
}

// A store that knew categories as lines alone.
TEST(Categories, OfOlderStoresStayBesideTheTags) {
  support::StoreBuilder().in(std::string(kLocal)).person("p", {.first = "Ann"});
  PropertyBag bag;
  bag.set(property_id::kFirst, Object("Bo"));
  bag.set(property_id::kUnmodelledLines, Object(Array{"CATEGORIES:a, b"}));
  EXPECT_FALSE(areCategoriesTags(bag));
  EXPECT_EQ(categoriesOf(bag), (std::vector<std::string>{"a", "b"}));
  ImportOptions asGroups;
  asGroups.categories = CategoriesAs::Groups;
  import(cardWith("Bo", "CATEGORIES:a, b\r\n"), asGroups);
  EXPECT_EQ(exportedCategories(), "CATEGORIES:a, b\n");
  changeTags(1, {}, {"b"});
  EXPECT_EQ(exportedCategories(), "CATEGORIES:a, b\n");
  changeTags(1, {}, {"c"});
  EXPECT_EQ(exportedCategories(), "CATEGORIES:a,b,c\n");
}

std::string groupsOfAll() {
  std::string text;
  for (const auto& group : contactSource().recordsIn("_local", RecordKind::Group)) {
    text += *contactSource().committedValues(group)->text(property_id::kGroupName) + "(";
    for (const auto& key : *contactSource().committedChildren(group, RecordKind::Person)) {
      text += *contactSource().committedValues(key)->text(property_id::kFirst) + " ";
    }
    text += ") ";
  }
  return text;
}

TEST(Categories, BecomeGroupsWhenTheyAreToBe) {
  ImportOptions asGroups;
  asGroups.categories = CategoriesAs::Groups;
  const auto cards = cardWith("Ann", "UID:1\r\nCATEGORIES:work,home\r\n") +
                     cardWith("Bo", "CATEGORIES:work\r\n") + cardWith("Cy", "");
  EXPECT_EQ(countsOf(import(cards, asGroups)), "3 = 3 + 0 + 0 + 0 + 0");
  EXPECT_EQ(groupsOfAll(), "home(Ann ) work(Ann Bo ) ");
  EXPECT_TRUE(TagStore::shared().isEmpty());
  EXPECT_EQ(countsOf(import(cards, asGroups)), "3 = 0 + 0 + 3 + 0 + 0");
  EXPECT_EQ(groupsOfAll(), "home(Ann ) work(Ann Bo ) ");
  import(cardWith("Di", "CATEGORIES:home\r\n"), asGroups);
  EXPECT_EQ(groupsOfAll(), "home(Ann Di ) work(Ann Bo ) ");
}

}  // namespace
}  // namespace ox::vcard
