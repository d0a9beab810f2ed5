#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "bench/allocations.hpp"

// The frame of every benchmark: a figure is one piece of work done in several ways, the last of
// which is the floor that the others are compared with, all in one run and by turns.
namespace ox::bench {

struct Measured {
  double seconds = 0;
  // Anything else worth a column, already in words ("212 B/person"); of the last run.
  std::string note;
  double allocations = 0;  // 0: those of this process since the last stopwatch was started
  double memory = 0;       // in bytes, of a process that did nothing else; else 0
};

// Does the work once for that many items and tells how long it took; preparing is not counted.
// What it throws fails the benchmark.
using Work = std::function<Measured(std::size_t size)>;

struct Way {
  std::string name;
  Work work;
};

// 1,000, 10,000 and 100,000, unless $OX_BENCH_SIZES lists others ("1000000").
std::vector<std::size_t> sizes();

// Registers a figure; the last way is the floor.
void addFigure(const std::string& name, std::vector<Way> ways,
               const std::vector<std::size_t>& ofSizes = sizes());

// Prints the machine and the versions, runs what `add` registers (five times each, unless
// --benchmark_repetitions says otherwise) and prints the medians. Refuses to in a build that is not
// optimised, unless $OX_BENCH_SMOKE is set: then every work is done once, and no time is told. The
// rows are appended to the file $OX_BENCH_ROWS as well, if that is set: figure, size, way, its
// floor, the seconds of both, allocations and memory, between tabs. The result is the exit code.
int runFigures(int argc, char** argv, const std::function<void()>& add);

// Seconds since it was made; allocations are counted from there.
class Stopwatch {
 public:
  Stopwatch() { countAllocationsAnew(); }

  double seconds() const {
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start_).count();
  }

 private:
  std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
};

// Keeps the compiler from leaving out what made the value.
void keep(std::size_t value);

}  // namespace ox::bench
