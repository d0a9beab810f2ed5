#include "ox/sync/run/run_rows.hpp"

#include <algorithm>
#include <array>
#include <sstream>
#include <utility>

#include "ox/base/clock.hpp"
#include "ox/platform/store/contact_source.hpp"

namespace ox::sync {
namespace {

// The numbers of a run, in the order in which its row tells them. One that an older row lacks is 0.
template <typename Run>
auto numbersOf(Run& run) {
  return std::array{&run.down.added, &run.down.changed, &run.down.deleted, &run.down.broughtBack,
                    &run.up.added,   &run.up.changed,   &run.up.deleted,   &run.up.broughtBack,
                    &run.conflicts,  &run.refused};
}

}  // namespace

SyncRun rowOfRun(const std::string& container, KnownRun run) {
  std::string counts;
  for (const auto* number : numbersOf(run)) counts += std::to_string(*number) + " ";
  counts.pop_back();
  return {container, run.start, run.end, std::move(counts), std::move(run.failure)};
}

KnownRun runOfRow(const SyncRun& row) {
  KnownRun run;
  run.start = row.start;
  run.end = row.end;
  run.failure = row.outcome;
  std::istringstream counts(row.counts);
  for (auto* number : numbersOf(run)) {
    if (!(counts >> *number)) *number = 0;
  }
  return run;
}

std::string lastFailureOf(const SyncBook& book) {
  const auto runs = syncSource().syncRuns(book.container, 1);
  const bool isLast = !runs.empty() && runs.front().end > book.lastSuccess;
  return isLast ? runs.front().outcome : std::string();
}

void noteFailedRun(const BookReport& report, std::int64_t start) {
  for (const auto& book : syncSource().syncBooks()) {
    if (book.container != report.container || lastFailureOf(book) == report.failure) continue;
    KnownRun run;
    run.start = start;
    run.end = millisecondsNow();
    run.failure = report.failure;
    SaveRequest request;
    request.sync.runs.push_back(rowOfRun(report.container, std::move(run)));
    containerSource().execute(request);
  }
}

std::vector<KnownRun> lastRuns(const std::string& container, std::size_t atMost) {
  std::vector<KnownRun> runs;
  for (const auto& row : syncSource().syncRuns(container, atMost)) runs.push_back(runOfRow(row));
  return runs;
}

}  // namespace ox::sync
