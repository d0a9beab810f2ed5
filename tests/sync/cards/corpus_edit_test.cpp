// Edits of cards that other programs wrote, out of the folder that OX_CARD_CORPUS names: every
// value that is asked for is said, and what nobody asked for keeps its bytes.

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <gtest/gtest.h>
#include <iostream>
#include <map>
#include <set>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "cards.hpp"
#include "ox/records/property_keys.hpp"
#include "ox/sync/cards/lines/card_units.hpp"
#include "ox/sync/cards/lines/text_lines.hpp"
#include "ox/sync/cards/packed_card.hpp"
#include "ox/vcard/source/byte_source.hpp"
#include "ox/vcard/source/card_slicer.hpp"

namespace ox::sync {
namespace {

using namespace property_id;

// Null: there is none.
const char* corpus() {
  return std::getenv("OX_CARD_CORPUS");
}

// The texts of all cards of a file.
std::vector<std::string> cardsIn(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  std::ostringstream bytes;
  bytes << file.rdbuf();
  const auto all = bytes.str();
  vcard::MemorySource source(all);
  vcard::CardSlicer slicer(source);
  vcard::RawCard raw;
  std::vector<std::string> cards;
  while (slicer.next(raw)) {
    if (!raw.refusal.empty() || raw.lines.empty()) continue;
    const auto end = raw.lines.back().offset + raw.lines.back().length;
    auto text = withCrlf(std::string(raw.bytes.substr(0, end)) + "\r\nEND:VCARD\r\n");
    cards.push_back(std::move(text));
  }
  return cards;
}

bool isEdited(const std::string& text) {
  const auto lines = linesOf(text);
  const auto version = valueOf(lines, "VERSION");
  return version == "3.0" || version == "4.0";
}

template <typename Use>
void forEachCard(Use&& use) {
  for (const auto& entry : std::filesystem::recursive_directory_iterator(corpus())) {
    if (entry.path().extension() != ".vcf") continue;
    for (const auto& text : cardsIn(entry.path())) {
      if (std::holds_alternative<ReadCard>(readCard(text))) {
        use(entry.path().filename().string(), text);
      }
    }
  }
}

struct CorpusEdit {
  std::string name;
  std::set<std::string> touched;  // names of lines that may change
  std::size_t most;               // how many of them
  std::function<void(CardContent&)> make;
};

void changeFirst(CardContent& content, PropertyId property) {
  auto values = listOf(content, property);
  if (values.entries.empty()) {
    values.add(Object("+1 555 0100"), std::nullopt);
  } else {
    values.entries.front().value = Object("+1 555 0100");
  }
  setList(content, property, std::move(values));
}

void removeFirst(CardContent& content, PropertyId property) {
  auto values = listOf(content, property);
  if (values.entries.empty()) return;
  if (values.primary == values.entries.front().identifier) values.primary = 0;
  values.entries.erase(values.entries.begin());
  setList(content, property, std::move(values));
}

void changeFirstAddress(CardContent& content) {
  auto values = listOf(content, kAddress);
  if (values.entries.empty()) values.add(Object(Dictionary()), std::string(kABWorkLabel));
  auto address = *values.entries.front().value.dictionary();
  address.set(kABAddressCityKey, "Edited, City");
  values.entries.front().value = Object(std::move(address));
  setList(content, kAddress, std::move(values));
}

const std::vector<CorpusEdit>& edits() {
  static const auto& all = *new std::vector<CorpusEdit>{
      {"phone", {"TEL"}, 1, [](CardContent& content) { changeFirst(content, kPhone); }},
      {"removed phone", {"TEL"}, 1, [](CardContent& content) { removeFirst(content, kPhone); }},
      {"label of phone",
       {"TEL"},
       1,
       [](CardContent& content) {
         auto values = listOf(content, kPhone);
         if (values.entries.empty()) return;
         values.entries.back().label = "Cabin";
         setList(content, kPhone, std::move(values));
       }},
      {"main phone",
       {"TEL"},
       2,
       [](CardContent& content) {
         auto values = listOf(content, kPhone);
         if (values.entries.empty()) return;
         values.primary = values.entries.back().identifier;
         setList(content, kPhone, std::move(values));
       }},
      {"new email",
       {"EMAIL"},
       0,
       [](CardContent& content) { addEntry(content, kEmail, "new@example.org", "Boat"); }},
      {"removed url", {"URL"}, 1, [](CardContent& content) { removeFirst(content, kURLs); }},
      {"removed address",
       {"ADR", "LABEL"},
       2,
       [](CardContent& content) { removeFirst(content, kAddress); }},
      {"address", {"ADR", "LABEL"}, 2, changeFirstAddress},
      {"note", {"NOTE"}, 9, [](CardContent& content) { setText(content, kNote, "edited"); }},
      {"no note", {"NOTE"}, 9, [](CardContent& content) { setText(content, kNote, ""); }},
      {"job title",
       {"TITLE"},
       1,
       [](CardContent& content) { setText(content, kJobTitle, "edited"); }},
      {"department",
       {"ORG"},
       1,
       [](CardContent& content) { setText(content, kDepartment, "edited"); }},
      {"birthday",
       {"BDAY"},
       1,
       [](CardContent& content) {
         content.properties.set(kBirthday, Object(*Date::fromText("1990-05-17")));
       }},
      {"tags",
       {"CATEGORIES"},
       9,
       [](CardContent& content) { content.categories.emplace_back("edited"); }},
      {"photo",
       {"PHOTO"},
       1,
       [](CardContent& content) { content.photo = makeData("\xFF\xD8\xFF\xE0 edited"); }},
      {"no photo", {"PHOTO"}, 1, [](CardContent& content) { content.photo = nullptr; }},
      {"name", {"N", "FN"}, 2, [](CardContent& content) { setText(content, kFirst, "Edited"); }}};
  return all;
}

// The units of the text of which the edited one lacks a line.
std::vector<CardUnit> lostUnits(const std::string& text, const std::string& edited) {
  std::multiset<std::string> there;
  for (const auto& line : linesOf(edited)) there.insert(line.bytes);
  const auto lines = linesOf(text);
  std::vector<CardUnit> lost;
  for (const auto& unit : unitsOf(lines)) {
    bool isLost = false;
    for (const auto place : unit.lines) {
      const auto found = there.find(lines[place].bytes);
      isLost |= found == there.end();
      if (found != there.end()) there.erase(found);
    }
    if (isLost) lost.push_back(unit);
  }
  return lost;
}

TEST(CorpusEdit, SaysWhatIsWantedAndKeepsTheRest) {
  if (corpus() == nullptr) GTEST_SKIP() << "OX_CARD_CORPUS names no folder";
  std::size_t cards = 0;
  std::size_t anew = 0;
  std::map<std::string, std::size_t> wrong;
  std::map<std::string, std::size_t> lossy;
  forEachCard([&](const std::string& file, const std::string& text) {
    const auto said = contentOf(text);
    if (said.isGroup) return;
    ++(isEdited(text) ? cards : anew);
    for (const auto& edit : edits()) {
      auto wanted = said;
      edit.make(wanted);
      wanted =
          contentOfRecord(false, propertiesOfRecord(wanted), wanted.photo, wanted.categories, {});
      const auto edited = editedCard(text, said, wanted, {"20261123T060700Z"});
      // One that is written anew says it as far as the version can.
      if (!isEdited(text)) wanted = contentOf(newCard(wanted, "u", vcard::CardVersion::V30, {"x"}));
      const auto differing = differingProperties(contentOf(edited), wanted);
      std::vector<std::string> lost;
      std::size_t touched = 0;
      for (const auto& unit : lostUnits(text, edited)) {
        if (!isEdited(text)) continue;
        if (!edit.touched.contains(unit.name) || ++touched > edit.most) lost.push_back(unit.said);
      }
      wrong[edit.name] += differing.empty() ? 0 : 1;
      lossy[edit.name] += lost.empty() ? 0 : 1;
      if (differing.empty() && lost.empty()) continue;
      std::cout << file << ", " << edit.name << ":";
      for (const auto& word : differing) std::cout << " [" << word << "]";
      for (const auto& line : lost) std::cout << " <" << line.substr(0, 60) << ">";
      std::cout << "\n";
    }
  });
  std::cout << cards << " cards, and " << anew << " that are written anew\n";
  ASSERT_GT(cards, 0U);
  for (const auto& edit : edits()) {
    std::cout << edit.name << ": " << wrong[edit.name] << " read otherwise, " << lossy[edit.name]
              << " changed more\n";
    EXPECT_EQ(wrong[edit.name], 0U) << edit.name;
    EXPECT_EQ(lossy[edit.name], 0U) << edit.name;
  }
}

TEST(CorpusPacked, ComesBackToTheByte) {
  if (corpus() == nullptr) GTEST_SKIP() << "OX_CARD_CORPUS names no folder";
  std::size_t pictures = 0;
  std::size_t leftOut = 0;
  std::size_t before = 0;
  std::size_t after = 0;
  forEachCard([&](const std::string& file, const std::string& text) {
    const auto photo = contentOf(text).photo;
    const auto packed = packedCard(text, photo);
    EXPECT_EQ(unpackedCard(packed, photo), text) << file;
    pictures += photo ? 1 : 0;
    leftOut += needsPicture(packed) ? 1 : 0;
    before += text.size();
    after += packed.size();
  });
  std::cout << leftOut << " of " << pictures << " pictures left out; " << before << " bytes in "
            << after << "\n";
}

}  // namespace
}  // namespace ox::sync
