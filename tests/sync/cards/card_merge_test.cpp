#include "ox/sync/cards/card_merge.hpp"

#include <gtest/gtest.h>

#include "cards.hpp"
#include "ox/records/property_codec.hpp"

namespace ox::sync {
namespace {

using namespace property_id;
using Words = std::vector<std::string>;

CardContent ann(const std::string& lines) {
  return contentOf(cardText("N:Lee;Ann;;;\nFN:Ann Lee\nUID:u\n" + lines));
}

TEST(Merge, ChangesNothingThatNobodyHasChanged) {
  const auto theirs = ann("TEL:1\nNOTE:spelled there\nX-A:1\n");
  const auto ours = ann("TEL;TYPE=HOME:(1)\nNOTE:spelled here\nPHOTO;ENCODING=b:AAAA\n");
  const auto merged = merge(&theirs, theirs, &ours, ours);
  EXPECT_FALSE(merged.changesOurs);
  EXPECT_FALSE(merged.changesTheirs);
  EXPECT_TRUE(merged.conflicts.empty());
  EXPECT_EQ(encodeProperties(merged.content.properties), encodeProperties(ours.properties));
  EXPECT_EQ(encodeProperties(merged.forThem.properties), encodeProperties(theirs.properties));
}

TEST(Merge, TakesEachSidesOwnChanges) {
  const auto theirBase = ann("TEL:1\nTEL:2\nNOTE:n\n");
  const auto theirs = ann("TEL:1\nTEL:2\nTEL:3\nNOTE:theirs\n");
  const auto ourBase = theirBase;
  auto ours = ourBase;
  removeEntry(ours, kPhone, "1");
  setText(ours, kNickname, "Annie");
  const auto merged = merge(&theirBase, theirs, &ourBase, ours);
  EXPECT_TRUE(merged.changesOurs);
  EXPECT_TRUE(merged.changesTheirs);
  EXPECT_TRUE(merged.conflicts.empty());
  EXPECT_EQ(textsOf(merged.content, kPhone), (Words{"-=2", "-=3"}));
  EXPECT_EQ(textsOf(merged.forThem, kPhone), (Words{"-=2", "-=3"}));
  EXPECT_EQ(*merged.content.properties.text(kNote), "theirs");
  EXPECT_EQ(*merged.content.properties.text(kNickname), "Annie");
  EXPECT_EQ(*merged.forThem.properties.text(kNickname), "Annie");
}

TEST(Merge, LeavesWhatTheServerSpellsItsOwnWay) {
  const auto theirBase = ann("TEL:+15550100\nEMAIL:a@example.org\n");
  const auto theirs = theirBase;
  const auto ourBase = ann("TEL:+1 555 0100\nEMAIL:a@example.org\nPHOTO;ENCODING=b:AAAA\n");
  auto ours = ourBase;
  addEntry(ours, kEmail, "b@example.org", std::nullopt);
  const auto merged = merge(&theirBase, theirs, &ourBase, ours);
  EXPECT_FALSE(merged.changesOurs);
  EXPECT_TRUE(merged.changesTheirs);
  EXPECT_EQ(differingProperties(merged.content, ours), Words());
  EXPECT_EQ(textsOf(merged.forThem, kPhone), (Words{"-=+15550100"}));
  EXPECT_EQ(textsOf(merged.forThem, kEmail), (Words{"-=a@example.org", "-=b@example.org"}));
  EXPECT_EQ(merged.forThem.photo, nullptr);
}

TEST(Merge, ChangesTheEntryThatTheServerSpellsItsOwnWay) {
  const auto theirBase = ann("TEL:+15550100\n");
  const auto ourBase = ann("TEL:+1 555 0100\n");
  auto ours = ourBase;
  changeEntry(ours, kPhone, "+1 555 0100", "+1 555 0200");
  auto merged = merge(&theirBase, theirBase, &ourBase, ours);
  EXPECT_EQ(textsOf(merged.forThem, kPhone), (Words{"-=+1 555 0200"}));
  const auto theirs = ann("TEL:+15550300\n");
  merged = merge(&theirBase, theirs, &ourBase, ourBase);
  EXPECT_EQ(textsOf(merged.content, kPhone), (Words{"-=+15550300"}));
}

TEST(Merge, KeepsIdentifiersOfEntriesThatStay) {
  const auto base = ann("TEL:1\nTEL:2\n");
  auto ours = base;
  auto list = listOf(ours, kPhone);
  list.entries[0].identifier = 40;
  list.entries[1].identifier = 41;
  setList(ours, kPhone, list);
  const auto theirs = ann("TEL:2\nTEL:3\nTEL:1\n");
  const auto merged = merge(&base, theirs, &ours, ours);
  list = listOf(merged.content, kPhone);
  ASSERT_EQ(list.entries.size(), 3U);
  EXPECT_EQ(entryOf(list, "1").identifier, 40U);
  EXPECT_EQ(entryOf(list, "2").identifier, 41U);
  EXPECT_EQ(entryOf(list, "3").identifier, 42U);
}

TEST(Merge, ConflictsOverOneValueThatBothChanged) {
  const auto base = ann("NOTE:base\n");
  const auto theirs = ann("NOTE:theirs\n");
  const auto ours = ann("NOTE:ours\n");
  const auto merged = merge(&base, theirs, &base, ours);
  EXPECT_EQ(*merged.content.properties.text(kNote), "theirs");
  EXPECT_TRUE(merged.changesOurs);
  EXPECT_FALSE(merged.changesTheirs);
  ASSERT_EQ(merged.conflicts.size(), 1U);
  const auto& conflict = merged.conflicts.front();
  EXPECT_EQ(conflict.property, "note");
  EXPECT_EQ(textOfValue("note", conflict.theirs), "theirs");
  EXPECT_EQ(textOfValue("note", conflict.ours), "ours");
  EXPECT_EQ(textOfValue("note", conflict.base), "base");
  EXPECT_EQ(*withOurs(merged.content, conflict).properties.text(kNote), "ours");
}

TEST(Merge, ConflictsOverOneEntryThatBothChanged) {
  const auto base = ann("TEL;TYPE=HOME:1\nTEL;TYPE=WORK:2\n");
  const auto theirs = ann("TEL;TYPE=HOME:1\nTEL;TYPE=WORK:22\n");
  const auto ours = ann("TEL;TYPE=HOME:1\nTEL;TYPE=WORK:222\n");
  const auto merged = merge(&base, theirs, &base, ours);
  EXPECT_EQ(textsOf(merged.content, kPhone), (Words{"_$!<Home>!$_=1", "_$!<Work>!$_=22"}));
  ASSERT_EQ(merged.conflicts.size(), 1U);
  EXPECT_EQ(textOfValue("phone", merged.conflicts[0].ours), "222 (work)");
  EXPECT_EQ(textsOf(withOurs(merged.content, merged.conflicts[0]), kPhone),
            (Words{"_$!<Home>!$_=1", "_$!<Work>!$_=222"}));
}

TEST(Merge, JoinsLabelAndValueOfOneEntry) {
  const auto base = ann("TEL;TYPE=HOME:1\n");
  const auto theirs = ann("TEL;TYPE=HOME:11\n");
  const auto ours = ann("TEL;TYPE=WORK:1\n");
  const auto merged = merge(&base, theirs, &base, ours);
  EXPECT_EQ(textsOf(merged.content, kPhone), (Words{"_$!<Work>!$_=11"}));
  EXPECT_EQ(textsOf(merged.forThem, kPhone), (Words{"_$!<Work>!$_=11"}));
  EXPECT_TRUE(merged.conflicts.empty());
  EXPECT_TRUE(merged.changesOurs);
  EXPECT_TRUE(merged.changesTheirs);
}

TEST(Merge, KeepsWhatOneSideChangedAndTheOtherRemoved) {
  const auto base = ann("TEL:1\nNOTE:n\n");
  const auto without = ann("");
  const auto changed = ann("TEL:11\nNOTE:nn\n");
  for (const auto& merged :
       {merge(&base, without, &base, changed), merge(&base, changed, &base, without)}) {
    EXPECT_EQ(textsOf(merged.content, kPhone), (Words{"-=11"}));
    EXPECT_EQ(*merged.content.properties.text(kNote), "nn");
    EXPECT_TRUE(sameContent(merged.content, merged.forThem));
    EXPECT_TRUE(merged.conflicts.empty());
  }
}

TEST(Merge, JoinsTwoThatHaveNeverMet) {
  const auto theirs = ann("TEL:1\nTEL:2\nNOTE:theirs\nCATEGORIES:a\nX-A:1\n");
  const auto ours = ann("TEL:2\nTEL:3\nNOTE:ours\nCATEGORIES:b\nNICKNAME:Annie\n");
  const auto merged = merge(nullptr, theirs, nullptr, ours);
  EXPECT_EQ(textsOf(merged.content, kPhone), (Words{"-=1", "-=2", "-=3"}));
  EXPECT_EQ(merged.content.categories, (Words{"b", "a"}));
  EXPECT_EQ(*merged.content.properties.text(kNote), "theirs");
  EXPECT_EQ(*merged.forThem.properties.text(kNickname), "Annie");
  ASSERT_EQ(merged.conflicts.size(), 1U);
  EXPECT_EQ(merged.conflicts[0].property, "note");
  EXPECT_EQ(merged.conflicts[0].base, "");
  EXPECT_EQ(textOfValue("note", merged.conflicts[0].base), "nothing");
  EXPECT_TRUE(sameContent(merged.content, merged.forThem));
}

TEST(Merge, TakesUnmodelledLinesAsASet) {
  const auto base = ann("X-A:1\nX-B:2\nX-C:3\nREV:20200101T000000Z\n");
  const auto theirs = ann("X-B:2\nX-C:3\nX-D:4\nREV:20210101T000000Z\nPRODID:p\n");
  const auto ours = ann("X-A:1\nX-B:2\nX-E:5\nREV:20200101T000000Z\n");
  const auto merged = merge(&base, theirs, &base, ours);
  EXPECT_EQ(differingProperties(merged.content, ann("X-B:2\nX-D:4\nX-E:5\n")), Words());
  EXPECT_EQ(differingProperties(merged.forThem, ann("X-B:2\nX-D:4\nX-E:5\n")), Words());
}

TEST(Merge, NeverPushesForARevision) {
  const auto base = ann("TEL:1\nREV:20200101T000000Z\nPRODID:a\n");
  const auto theirs = ann("TEL:1\nREV:20210101T000000Z\nPRODID:b\n");
  const auto ours = ann("TEL:1\nREV:20220101T000000Z\nPRODID:c\n");
  const auto merged = merge(&base, theirs, &base, ours);
  EXPECT_FALSE(merged.changesOurs);
  EXPECT_FALSE(merged.changesTheirs);
  EXPECT_TRUE(merged.conflicts.empty());
}

TEST(Merge, GivesTheirCardWhereOursIsAsItWas) {
  const auto base = ann("TEL:1\nREV:20200101T000000Z\n");
  const auto theirs =
      ann("REV:20210101T000000Z\nTEL;X-S=1:2\nTEL;TYPE=MODEM:1\nX-A:1\nCATEGORIES:a\n");
  const auto merged = merge(&base, theirs, &base, base);
  EXPECT_TRUE(sameContent(merged.content, theirs));
  EXPECT_FALSE(merged.changesTheirs);
  const auto details = [](const CardContent& content) {
    return propertiesOfRecord(content).value(kUnmodelledLines);
  };
  EXPECT_NE(std::get<Object>(details(merged.content)).array(), nullptr);
  EXPECT_EQ(std::get<Object>(details(merged.content)).array()->size(),
            std::get<Object>(details(theirs)).array()->size());
}

TEST(Merge, TakesTheirMainEntryAndOurs) {
  const auto base = ann("TEL:1\nTEL:2\n");
  const auto chosen = ann("TEL;TYPE=pref:1\nTEL:2\n");
  auto merged = merge(&base, chosen, &base, base);
  EXPECT_EQ(textsOf(merged.content, kPhone), (Words{"*-=1", "-=2"}));
  EXPECT_TRUE(merged.changesOurs);
  merged = merge(&base, base, &base, chosen);
  EXPECT_EQ(textsOf(merged.forThem, kPhone), (Words{"*-=1", "-=2"}));
  EXPECT_TRUE(merged.changesTheirs);
  EXPECT_FALSE(merged.changesOurs);
}

TEST(Merge, KeepsPicturesOfBothSides) {
  const auto base = ann("");
  auto theirs = base;
  theirs.photo = makeData("theirs");
  auto ours = base;
  ours.photo = makeData("ours");
  const auto merged = merge(&base, theirs, &base, ours);
  EXPECT_EQ(*merged.content.photo, "theirs");
  ASSERT_EQ(merged.conflicts.size(), 1U);
  EXPECT_EQ(merged.conflicts[0], (ValueConflict{"photo", "theirs", "ours", ""}));
  EXPECT_EQ(textOfValue("photo", "ours"), "a picture of 4 bytes");
  EXPECT_EQ(*withOurs(merged.content, merged.conflicts[0]).photo, "ours");
}

TEST(Merge, MergesMembersWhateverTheirCase) {
  const auto group = [](std::vector<std::string> members, const std::string& name) {
    CardContent content;
    content.isGroup = true;
    setText(content, kGroupName, name);
    content.members = std::move(members);
    return content;
  };
  const auto base = group({"a", "b", "c"}, "Team");
  const auto theirs = group({"A", "C", "d"}, "Theirs");
  const auto ours = group({"a", "b", "e"}, "Ours");
  const auto merged = merge(&base, theirs, &base, ours);
  EXPECT_EQ(merged.content.members, (Words{"a", "e", "d"}));
  EXPECT_EQ(merged.forThem.members, (Words{"A", "d", "e"}));
  ASSERT_EQ(merged.conflicts.size(), 1U);
  EXPECT_EQ(merged.conflicts[0], (ValueConflict{"name", "Theirs", "Ours", "Team"}));
  EXPECT_EQ(*withOurs(merged.content, merged.conflicts[0]).properties.text(kGroupName), "Ours");
}

}  // namespace
}  // namespace ox::sync
