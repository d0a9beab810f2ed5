#pragma once

#include <array>
#include <cstddef>
#include <map>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "ox/base/data.hpp"
#include "ox/records/property_bag.hpp"
#include "ox/vcard/card_version.hpp"
#include "ox/vcard/lines/line_writer.hpp"
#include "ox/vcard/unmodelled/unmodelled.hpp"

namespace ox::vcard {

// What a card is written of.
struct OutgoingRecord {
  const PropertyBag& properties;
  const Data& photo;
  // The UID of a record that came from no card; empty: such a record gets none.
  std::string_view uid = {};
};

// The groups that the lines of one card have been given.
class ItemGroups {
 public:
  explicit ItemGroups(std::size_t firstFreeItem) : nextItem_(firstFreeItem) {}

  // The group of an entry's line; empty for none. One that was preserved is shared only by entries
  // that have the same label: it holds for all of them, and is taken away here when it stands there
  // already. `ownLines`: more lines than a label belong to this entry alone.
  std::string groupFor(std::string_view preserved, std::string_view& label, bool ownLines);

 private:
  struct Taken {
    std::string_view label;
    bool isClosed = false;  // for other entries
  };
  std::unordered_map<std::string, Taken> taken_;
  std::size_t nextItem_;
};

// Writes the lines of properties, one after the other, and remembers what has to follow them: the
// values that their lines do not give exactly, and the details that could not stand in them.
// Borrows what it is given; one thread at a time.
class PropertyWriter {
 public:
  PropertyWriter(const OutgoingRecord& record, CardVersion version, std::string& out,
                 Folding folding = Folding::Yes);

  CardVersion version() const { return version_; }
  bool is30() const { return version_ == CardVersion::V30; }
  LineWriter& line() { return line_; }
  // How much of the card there is.
  std::size_t size() const { return out_.size(); }
  const PropertyBag& properties() const { return record_.properties; }
  const Data& photo() const { return record_.photo; }
  bool hasPhoto() const { return record_.photo && !record_.photo->empty(); }
  std::string_view fallbackUid() const { return record_.uid; }
  const Unmodelled& unmodelled() const { return unmodelled_; }
  ItemGroups& groups() { return groups_; }

  // Null when the record holds none, and for properties that are not built-in.
  const PropertyValue* valueOf(PropertyId property) const {
    return property < values_.size() ? values_[property] : nullptr;
  }
  // The single text of that property, borrowed; empty when there is none. Notes what is not exact.
  std::string_view textOf(PropertyId property);

  // The preserved parameters of a single value, and its rank.
  void writeParameters(PropertyId property);
  void writePreference(unsigned rank);
  // X-OX-LINE: a line, or an encoded detail, that the version does not admit.
  void writeWrapped(std::string_view text);
  // Wraps the detail after the properties.
  void wrapLater(PropertyDetail detail) { later_.push_back(std::move(detail)); }
  void writeWrappedLater();

  // A line that repeats an entry, behind the lines of all entries. Where these do not give the
  // property exactly it is wrapped, so that they are as many as what is stored beside them.
  void repeatLater(std::string line, PropertyDetail detail);
  void writeRepeated();

  void noteInexact(PropertyId property);
  bool isInexact(PropertyId property) const;
  bool hasInexact() const { return !inexact_.empty(); }
  // Notes that the card has that property, of which it may have one only. The name is borrowed.
  void noteWritten(std::string_view name) { written_.push_back(name); }
  bool hasWritten(std::string_view name) const;
  // The name is not the one any more that the preserved lines came with.
  void noteNameChanged() { isNameChanged_ = true; }
  bool isNameChanged() const { return isNameChanged_; }
  // The preserved FN could not be written as it is.
  void noteFormattedNameUnsaid() { isFormattedNameUnsaid_ = true; }
  bool isFormattedNameUnsaid() const { return isFormattedNameUnsaid_; }

 private:
  OutgoingRecord record_;
  CardVersion version_;
  std::string& out_;
  LineWriter line_;
  Unmodelled unmodelled_;
  ItemGroups groups_;
  std::array<const PropertyValue*, property_id::kLastMulti + 1> values_{};
  std::map<PropertyId, std::string> cleaned_;  // texts that had to be changed
  std::vector<PropertyId> inexact_;
  struct Repeated {
    std::string line;
    PropertyDetail detail;
  };
  std::vector<PropertyDetail> later_;
  std::vector<Repeated> repeated_;
  std::vector<std::string_view> written_;
  bool isNameChanged_ = false;
  bool isFormattedNameUnsaid_ = false;
};

}  // namespace ox::vcard
