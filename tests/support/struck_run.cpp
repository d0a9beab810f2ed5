#include "tests/support/struck_run.hpp"

#include <filesystem>
#include <string_view>

#include "tests/support/memory_switch.hpp"
#include "tests/support/store_environment.hpp"

namespace ox::support {
namespace {

std::string assigned(const char* name, const std::string& value) {
  return name + ("=" + value);
}

const char* onOf(const Blow& blow) {
  return blow.strikes == Strikes::FromThereOn ? "on" : "";
}

// The variables that set up the switch that the blow is for.
std::vector<std::string> switchFor(const Blow& blow, const std::string& mark) {
  // A switch is loaded before the sanitizers, which stand aside for it, and let allocations fail.
  const std::string sanitizer = "ASAN_OPTIONS=verify_asan_link_order=0:allocator_may_return_null=1";
  if (std::string_view(blow.calls) == kAllocations) {
    return {"LD_PRELOAD=" OX_MEMORY_SWITCH, sanitizer,
            assigned(memory_switch::kAt, std::to_string(blow.at)),
            assigned(memory_switch::kOn, onOf(blow)), assigned(memory_switch::kMark, mark)};
  }
  return {"LD_PRELOAD=" OX_CALL_SWITCH,
          sanitizer,
          assigned(call_switch::kFolder, StoreEnvironment::instance().folder().string()),
          assigned(call_switch::kCalls, blow.calls),
          assigned(call_switch::kFault, blow.fault),
          assigned(call_switch::kAt, std::to_string(blow.at)),
          assigned(call_switch::kOn, onOf(blow)),
          assigned(call_switch::kMark, mark)};
}

ProcessResult runWithDescriptors(const std::vector<std::string>& command, int count) {
  std::vector<std::string> limited{"/bin/sh", "-c",
                                   "ulimit -n " + std::to_string(count) + "; exec \"$@\"", "sh"};
  limited.insert(limited.end(), command.begin(), command.end());
  return runProcess(limited);
}

// What the loader wants to bring a program to its start.
int descriptorsToStart(const std::string& program) {
  int count = 3;
  while (runWithDescriptors({program, "--help"}, count).exitCode != 0) ++count;
  return count;
}

StruckRun runWithFewDescriptors(const std::vector<std::string>& command, int more) {
  static const int fewest = descriptorsToStart(command[0]);
  auto result = runWithDescriptors(command, fewest + more);
  const bool hasFailed = result.exitCode != 0;
  return {std::move(result), hasFailed};
}

}  // namespace

StruckRun runStruck(const std::vector<std::string>& command, const Blow& blow) {
  if (std::string_view(blow.calls) == kDescriptors)
    return runWithFewDescriptors(command, blow.at - 1);
  const auto mark = (StoreEnvironment::instance().folder() / "home" / "struck").string();
  std::filesystem::remove(mark);
  auto result = runProcess(command, "", switchFor(blow, mark));
  return {std::move(result), std::filesystem::exists(mark)};
}

ProcessResult runLogged(const std::vector<std::string>& command, const std::string& log) {
  auto variables = switchFor({call_switch::kChanges, call_switch::kNone, 0}, "");
  variables.push_back(assigned(call_switch::kLog, log));
  return runProcess(command, "", variables);
}

}  // namespace ox::support
