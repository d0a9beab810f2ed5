#pragma once

#include <string>
#include <string_view>

#include "ox/sync/login_settings.hpp"
#include "ox/sync/remote/remote_error.hpp"
#include "oxcontacts/context.hpp"

namespace ox::program {

// A line on the error stream that says what is going on, drawn over and over and wiped when this
// ends. Silent unless progress is shown.
class ProgressLine {
 public:
  explicit ProgressLine(const Context& context) : shown_(context.showsProgress()) {}
  ProgressLine(const ProgressLine&) = delete;
  ProgressLine& operator=(const ProgressLine&) = delete;
  ~ProgressLine() { wipe(); }

  bool isShown() const { return shown_; }
  void show(const std::string& text);
  void wipe();

 private:
  bool shown_;
  std::string last_;
};

// Ctrl-C ends the work, what is waited for is told, and with --verbose each request. Borrows both.
sync::WireHooks hooksOf(const Context& context, bool isVerbose, ProgressLine& line);

// For the user, with the exit code that its kind has.
CommandError commandErrorOf(const sync::RemoteError& error);

// Whoever has a terminal answers; nobody does where there is none.
bool agrees(const std::string& question);

}  // namespace ox::program
