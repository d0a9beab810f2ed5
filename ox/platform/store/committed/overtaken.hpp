#pragma once

#include "ox/base/failure.hpp"
#include "ox/base/record_key.hpp"
#include "ox/records/property_bag.hpp"

namespace ox {

// Tells that a save has won over what others had made of an entry of the record (see mergedValue),
// or of the one value of a property.
Failure overtaken(const RecordKey& record, PropertyId property, const MultiEntry& theirs);

}  // namespace ox
