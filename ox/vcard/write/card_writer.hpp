#pragma once

#include <array>
#include <cstddef>
#include <map>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "ox/vcard/lines/line_writer.hpp"
#include "ox/vcard/properties/full_name.hpp"
#include "ox/vcard/properties/property_names.hpp"
#include "ox/vcard/unmodelled/kept_texts.hpp"
#include "ox/vcard/unmodelled/kept_values.hpp"
#include "ox/vcard/write/writer.hpp"

namespace ox::vcard {

// Writes one card. Borrows what it is given; one thread at a time. While it writes it notes which
// values its lines do not give exactly.
class CardWriter {
 public:
  CardWriter(const PropertyBag& properties, const WriteOptions& options, std::string& out);

  void person(const Data& photo);
  void group(const std::vector<std::string>& members);

 private:
  static constexpr PropertyId kFirstMulti = property_id::kPhone;
  static constexpr std::size_t kMultiCount = 8;

  // The head of an entry's line, as it was started.
  struct Head {
    std::string group;       // empty: the line has none
    std::string_view label;  // that X-ABLabel has to give
  };
  // An entry of a multi-value on its way out.
  struct Entry {
    PropertyId property = 0;
    const MultiEntry* held = nullptr;
    unsigned rank = 0;  // of preference: 1 is the most preferred, 0 none
    std::string kept;   // its parameters
    std::string_view spelling = {};
    std::string_view group = {};  // that it shares with kept lines
  };

  bool is30() const { return options_.version == CardVersion::V30; }
  void notExact(PropertyId property);
  // The single text of that property, borrowed; empty when there is none. Notes what is not exact.
  std::string_view textOf(PropertyId property);

  void begin();
  void end();
  void uid();
  bool keptLine(const KeptLine& kept);
  bool wouldBeValue(const PropertyRow& row, std::string_view text);
  bool nestedCard(std::string_view text);
  // False when what REV was true for is not what is written.
  bool isRevisionTrue(std::string_view rest, bool isRestKnown) const;
  void keptLines();
  void keptParameters();
  void groupParameters(bool named);
  void wrapped(std::string_view line);
  void exactValues();

  void names();
  void sortAs(bool named);
  void fullName(const NameParts& parts);
  std::string_view nameInstead();
  void singleText(PropertyId property, std::string_view name);
  void organization();
  void birthday();
  void photo(const Data& bytes);
  // The kept parameters of a single value.
  void ownParameters(PropertyId property);

  void multi(PropertyId property);
  bool entry(const Entry& entry);
  bool ranksHold(const MultiValue& values, PropertyId property) const;
  void preference(unsigned rank);
  void wrapDetail(PropertyId property, std::size_t entry, std::string_view mark,
                  std::string_view detail);
  bool simple(const Entry& entry, std::string_view name, std::string_view scheme);
  bool date(const Entry& entry);
  bool address(const Entry& entry);
  bool message(const Entry& entry);
  bool socialProfile(const Entry& entry);
  bool related(const Entry& entry);
  // Group, name, label and preference, kept parameters. `forceItem`: more lines belong to it.
  // `labelled`: something else in the line gives the label already.
  Head startEntry(const Entry& entry, std::string_view name, bool forceItem = false,
                  bool labelled = false);
  std::string groupFor(const Entry& entry, std::string_view& label, bool forceItem);
  void endEntry(const Entry& entry, const Head& head);

  const PropertyBag& properties_;
  const WriteOptions& options_;
  std::string& out_;
  LineWriter line_;
  KeptTexts kept_;

  std::array<const PropertyValue*, property_id::kOtherDates + 1> values_{};
  std::map<PropertyId, std::string> cleaned_;  // texts that had to be changed
  std::vector<PropertyId> inexact_;
  std::vector<std::string> entryParameters_;  // kept ones of entries, for lines of their own
  // A kept group whose entries are written, and what its X-ABLabel says of them.
  struct TakenGroup {
    std::string_view label;
    bool isClosed = false;  // for other entries
  };
  std::unordered_map<std::string, TakenGroup> takenGroups_;
  std::size_t nextItem_;
  std::vector<std::string_view> onceWritten_;  // names of which a card has one
  bool revised_ = false;                       // REV is not true any more
  bool nameChanged_ = false;                   // since the card that the kept lines are of
  bool anniversaryWritten_ = false;
  bool photoWritten_ = false;
  bool isGroup_ = false;
  std::string scratch_;
  std::string lineRoom_;  // for kept lines that change with the version
};

}  // namespace ox::vcard
