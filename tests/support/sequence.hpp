#pragma once

#include <mutex>
#include <string>

#include "ox/base/callbacks.hpp"

namespace ox::support {

// The shortest text that reads back as exactly this number.
std::string shortest(double number);

// Records the reports of a progress callback as text, finished ones marked: "20 40 60 80 100 100!".
// Outlives the callbacks it gives out; safe from any thread.
class Sequence {
 public:
  ProgressCallback callback();
  std::string text() const;
  void clear();

 private:
  mutable std::mutex lock_;
  std::string text_;
};

}  // namespace ox::support
