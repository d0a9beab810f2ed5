#include "oxcontacts/context.hpp"

#include <cstdlib>
#include <iostream>
#include <string_view>
#include <unistd.h>

#include "oxcontacts/output/terminal_text.hpp"

namespace ox::program {
namespace {

bool isSet(const char* variable) {
  const auto* value = std::getenv(variable);
  return value != nullptr && *value != '\0';
}

}  // namespace

void Context::tell(const std::string& message) const {
  if (!quiet) complain(message);
}

void Context::complain(const std::string& message) {
  std::cerr << "oxcontacts: " << terminalText(message) << '\n';
}

std::string Context::configuredBook() const {
  auto configured = config.textOf("book");
  return configured == kAllBooks ? std::string() : configured;
}

bool Context::canAsk() {
  return ::isatty(STDIN_FILENO) != 0 && ::isatty(STDERR_FILENO) != 0;
}

bool Context::usesColor() const {
  if (color != When::Auto) return color == When::Always;
  const auto* terminal = std::getenv("TERM");
  const bool dumb = terminal != nullptr && std::string_view(terminal) == "dumb";
  return ::isatty(STDOUT_FILENO) != 0 && !isSet("NO_COLOR") && !dumb;
}

bool Context::showsProgress() const {
  if (progress != When::Auto) return progress == When::Always;
  return !quiet && ::isatty(STDERR_FILENO) != 0;
}

}  // namespace ox::program
