#pragma once

#include <optional>
#include <string>
#include <vector>

#include "ox/base/object.hpp"

namespace ox {

// Tags as a value holds them: an array of texts. A missing object when there are none.
Object tagListObject(const std::vector<std::string>& tags);

// Missing when the object is no array; elements that are no texts are left out.
std::optional<std::vector<std::string>> tagsOfObject(const Object& object);

}  // namespace ox
