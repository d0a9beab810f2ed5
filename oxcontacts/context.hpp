#pragma once

#include <array>
#include <cstdint>
#include <stdexcept>
#include <string>

#include "oxcontacts/config.hpp"

namespace ox::program {

enum ExitCode : int {
  kDone = 0,
  kFailed = 1,
  kUsage = 2,
  kDoneWithRefusals = 3,
  kNotFound = 4,
  kBusy = 5,
  kInterrupted = 130,
};

struct ExitCodeMeaning {
  ExitCode code;
  const char* meaning;
};
inline constexpr std::array kExitCodes = {
    ExitCodeMeaning{kDone, "done"},
    ExitCodeMeaning{kFailed, "failed"},
    ExitCodeMeaning{kUsage, "usage (an ambiguous name too)"},
    ExitCodeMeaning{kDoneWithRefusals, "done with refusals or conflicts"},
    ExitCodeMeaning{kNotFound, "not found"},
    ExitCodeMeaning{kBusy, "busy (try later)"},
    ExitCodeMeaning{kInterrupted, "interrupted"},
};

// What every command understands of its arguments, for the help.
inline constexpr const char* kMeaningOfArguments =
    "Data goes to standard output, everything else to standard error.\n"
    "ACCOUNT is a container's identifier, its standard id or its name; BOOK a book's ID or name;\n"
    "PERSON and GROUP an ID or its beginning, or a name in whole or part, also as BOOK/NAME.\n"
    "Of several that may be meant a terminal asks, else they are listed.\n";

// How --book and the configuration name all books.
inline constexpr const char* kAllBooks = "*";

// Ends a command with that exit code; the text is for the user.
class CommandError : public std::runtime_error {
 public:
  CommandError(ExitCode code, const std::string& what) : std::runtime_error(what), code_(code) {}
  ExitCode code() const { return code_; }

 private:
  ExitCode code_;
};

enum class When : std::uint8_t { Auto, Always, Never };

// What the global options say; one for the run, passed to every command.
struct Context {
  std::string store;
  std::string configFile;  // empty: where it usually is
  Config config;
  std::string book;  // where PERSON and GROUP are looked for; empty: in all
  bool json = false;
  bool quiet = false;
  When color = When::Auto;
  When progress = When::Auto;

  // A line for the user on the error stream, with the program's name in front; silent with --quiet.
  void tell(const std::string& message) const;
  // The same for what must not be missed.
  static void complain(const std::string& message);
  // The configured book; empty where none is, or all of them are ("*").
  std::string configuredBook() const;
  // Whether somebody is there to answer a question.
  static bool canAsk();
  bool usesColor() const;
  bool showsProgress() const;
};

}  // namespace ox::program
