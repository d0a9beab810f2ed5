// Runs a command several times and prints the median wall time and the most memory it held:
// bench_measure RUNS COMMAND [ARGUMENT...]. The command's output is thrown away. With --machine
// alone it tells what it runs on.
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <string_view>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

#include "bench/figures.hpp"
#include "bench/machine.hpp"

namespace {

// Seconds; the peak memory in bytes goes to `peak`. Ends the program when the command fails.
double runOnce(char** command, double& peak) {
  const ox::bench::Stopwatch watch;
  const auto child = ::fork();
  if (child == 0) {
    ::dup2(::open("/dev/null", O_WRONLY | O_CLOEXEC), STDOUT_FILENO);
    ::execvp(command[0], command);
    ::_exit(127);
  }
  int status = 0;
  rusage usage{};
  ::wait4(child, &status, 0, &usage);
  const auto seconds = watch.seconds();
  if (status != 0) {
    std::fprintf(stderr, "%s: failed\n", command[0]);
    std::exit(1);
  }
  peak = std::max(peak, static_cast<double>(usage.ru_maxrss) * 1024);
  return seconds;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc == 2 && std::string_view(argv[1]) == "--machine") {
    ox::bench::printMachine();
    return 0;
  }
  if (argc < 3) {
    std::fprintf(stderr, "usage: %s RUNS COMMAND [ARGUMENT...]\n", argv[0]);
    return 2;
  }
  if (!ox::bench::isOptimised()) {
    std::fprintf(stderr, "not an optimised build: no figures\n");
    return 1;
  }
  std::vector<double> seconds(std::max(1UL, std::strtoul(argv[1], nullptr, 10)));
  double peak = 0;
  for (auto& time : seconds) time = runOnce(argv + 2, peak);
  std::sort(seconds.begin(), seconds.end());
  std::printf("%10.1f ms %8.1f MB\n", seconds[seconds.size() / 2] * 1e3, peak / 1e6);
  return 0;
}
