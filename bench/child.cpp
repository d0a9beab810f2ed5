#include "bench/child.hpp"

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <stdexcept>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>

namespace ox::bench {
namespace {

[[noreturn]] void becomeChild(const std::string& store, const std::vector<std::string>& arguments,
                              int output) {
  ::dup2(output, STDOUT_FILENO);
  ::setenv("OX_CONTACT_STORE", store.c_str(), 1);
  std::vector<std::string> texts = {"bench", "--child"};
  texts.insert(texts.end(), arguments.begin(), arguments.end());
  std::vector<char*> pointers;
  pointers.reserve(texts.size() + 1);
  for (auto& text : texts) pointers.push_back(text.data());
  pointers.push_back(nullptr);
  ::execv("/proc/self/exe", pointers.data());
  ::_exit(127);
}

}  // namespace

Numbers runChild(const std::string& store, const std::vector<std::string>& arguments) {
  int ends[2];
  if (::pipe(ends) != 0) throw std::runtime_error("no pipe");
  const auto child = ::fork();
  if (child < 0) throw std::runtime_error("no process");
  if (child == 0) becomeChild(store, arguments, ends[1]);
  ::close(ends[1]);
  Numbers numbers;
  auto* const lines = ::fdopen(ends[0], "r");
  char name[64];
  for (double value = 0; std::fscanf(lines, "%63s %lf", name, &value) == 2;) numbers[name] = value;
  std::fclose(lines);
  int status = 0;
  ::waitpid(child, &status, 0);
  if (status != 0 || !numbers.contains("seconds")) throw std::runtime_error("a child failed");
  return numbers;
}

void tellParent(const char* name, double value) {
  std::printf("%s %.17g\n", name, value);
}

void tellSeconds(double seconds) {
  const auto allocations = allocationsCounted();
  tellParent("seconds", seconds);
  tellParent("allocations", static_cast<double>(allocations));
  tellParent("memory", peakMemory());
}

Measured measuredBy(const Numbers& numbers, std::string note) {
  return {numbers.at("seconds"), std::move(note), numbers.at("allocations"), numbers.at("memory")};
}

double peakMemory() {
  // Not getrusage: that counts what the process was before it became this program.
  std::ifstream status("/proc/self/status");
  for (std::string line; std::getline(status, line);) {
    if (line.starts_with("VmHWM:")) return std::strtod(line.c_str() + 6, nullptr) * 1024;
  }
  return 0;
}

}  // namespace ox::bench
