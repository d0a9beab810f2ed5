#pragma once

#include <atomic>
#include <csignal>
#include <cstddef>
#include <string>

namespace ox::program {

// A file that goes when Ctrl-C, a hang-up, a request to end or the end of whoever reads the output
// ends the program, as long as this lives; declared before the owner of the file, so that it
// outlives the file. At most eight at once; any further one stays.
class GoesWhenInterrupted {
 public:
  explicit GoesWhenInterrupted(std::string path);
  GoesWhenInterrupted(const GoesWhenInterrupted&) = delete;
  GoesWhenInterrupted& operator=(const GoesWhenInterrupted&) = delete;
  ~GoesWhenInterrupted();

 private:
  std::string path_;
  std::size_t slot_ = 0;
};

// While this lives this thread takes no signal that ends the program: for between the making of a
// file and its guard. Such a signal waits.
class SignalsHeld {
 public:
  SignalsHeld();
  SignalsHeld(const SignalsHeld&) = delete;
  SignalsHeld& operator=(const SignalsHeld&) = delete;
  ~SignalsHeld();

 private:
  sigset_t before_;
};

// From now on the first Ctrl-C sets this instead of ending the program.
const std::atomic<bool>& firstInterruption();

}  // namespace ox::program
