#include "oxcontacts/commands/sync/wire.hpp"

#include <iostream>

#include "oxcontacts/interruption.hpp"
#include "oxcontacts/output/terminal_text.hpp"

namespace ox::program {

void ProgressLine::show(const std::string& text) {
  if (!shown_ || text == last_) return;
  last_ = text;
  std::cerr << "\r\x1b[K" << terminalText(text) << std::flush;
}

void ProgressLine::wipe() {
  if (last_.empty()) return;
  last_.clear();
  std::cerr << "\r\x1b[K" << std::flush;
}

sync::WireHooks hooksOf(const Context& context, bool isVerbose, ProgressLine& line) {
  sync::WireHooks hooks;
  hooks.isStopped = [&stop = firstInterruption()] { return stop.load(); };
  hooks.waiting = [&context, &line](std::string_view what) {
    const auto text = "waiting for " + std::string(what);
    if (line.isShown()) {
      line.show(text);
    } else {
      context.tell(text);
    }
  };
  if (isVerbose) {
    hooks.trace = [&context, &line](std::string_view request) {
      line.wipe();
      context.tell(std::string(request));
    };
  }
  return hooks;
}

CommandError commandErrorOf(const sync::RemoteError& error) {
  using Kind = sync::RemoteFailure;
  switch (error.kind()) {
    case Kind::Usage:
      return {kUsage, error.what()};
    case Kind::TryLater:
    case Kind::Unreachable:
      return {kBusy, error.what()};
    case Kind::Stopped:
      return {kInterrupted, "interrupted"};
    default:
      return {kFailed, error.what()};
  }
}

bool agrees(const std::string& question) {
  if (!Context::canAsk()) return false;
  std::cerr << terminalText(question) << " [y/N] " << std::flush;
  std::string answer;
  std::getline(std::cin, answer);
  return answer == "y" || answer == "Y" || answer == "yes";
}

}  // namespace ox::program
