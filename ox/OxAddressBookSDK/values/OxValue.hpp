#pragma once

#include <cstdint>
#include <memory>

#include "ox/OxAddressBookSDK/properties/value_types.hpp"
#include "ox/base/export.hpp"
#include "ox/base/object.hpp"

namespace ox {

class OxValue;
using OxValuePtr = std::shared_ptr<OxValue>;

// What a property of a person holds: an OxMutableMultipleValue when type() is kMultiple, else an
// OxMutableSingleValue. Free-standing: a person takes what a value holds when it is set, and not
// the value itself. What a person answers may be its own live value, see IOxPerson. One thread at a
// time. Compared by content.
class OX_EXPORT OxValue : public HostObject {
 public:
  // A code of value_type.
  virtual std::int32_t type() const = 0;

  // A new value with labels and elements of its own; the inner objects are shared.
  virtual OxValuePtr copy() const = 0;
};

}  // namespace ox
