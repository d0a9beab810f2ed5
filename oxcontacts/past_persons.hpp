#pragma once

#include <string>

#include "ox/base/record_key.hpp"
#include "oxcontacts/context.hpp"

namespace ox::program {

// Whom PERSON means where the past counts too: somebody who is there, by ID or display name, else
// somebody who was removed, by ID or by the name at that time. Throws a CommandError: kNotFound,
// kUsage when several bear that name.
RecordKey findPersonOfAnyTime(const Context& context, const std::string& text);

// How a record is called now, else when it was removed; its ID when it has no name.
std::string nameOfAnyTime(const RecordKey& key);

}  // namespace ox::program
