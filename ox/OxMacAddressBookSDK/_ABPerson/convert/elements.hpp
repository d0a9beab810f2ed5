#pragma once

#include <cstdint>

#include "ox/base/object.hpp"

namespace ox::convert {

// One element of a multi-valued property by its type code: phones, e-mail addresses, postal
// addresses and instant-message accounts become value objects of the model and back, every other
// kind is the same object on both sides. Missing when the element is not of the kind that the code
// asks for.
Object elementFromStored(const Object& stored, std::int32_t type);

// Whether the element holds nothing, or an object of the kind that the code asks for.
bool fitsElementType(const Object& element, std::int32_t type);

// An empty string of type string is no element: missing.
Object storedFromElement(const Object& element, std::int32_t type);

}  // namespace ox::convert
