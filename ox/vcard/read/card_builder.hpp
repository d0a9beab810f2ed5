#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_set>
#include <utility>
#include <vector>

#include "ox/vcard/properties/type_words.hpp"
#include "ox/vcard/read/card.hpp"
#include "ox/vcard/source/card_lines.hpp"

namespace ox::vcard {

// Makes a Card of content lines: feed every line, then finish. Used for one card after the other,
// so that its buffers are made once.
class CardBuilder {
 public:
  void start(std::size_t line, const CardFacts& facts);
  void add(const ContentLine& line);
  // The card, without the repairs that the lines themselves made. Leaves the builder empty.
  Card finish();

 private:
  struct Multi {
    std::vector<MultiEntry> entries;
    std::size_t primary = 0;  // entry number; 0 is none
    unsigned rank = 0;
    std::vector<std::pair<std::size_t, unsigned>> ranks;  // of entries that have one
  };
  static constexpr auto kNone = static_cast<std::size_t>(-1);
  // An entry that belongs to a group ("item1"), so that a label may stand on another line.
  struct GroupedEntry {
    std::string group;  // upper case
    std::string spelling;
    PropertyId property = 0;
    std::size_t entry = 0;
    std::uint32_t typeWords = 0;     // that its present label stands for
    std::size_t parameters = kNone;  // the place of its kept parameters
  };
  // X-ABLabel or X-ABADR of a group.
  struct GroupNote {
    std::string group;
    Meaning meaning = Meaning::Label;
    std::string text;
    std::string kept;
    std::size_t line = 0;
    std::size_t uses = 0;  // entries that it serves
    bool isDouble = false;
  };
  // What an entry's line has beside its value.
  struct EntryExtras {
    std::string_view label = {};    // overrides what the types say
    std::uint32_t ownKinds = 0;     // parameter kinds that the value holds already, as bits
    bool unknownWordsUsed = false;  // the unknown type words are part of the value
  };

  static constexpr PropertyId kFirstMulti = property_id::kPhone;
  static constexpr std::size_t kMultiCount = 8;

  bool addGroupLine(const ContentLine& line);
  bool addPersonLine(const ContentLine& line);

  bool addName(const ContentLine& line);
  bool addFullName(const ContentLine& line);
  bool addText(const ContentLine& line);
  bool addOrganization(const ContentLine& line);
  bool addNote(const ContentLine& line);
  bool addBirthday(const ContentLine& line);
  bool addSound(const ContentLine& line);
  bool addUid(const ContentLine& line);
  bool addPhoto(const ContentLine& line);

  bool addSimple(PropertyId property, const ContentLine& line, std::string_view scheme);
  bool addDate(const ContentLine& line);
  bool addAddress(const ContentLine& line);
  bool addMessage(const ContentLine& line);
  bool addMessageUri(const ContentLine& line);
  bool addSocialProfile(const ContentLine& line);
  bool addRelated(const ContentLine& line);
  bool addGroupNote(const ContentLine& line);
  bool addExactValues(const ContentLine& line);
  bool addKeptLine(const ContentLine& line);

  // The value of UID or MEMBER.
  std::string uidOf(const ContentLine& line);
  std::optional<Date> readDate(const ContentLine& line);
  void addEntry(PropertyId property, Object&& value, const ContentLine& line, EntryExtras extras);
  void keepParameters(PropertyId property, std::size_t entry, const ContentLine& line,
                      std::uint32_t ownKinds, std::uint32_t typeWords, bool unknownWords);
  void collectParameters(const ContentLine& line, std::uint32_t ownKinds, std::uint32_t typeWords,
                         bool unknownWords);
  void keepRank(PropertyId property, std::size_t entry, unsigned rank);
  void keepRanks();
  void keepSpelling(PropertyId property, std::string_view spelling);
  void mend(const ContentLine& line, std::string reason);
  std::string text(const ContentLine& line) const;
  std::string& single(PropertyId property) { return texts_[property]; }
  Multi& multi(PropertyId property) { return multis_[property - kFirstMulti]; }

  void joinGroups();
  void keepGroups();
  void dropDoubleNotes();
  void applyNote(const GroupedEntry& entry, GroupNote& note);
  void applyLabel(const GroupedEntry& entry, GroupNote& note);
  void settleNames();
  void assemblePerson();
  void keepDigest();
  void sortKept();

  Card card_;
  Dialect dialect_ = Dialect::V30;
  bool is40_ = false;
  std::array<std::string, property_id::kNote + 1> texts_;  // empty: missing
  std::optional<Date> birthday_;
  std::array<Multi, kMultiCount> multis_;
  std::vector<GroupedEntry> grouped_;
  std::vector<GroupNote> notes_;
  std::size_t sharedLabels_ = 0;             // bytes of labels beyond the first of each group
  std::string noteParameters_;               // of the first note
  std::unordered_set<std::string> members_;  // that the card has
  std::string uid_;
  std::string fullName_;
  std::string fullNameLine_;
  std::string nameSpelling_;      // of N, when it was kept
  bool fullNameDerived_ = false;  // made of something that is no name
  bool moreFullNames_ = false;
  bool hasName_ = false;
  std::optional<PropertyBag> exactValues_;
  Array unmodelled_;

  TypeWords types_;
  std::string scratch_;
};

}  // namespace ox::vcard
