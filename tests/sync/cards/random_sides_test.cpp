// What holds of every merge and every edit, whatever both sides have made of a card.

#include <algorithm>
#include <gtest/gtest.h>
#include <map>
#include <set>

#include "../../vcard/random_card.hpp"
#include "cards.hpp"
#include "ox/records/clean_text.hpp"
#include "ox/records/property_codec.hpp"
#include "ox/sync/cards/lines/text_lines.hpp"
#include "ox/sync/cards/parts/card_parts.hpp"
#include "random_changes.hpp"

namespace ox::sync {
namespace {

using Words = std::vector<std::string>;
constexpr std::uint32_t kSeeds = 400;
const EditOptions kNow{"20261123T060700Z"};

struct Sides {
  std::string text;
  vcard::CardVersion version;
  CardContent base;
  CardContent theirs;
  CardContent ours;
};

Sides sidesOf(std::uint32_t seed) {
  vcard::RandomCards cards(seed);
  RandomChanges changes(seed);
  auto card = cards.next();
  cleanText(card.properties);
  Sides sides;
  sides.version = seed % 2 == 0 ? vcard::CardVersion::V30 : vcard::CardVersion::V40;
  const auto made = contentOfRecord(false, card.properties, card.photo, {"one", "two"}, {});
  sides.text = newCard(made, "uid-" + std::to_string(seed), sides.version, kNow);
  sides.base = contentOf(sides.text);
  sides.theirs = changes.of(sides.base, 1 + changes.below(4));
  sides.ours = changes.of(sides.base, 1 + changes.below(4));
  return sides;
}

// Everything that a content says, each with the property that it is of.
std::multiset<std::string> sayingsOf(const CardContent& content) {
  std::multiset<std::string> sayings;
  const auto parts = partsOf(content.properties);
  for (const auto& [id, value] : parts.values.entries()) {
    if (const auto* values = std::get_if<MultiValuePtr>(&value)) {
      for (const auto& entry : (*values)->entries) {
        PropertyBag bag;
        bag.set(id, entry.value);
        sayings.insert(encodeProperties(bag));
      }
    } else {
      PropertyBag bag;
      bag.set(id, value);
      sayings.insert(encodeProperties(bag));
    }
  }
  for (const auto& line : parts.lines.entries) sayings.insert("line " + *line.value.text());
  for (const auto& category : content.categories) sayings.insert("tag " + category);
  if (content.photo) sayings.insert("photo " + *content.photo);
  return sayings;
}

std::set<std::string> newSayings(const CardContent& before, const CardContent& now) {
  const auto old = sayingsOf(before);
  std::set<std::string> news;
  for (const auto& saying : sayingsOf(now)) {
    if (!old.contains(saying)) news.insert(saying);
  }
  return news;
}

TEST(RandomSides, AChangeOfOneSideIsTakenWhole) {
  for (std::uint32_t seed = 0; seed < kSeeds; ++seed) {
    const auto sides = sidesOf(seed);
    const auto down = merge(&sides.base, sides.theirs, &sides.base, sides.base);
    EXPECT_EQ(differingProperties(down.content, sides.theirs), Words()) << seed;
    EXPECT_EQ(down.changesOurs, !sameContent(sides.base, sides.theirs)) << seed;
    EXPECT_FALSE(down.changesTheirs) << seed;
    EXPECT_TRUE(down.conflicts.empty()) << seed;
    const auto up = merge(&sides.base, sides.base, &sides.base, sides.ours);
    EXPECT_EQ(differingProperties(up.forThem, sides.ours), Words()) << seed;
    EXPECT_EQ(differingProperties(up.content, sides.ours), Words()) << seed;
    EXPECT_EQ(up.changesTheirs, !sameContent(sides.base, sides.ours)) << seed;
    EXPECT_FALSE(up.changesOurs) << seed;
    EXPECT_TRUE(up.conflicts.empty()) << seed;
  }
}

TEST(RandomSides, BothComeToSayTheSameAndStayQuiet) {
  for (std::uint32_t seed = 0; seed < kSeeds; ++seed) {
    const auto sides = sidesOf(seed);
    const auto merged = merge(&sides.base, sides.theirs, &sides.base, sides.ours);
    EXPECT_EQ(differingProperties(merged.content, merged.forThem), Words()) << seed;
    const auto again = merge(&merged.forThem, merged.forThem, &merged.content, merged.content);
    EXPECT_FALSE(again.changesOurs || again.changesTheirs) << seed;
    EXPECT_TRUE(again.conflicts.empty()) << seed;
    EXPECT_EQ(encodeProperties(again.content.properties),
              encodeProperties(merged.content.properties))
        << seed;
  }
}

TEST(RandomSides, EveryEditIsInAValueOrAConflict) {
  for (std::uint32_t seed = 0; seed < kSeeds; ++seed) {
    const auto sides = sidesOf(seed);
    const auto merged = merge(&sides.base, sides.theirs, &sides.base, sides.ours);
    const auto said = sayingsOf(merged.content);
    for (const auto& saying : newSayings(sides.base, sides.theirs)) {
      EXPECT_TRUE(said.contains(saying)) << seed << " theirs: " << saying;
    }
    auto kept = said;
    for (const auto& conflict : merged.conflicts) {
      const auto chosen = withOurs(merged.content, conflict);
      for (const auto& saying : sayingsOf(chosen)) kept.insert(saying);
    }
    for (const auto& saying : newSayings(sides.base, sides.ours)) {
      EXPECT_TRUE(kept.contains(saying)) << seed << " ours: " << saying;
    }
  }
}

// A server that keeps another thing than it was given, for good.
TEST(RandomSides, WhatTheServerSpellsItsOwnWayStaysSo) {
  for (std::uint32_t seed = 0; seed < kSeeds; ++seed) {
    const auto sides = sidesOf(seed);
    const auto& theirs = sides.theirs;
    const auto quiet = merge(&theirs, theirs, &sides.base, sides.base);
    EXPECT_FALSE(quiet.changesOurs || quiet.changesTheirs) << seed;
    const auto merged = merge(&theirs, theirs, &sides.base, sides.ours);
    EXPECT_FALSE(merged.changesOurs) << seed;
    EXPECT_TRUE(merged.conflicts.empty()) << seed;
    EXPECT_EQ(differingProperties(merged.content, sides.ours), Words()) << seed;
    const auto news = newSayings(sides.base, sides.ours);
    for (const auto& saying : newSayings(theirs, merged.forThem)) {
      EXPECT_TRUE(news.contains(saying)) << seed << " " << saying;
    }
    for (const auto& saying : newSayings(merged.forThem, theirs)) {
      EXPECT_TRUE(!sayingsOf(sides.ours).contains(saying)) << seed << " " << saying;
    }
  }
}

TEST(RandomSides, AnEditedTextSaysWhatIsWanted) {
  for (std::uint32_t seed = 0; seed < kSeeds; ++seed) {
    const auto sides = sidesOf(seed);
    const auto edited = editedCard(sides.text, sides.base, sides.ours, kNow);
    // As far as the version can say it.
    const auto uid = "uid-" + std::to_string(seed);
    const auto sayable = contentOf(newCard(sides.ours, uid, sides.version, kNow));
    const auto read = contentOf(edited);
    EXPECT_TRUE(sameContent(read, sides.ours) || sameContent(read, sayable))
        << seed << "\n"
        << ::testing::PrintToString(differingProperties(read, sides.ours)) << edited;
  }
}

// The text as another program might have it: lines in another order and their names in small
// letters.
std::string respelled(const std::string& text, RandomChanges& random) {
  auto lines = linesOf(text);
  for (std::size_t i = lines.size() - 2; i > 2; --i) {
    std::swap(lines[i], lines[2 + random.below(i - 1)]);
  }
  std::string result;
  for (auto& line : lines) {
    if (line.group.empty() && random.below(2) == 0) {
      const auto end = line.bytes.find_first_of(":;\r");
      std::transform(line.bytes.begin(), line.bytes.begin() + static_cast<std::ptrdiff_t>(end),
                     line.bytes.begin(), [](char c) {
                       return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
                     });
    }
    result += line.bytes;
  }
  return result;
}

// Lines that are not in the edited text, but for those of these names and of groups with them, and
// what our own exports say of entries by their places.
Words lostLines(const std::string& text, const std::string& edited,
                const std::set<std::string>& touched) {
  std::multiset<std::string> there;
  for (const auto& line : linesOf(edited)) there.insert(line.bytes);
  const auto lines = linesOf(text);
  std::set<std::string> groups;
  for (const auto& line : lines) {
    if (touched.contains(line.name) && !line.group.empty()) groups.insert(line.group);
  }
  Words lost;
  for (const auto& line : lines) {
    if (const auto found = there.find(line.bytes); found != there.end()) {
      there.erase(found);
    } else if (!touched.contains(line.name) && !groups.contains(line.group)) {
      lost.push_back(line.bytes);
    }
  }
  return lost;
}

TEST(RandomSides, AnEditKeepsTheBytesOfEveryOtherLine) {
  for (std::uint32_t seed = 0; seed < kSeeds; ++seed) {
    RandomChanges random(seed);
    const auto text = respelled(sidesOf(seed).text, random);
    const auto said = contentOf(text);
    auto wanted = said;
    addEntry(wanted, property_id::kEmail, "new@example.org", "Boat");
    setText(wanted, property_id::kNote, "edited");
    const auto edited = editedCard(text, said, wanted, kNow);
    const auto uid = "uid-" + std::to_string(seed);
    const auto sayable = contentOf(newCard(wanted, uid, sidesOf(seed).version, kNow));
    const auto read = contentOf(edited);
    EXPECT_TRUE(sameContent(read, wanted) || sameContent(read, sayable))
        << seed << ::testing::PrintToString(differingProperties(read, wanted));
    std::set<std::string> touched = {"NOTE", "REV", "X-OX-LINE", "X-OX-PROPERTY"};
    // Values that no line says exactly are stored with the whole list.
    if (!valueOf(linesOf(text), "X-OX-PROPERTY").empty()) touched.insert("EMAIL");
    EXPECT_EQ(lostLines(text, edited, touched), Words()) << seed << "\n" << text << edited;
  }
}

}  // namespace
}  // namespace ox::sync
