// A book whose CATEGORIES are groups here.
#include <algorithm>
#include <gtest/gtest.h>

#include "ox/platform/store/contact_source.hpp"
#include "ox/sync/run/look/local_book.hpp"
#include "tests/sync/run/synced_book.hpp"

namespace ox::test {
namespace {

using sync::SyncCounts;
using Lines = std::vector<std::string>;

class CategoryGroups : public testing::Test {
 protected:
  CategoryGroups() {
    auto row = syncSource().syncBooks().front();
    row.groupSpelling = sync::kCategoriesAsGroups;
    SaveRequest request;
    request.sync.books.push_back({row, {}});
    containerSource().execute(request);
    elsewhere.put("ann.vcf", cardText("ann", "Ann", "Lee", {"CATEGORIES:Choir,Club"}));
    elsewhere.put("bob.vcf", cardText("bob", "Bob", "Berg", {"CATEGORIES:Club"}));
    elsewhere.put("cid.vcf", cardText("cid", "Cid", "Roe"));
    book.runClean();
    elsewhere.log.clear();
  }

  RecordKey person(const std::string& first) const {
    for (const auto& key : book.persons()) {
      if (book.text(key, property_id::kFirst) == first) return key;
    }
    return {};
  }
  RecordKey group(const std::string& name) const {
    for (const auto& key : book.groups()) {
      if (book.text(key, property_id::kGroupName) == name) return key;
    }
    return {};
  }
  // "Club: Ann Bob", a line a group, by name.
  Lines groups() const {
    Lines lines;
    for (const auto& key : book.groups()) {
      auto line = book.text(key, property_id::kGroupName) + ":";
      for (const auto& member : book.members(key)) {
        line += " " + book.text(member, property_id::kFirst);
      }
      lines.push_back(std::move(line));
    }
    std::ranges::sort(lines);
    return lines;
  }
  // The value of CATEGORIES there, its parts in order.
  std::string categories(const std::string& href) const {
    const auto& text = elsewhere.text(href);
    const auto at = text.find("CATEGORIES:");
    if (at == std::string::npos) return {};
    return text.substr(at + 11, text.find("\r\n", at) - at - 11);
  }
  void runQuiet() {
    elsewhere.log.clear();
    const auto before = containerSource().moment();
    book.run();
    EXPECT_EQ(elsewhere.log, Lines{"LIST"});
    EXPECT_EQ(containerSource().moment(), before);
  }

  BookElsewhere elsewhere;
  SyncedBook book{elsewhere};
};

TEST_F(CategoryGroups, AreMadeOfWhatThePersonsSay) {
  EXPECT_EQ(groups(), (Lines{"Choir: Ann", "Club: Ann Bob"}));
  EXPECT_EQ(book.tags(person("Ann")), Lines{});
  runQuiet();
}

TEST_F(CategoryGroups, SendTheirMembersAsCategories) {
  book.link(group("Club"), person("Cid"));
  book.unlink(group("Club"), person("Ann"));
  EXPECT_EQ(book.runClean().up, (SyncCounts{0, 2, 0}));
  EXPECT_EQ(categories("cid.vcf"), "Club");
  EXPECT_EQ(categories("ann.vcf"), "Choir");
  EXPECT_EQ(elsewhere.cards().size(), 3U);
  runQuiet();
}

TEST_F(CategoryGroups, MergeTheMembersOfBothSidesAsSets) {
  book.link(group("Choir"), person("Bob"));
  book.set(person("Bob"), property_id::kNote, "ours");
  elsewhere.put("bob.vcf", cardText("bob", "Bob", "Berg", {"CATEGORIES:Club,Board"}));
  book.runClean();
  EXPECT_EQ(groups(), (Lines{"Board: Bob", "Choir: Ann Bob", "Club: Ann Bob"}));
  for (const auto* name : {"Board", "Choir", "Club"}) {
    EXPECT_NE(categories("bob.vcf").find(name), std::string::npos) << categories("bob.vcf");
  }
  runQuiet();
}

TEST_F(CategoryGroups, AreRenamedOnBothSides) {
  book.set(group("Club"), property_id::kGroupName, "Old club");
  EXPECT_EQ(book.runClean().up, (SyncCounts{0, 2, 0}));
  EXPECT_EQ(categories("bob.vcf"), "Old club");
  elsewhere.put("ann.vcf", cardText("ann", "Ann", "Lee", {"CATEGORIES:Choir,Elders"}));
  elsewhere.put("bob.vcf", cardText("bob", "Bob", "Berg", {"CATEGORIES:Elders"}));
  book.runClean();
  EXPECT_EQ(groups(), (Lines{"Choir: Ann", "Elders: Ann Bob"}));
  runQuiet();
}

TEST_F(CategoryGroups, GoOnBothSides) {
  book.remove(group("Choir"));
  EXPECT_EQ(book.runClean().up, (SyncCounts{0, 1, 0}));
  EXPECT_EQ(categories("ann.vcf"), "Club");
  elsewhere.put("ann.vcf", cardText("ann", "Ann", "Lee"));
  elsewhere.erase("bob.vcf");
  book.runClean();
  EXPECT_EQ(groups(), Lines{});
  runQuiet();
}

TEST_F(CategoryGroups, WithoutMembersStayHereAndAreNamed) {
  book.addGroup("Empty");
  const auto report = book.run();
  EXPECT_EQ(report.notes,
            Lines{"groups without members are here alone, since the book says them as "
                  "categories: Empty"});
  EXPECT_EQ(elsewhere.cards().size(), 3U);
  EXPECT_EQ(groups(), (Lines{"Choir: Ann", "Club: Ann Bob", "Empty:"}));
  book.link(group("Empty"), person("Cid"));
  book.runClean();
  EXPECT_EQ(categories("cid.vcf"), "Empty");
}

TEST_F(CategoryGroups, OfNewPersonsGoWithThem) {
  const auto eve = book.addPerson("Eve");
  book.link(group("Choir"), eve);
  book.runClean();
  ASSERT_EQ(elsewhere.cards().size(), 4U);
  elsewhere.put("dan.vcf", cardText("dan", "Dan", "Roe", {"CATEGORIES:Choir,New"}));
  book.runClean();
  EXPECT_EQ(groups(), (Lines{"Choir: Ann Eve Dan", "Club: Ann Bob", "New: Dan"}));
  runQuiet();
}

TEST_F(CategoryGroups, LeaveCardsOfGroupsAlone) {
  elsewhere.put("group.vcf", groupText("group", "Band", {"ann"}));
  const auto report = book.run();
  ASSERT_EQ(report.refused.size(), 1U);
  EXPECT_EQ(report.refused[0].href, "group.vcf");
  EXPECT_EQ(groups(), (Lines{"Choir: Ann", "Club: Ann Bob"}));
  EXPECT_TRUE(elsewhere.cards().contains("group.vcf"));
}

TEST_F(CategoryGroups, LeaveTagsToTheUser) {
  book.setTags(person("Bob"), {"friend"});
  book.runClean();
  EXPECT_EQ(categories("bob.vcf"), "Club");
  EXPECT_EQ(book.tags(person("Bob")), Lines{"friend"});
}

}  // namespace
}  // namespace ox::test
