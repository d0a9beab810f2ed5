#pragma once

#include <vector>

#include "ox/sync/logins.hpp"
#include "oxcontacts/context.hpp"
#include "oxcontacts/output/json.hpp"

namespace ox::program {

// What a container is in step with, as lists of accounts have it.
Json syncJson(const sync::KnownBook& book);

// sync --status: a line a book, and the runs of late that did something or failed.
void printStatus(const Context& context, const std::vector<sync::KnownBook>& books);

}  // namespace ox::program
