#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "ox/OxAddressBookSDK/properties/OxProperty.hpp"
#include "ox/OxMacAddressBookSDK/_ABPerson/_ABPerson.hpp"
#include "ox/base/export.hpp"

namespace ox {

// The key of the built-in label that is called so, whatever the case and the blanks of the word
// ("home fax"); the word itself when none is.
OX_EXPORT std::string labelKeyOf(std::string_view word);

// The entries of one property of a person that may have several, as the store holds them: for
// changing one of them. A value that is set through the model writes all entries anew, so that an
// address loses what the model does not know of it and gains a country code. Here an entry that is
// not named stays as it is.
//
// A label is a label key or a text of the user's own, and means every entry whose label is the same
// text or reads the same whatever its case. A value is what elements of the property hold in the
// model (an OxObjectPhone, a text, ...); one of another kind is refused and changes nothing. A
// person that had a main value, or no value, has a main value afterwards. Borrows the person for
// its whole life; used by one thread at a time.
class OX_EXPORT PersonEntries {
 public:
  // The entries as they are now. A property of one value has none: that is refused, and nothing is
  // written.
  PersonEntries(_ABPerson& person, const OxPropertyPtr& property);

  bool holdsLabel(std::string_view label) const;

  // One more entry behind the others. A missing label: without one.
  void add(const Object& value, const Text& label);
  // One entry, the main one, in the place of all; none when the value is missing.
  void replaceAll(const Object& value);
  // One entry in the place of those of that label, or behind the others when there are none. They
  // are only taken away when the value is missing.
  void replaceLabelled(const std::string& label, const Object& value);

  // For postal addresses, the field being one of the OxAddressField... names:
  // One more address that holds that field alone.
  void addAddress(std::string_view field, const std::string& text, const Text& label);
  // The field of the first address of that label, or of the main one without a label; where there
  // is no such address one is added. A missing text takes the field away, and an address that then
  // holds nothing goes.
  void setAddressField(std::string_view field, const Text& text, const Text& label);

  // What the entries are known by while somebody arranges them anew; in their order.
  std::vector<std::uint64_t> identifiers() const;
  struct Arranged {
    std::uint64_t was = 0;  // the entry that it is; 0 for one more
    Text label;
    Object value;  // missing: the one that it has
  };
  // These entries in their order, in the place of the ones that were shown. An entry that was not
  // among those has come since: it stays, behind the others. One that has gone since is added again
  // where it has a value here.
  void arrange(const std::vector<Arranged>& entries, const std::vector<std::uint64_t>& shown);

  // Gives the person these entries, in memory until the save; false when that is refused.
  bool write();

 private:
  std::optional<Object> storedFrom(const Object& value) const;
  std::string_view fieldKey(std::string_view field) const;
  std::optional<MultiEntry> arranged(const Arranged& entry) const;
  std::size_t takeOut(const Text& label);
  void insert(Object stored, const Text& label, std::size_t place);
  void replace(const Text& label, const Object& value);
  std::vector<MultiEntry>::iterator addressOf(const Text& label);

  _ABPerson& person_;
  std::string storeName_;  // empty: the property has no entries, and nothing is written
  std::int32_t elementType_ = 0;
  MultiValue value_;
  bool needsMain_ = false;
};

}  // namespace ox
