#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "ox/base/data.hpp"
#include "ox/records/encoded_values.hpp"
#include "ox/records/property_types.hpp"
#include "ox/transfer/importer.hpp"
#include "ox/vcard/read/card.hpp"

namespace ox::vcard {

// A person's card as an import waits with it: its values are encoded, since nearly all of them are
// written and not looked at again. A value.
struct PersonCard {
  EncodedValues values;
  Data photo;
  std::uint64_t fingerprint = 0;  // contentFingerprint of both
  std::string uid;                // plain; empty without one
  std::vector<std::string> categories;
  std::vector<Problem> repairs;
  std::string charset;   // that Card::charset has
  std::size_t line = 0;  // where its BEGIN stands
  // The properties that its file tells of at all; null: whatever a person has.
  std::shared_ptr<const std::vector<PropertyId>> named;

  // What takes memory.
  std::size_t size() const { return values.bytes.size() + (photo ? photo->size() : 0); }
};

// Throws std::runtime_error when a value does not fit its property.
PersonCard personCard(Card&& card, CategoriesAs categoriesAs);
// The card again, without its repairs.
Card cardOf(const PersonCard& person);

}  // namespace ox::vcard
