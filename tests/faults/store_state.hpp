#pragma once

#include <string>

#include "ox/platform/store/contact_source.hpp"

namespace ox::faults {

// Everything that the record view of a source shows, as text: containers, records with the
// fingerprint of their values and pictures, links; and what it keeps of accounts in step with
// others. Equal texts mean equal contents.
std::string stateOf(ContactSource& source);
// The same of what is committed to the store at that path, as a new process would see it.
std::string committedState(const std::string& path);

// Every problem of the store at that path, one a line; empty when it is sound.
std::string problemsOf(const std::string& path);

}  // namespace ox::faults
