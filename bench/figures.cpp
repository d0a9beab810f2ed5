#include "bench/figures.hpp"

#include <algorithm>
#include <benchmark/benchmark.h>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <memory>
#include <stdexcept>

#include "bench/machine.hpp"

namespace ox::bench {
namespace {

constexpr const char* kRepetitions = "--benchmark_repetitions=5";
constexpr const char* kOnce = "--benchmark_repetitions=1";
// A machine that is busy for a while then slows down every way alike.
constexpr const char* kByTurns = "--benchmark_enable_random_interleaving=true";

double medianOf(std::vector<double> values) {
  std::sort(values.begin(), values.end());
  const auto middle = values.size() / 2;
  return values.size() % 2 == 1 ? values[middle] : (values[middle - 1] + values[middle]) / 2;
}

// One figure at one size, in the order of registration.
struct Row {
  struct Cell {
    std::string way;
    std::vector<double> seconds;
    Measured last;
  };

  std::string figure;
  std::size_t size = 0;
  std::vector<Cell> cells;  // the last is the floor
};

// Filled by the runs, printed at the end.
std::vector<std::unique_ptr<Row>>& rows() {
  static auto& rows = *new std::vector<std::unique_ptr<Row>>;
  return rows;
}

// Every way is tried on a few items, in any build.
bool isSmoke() {
  return std::getenv("OX_BENCH_SMOKE") != nullptr;
}

// For scripts/bench.
void append(const Row& row, std::FILE* file) {
  const auto& floor = row.cells.back();
  if (floor.seconds.empty()) return;
  for (const auto& cell : row.cells) {
    if (cell.seconds.empty()) continue;
    std::fprintf(file, "%s\t%zu\t%s\t%s\t%.9g\t%.9g\t%.0f\t%.0f\n", row.figure.c_str(), row.size,
                 cell.way.c_str(), &cell == &floor ? "" : floor.way.c_str(), medianOf(cell.seconds),
                 medianOf(floor.seconds), cell.last.allocations, cell.last.memory);
  }
}

void appendAll() {
  const char* path = std::getenv("OX_BENCH_ROWS");
  if (path == nullptr) return;
  std::FILE* const file = std::fopen(path, "a");
  if (file == nullptr) throw std::runtime_error(std::string(path) + ": cannot be written");
  for (const auto& row : rows()) append(*row, file);
  if (std::fclose(file) != 0) throw std::runtime_error(std::string(path) + ": cannot be written");
}

void print(const Row& row) {
  const auto& floor = row.cells.back().seconds;
  for (const auto& cell : row.cells) {
    if (cell.seconds.empty()) continue;
    const auto seconds = medianOf(cell.seconds);
    const auto perItem = seconds / static_cast<double>(row.size);
    const bool first = &cell == &row.cells.front();
    std::printf("%-28s %9s  %-26s %11.3f ms %11.1f ns %13.0f/s", first ? row.figure.c_str() : "",
                first ? std::to_string(row.size).c_str() : "", cell.way.c_str(), seconds * 1e3,
                perItem * 1e9, 1 / perItem);
    if (&cell == &row.cells.back()) {
      std::printf("    floor");
    } else if (!floor.empty()) {
      std::printf(" %8.3g", seconds / medianOf(floor));
    }
    std::printf("  %s\n", cell.last.note.c_str());
  }
}

class Table : public benchmark::BenchmarkReporter {
 public:
  bool ReportContext(const Context&) override {
    printMachine();
    std::printf("\n%-28s %9s  %-26s %14s %14s %15s %8s\n", "figure", "size", "way", "median",
                "an item", "items", "x floor");
    return true;
  }

  void ReportRuns(const std::vector<Run>& runs) override {
    for (const auto& run : runs) {
      if (!run.error_occurred) continue;
      std::fprintf(stderr, "%s: %s\n", run.benchmark_name().c_str(), run.error_message.c_str());
      failed_ = true;
    }
  }

  void Finalize() override {
    if (isSmoke()) {
      std::printf("every way was tried once, for no figures\n");
    } else {
      for (const auto& row : rows()) print(*row);
    }
    appendAll();
  }

  bool failed() const { return failed_; }

 private:
  bool failed_ = false;
};

void runOnce(benchmark::State& state, Row& row, std::size_t index, const Work& work) {
  for (auto iteration : state) {
    static_cast<void>(iteration);
    try {
      auto measured = work(row.size);
      state.SetIterationTime(measured.seconds);
      if (measured.allocations == 0) {
        measured.allocations = static_cast<double>(allocationsCounted());
      }
      row.cells[index].seconds.push_back(measured.seconds);
      row.cells[index].last = std::move(measured);
    } catch (const std::exception& error) {
      state.SkipWithError(error.what());
      return;
    }
  }
}

}  // namespace

std::vector<std::size_t> sizes() {
  const char* asked = std::getenv("OX_BENCH_SIZES");
  if (asked == nullptr || *asked == '\0') {
    return isSmoke() ? std::vector<std::size_t>{20}
                     : std::vector<std::size_t>{1'000, 10'000, 100'000};
  }
  std::vector<std::size_t> list;
  for (char* next = nullptr; *asked != '\0'; asked = *next == ',' ? next + 1 : next) {
    const auto size = std::strtoull(asked, &next, 10);
    if (next == asked || size == 0)
      throw std::invalid_argument("OX_BENCH_SIZES: a list of numbers");
    list.push_back(size);
  }
  return list;
}

void addFigure(const std::string& name, std::vector<Way> ways,
               const std::vector<std::size_t>& ofSizes) {
  for (const auto size : ofSizes) {
    auto& row = *rows().emplace_back(std::make_unique<Row>());
    row.figure = name;
    row.size = size;
    for (const auto& way : ways) row.cells.push_back({way.name, {}, {}});
    for (std::size_t i = 0; i < ways.size(); ++i) {
      const auto title = name + "/" + ways[i].name + "/" + std::to_string(size);
      benchmark::RegisterBenchmark(
          title.c_str(),
          [&row, i, work = ways[i].work](auto& state) { runOnce(state, row, i, work); })
          ->UseManualTime()
          ->Iterations(1);
    }
  }
}

int runFigures(int argc, char** argv, const std::function<void()>& add) {
  if (!isOptimised() && !isSmoke()) {
    std::fprintf(stderr, "not an optimised build: no figures\n");
    return 1;
  }
  std::vector<std::string> defaults = {argv[0], isSmoke() ? kOnce : kRepetitions, kByTurns};
  std::vector<char*> arguments;
  arguments.reserve(defaults.size() + static_cast<std::size_t>(argc));
  for (auto& text : defaults) arguments.push_back(text.data());
  arguments.insert(arguments.end(), argv + 1, argv + argc);
  auto count = static_cast<int>(arguments.size());
  benchmark::Initialize(&count, arguments.data());
  if (benchmark::ReportUnrecognizedArguments(count, arguments.data())) return 2;
  add();
  Table table;
  benchmark::RunSpecifiedBenchmarks(&table);
  return table.failed() ? 1 : 0;
}

void keep(std::size_t value) {
  benchmark::DoNotOptimize(value);
}

}  // namespace ox::bench
