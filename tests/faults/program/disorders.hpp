#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

#include "tests/support/struck_run.hpp"

namespace ox::faults {

// A way in which calls of a command go wrong, at one place after another.
struct Disorder {
  const char* name;
  const char* calls;
  const char* fault;
  support::Strikes strikes;
  // How long a step between two places is at least; 0 where there are so few that each is tried.
  int spacing = 1;

  // Halves of transfers are no failure: whoever makes them goes on with the other half.
  bool mustBeBorne() const;
};

// All that can go wrong.
const std::vector<Disorder>& allDisorders();

// What is tried of all there is. The environment asks for more (OX_FAULT_STEP, OX_FAULT_ONLY);
// usually it is a sample, always the same one.
class Sample {
 public:
  // How many places a step between two tries is long; the usual one where nothing else is wanted.
  static int stepOr(int usual);
  // Whether everything is tried, at whatever places.
  static bool isWhole();

  // Takes one in that many of what it is asked about, or all of a command or of a
  // disorder that the environment names.
  explicit Sample(std::size_t oneIn) : oneIn_(oneIn) {}
  bool takes(const std::string& command, const Disorder& disorder);

 private:
  std::size_t oneIn_;
  std::size_t asked_ = 0;
};

// Tries the command at every so many places until it ends without being struck; `look` is called
// after each run. Prints how often it was struck and how the runs ended. The result is how often.
int tryEverywhere(const std::string& title, const Disorder& disorder, int step,
                  const std::function<support::StruckRun(const support::Blow&)>& run,
                  const std::function<void(const support::StruckRun&)>& look);

}  // namespace ox::faults
