#pragma once

#include <string>

#include "ox/base/callbacks.hpp"
#include "oxcontacts/context.hpp"

namespace ox::program {

// A bar on the error stream, drawn when the percentage changes and wiped when this ends. Silent
// unless progress is shown.
class ProgressBar {
 public:
  ProgressBar(const Context& context, std::string title);
  ProgressBar(const ProgressBar&) = delete;
  ProgressBar& operator=(const ProgressBar&) = delete;
  ~ProgressBar();

  void show(double percent);
  // Wipes the bar; the next show draws it again.
  void wipe();
  // Borrows this object.
  ProgressCallback callback();

 private:
  bool shown_;
  std::string title_;
  int lastPercent_ = -1;
};

}  // namespace ox::program
