#pragma once

#include <map>
#include <nlohmann/json.hpp>
#include <string>
#include <sys/types.h>
#include <vector>

#include "tests/support/second_process.hpp"

// The program as its users see it: a real process on the test's own store.

namespace ox::program_tests {

using Json = nlohmann::ordered_json;
using support::ProcessResult;

std::vector<std::string> programCommand(const std::vector<std::string>& arguments);
ProcessResult run(const std::vector<std::string>& arguments);
// What the program printed with --json; a text naming exit code and error when it failed.
Json runJson(std::vector<std::string> arguments);
// Runs it through the shell, for redirections; `$OX` is the program.
ProcessResult runShell(const std::string& script);

// Makes the store, which commands that only read do not do; nobody is in it.
void makeStore(const std::string& path = {});

// Waits until the process is in one of these system calls; false when it does not get there.
bool waitsIn(pid_t process, const std::vector<long>& calls);

// IDs of the persons, by display name.
std::map<std::string, std::string> personIds();

// A vCard 3.0 of these lines, between BEGIN, VERSION and END.
std::string card(const std::vector<std::string>& lines);
// "cards 3, added 2, ..." of an import's JSON, the zeros left out.
std::string countsOf(const Json& report);

}  // namespace ox::program_tests
