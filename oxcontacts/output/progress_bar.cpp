#include "oxcontacts/output/progress_bar.hpp"

#include <algorithm>
#include <iostream>

#include "oxcontacts/output/terminal_text.hpp"

namespace ox::program {

ProgressBar::ProgressBar(const Context& context, std::string title)
    : shown_(context.showsProgress()), title_(terminalText(title)) {}

ProgressBar::~ProgressBar() {
  wipe();
}

void ProgressBar::show(double percent) {
  constexpr int kCells = 40;
  const int whole = static_cast<int>(std::clamp(percent, 0.0, 100.0));
  if (!shown_ || whole == lastPercent_) return;
  lastPercent_ = whole;
  const int filled = whole * kCells / 100;
  std::string line = "\r" + title_ + " [";
  line.append(static_cast<std::size_t>(filled), '#');
  line.append(static_cast<std::size_t>(kCells - filled), '.');
  std::cerr << line << "] " << whole << " % " << std::flush;
}

void ProgressBar::wipe() {
  if (lastPercent_ < 0) return;
  lastPercent_ = -1;
  std::cerr << "\r\x1b[K" << std::flush;
}

ProgressCallback ProgressBar::callback() {
  return [this](double percent, bool) { show(percent); };
}

}  // namespace ox::program
