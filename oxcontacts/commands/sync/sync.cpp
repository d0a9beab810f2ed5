// sync: accounts in step with servers and folders.
#include <algorithm>
#include <optional>

#include "ox/sync/synchronise.hpp"
#include "oxcontacts/arguments.hpp"
#include "oxcontacts/commands/commands.hpp"
#include "oxcontacts/commands/sync/book_reports.hpp"
#include "oxcontacts/commands/sync/conflicts.hpp"
#include "oxcontacts/commands/sync/status.hpp"
#include "oxcontacts/commands/sync/wire.hpp"
#include "oxcontacts/find.hpp"
#include "oxcontacts/interruption.hpp"
#include "oxcontacts/output/report_file.hpp"

namespace ox::program {
namespace {

using sync::BookReport;

struct Arguments {
  std::vector<std::string> accounts;
  bool isDryRun = false;
  bool listsAll = false;
  bool onlyPushes = false;
  bool onlyPulls = false;
  bool allowsDeletions = false;
  bool setsBack = false;
  bool agrees = false;
  bool showsConflicts = false;
  bool showsStatus = false;
  bool isVerbose = false;
  std::vector<std::string> resolution;  // CARD, and mine or theirs
  std::string reportFile;
};

using Books = std::vector<sync::KnownBook>;

// A login of that name stands for all of its books, an account for its own.
Books booksNamed(const std::string& text, const Books& known) {
  Books found;
  std::ranges::copy_if(known, std::back_inserter(found),
                       [&](const sync::KnownBook& book) { return book.login == text; });
  if (!found.empty()) return found;
  const auto account = findAccount(text);
  const auto identifier = account->identifier().value_or("");
  std::ranges::copy_if(known, std::back_inserter(found),
                       [&](const sync::KnownBook& book) { return book.container == identifier; });
  if (!found.empty()) return found;
  throw CommandError(kUsage, account->name().value_or("") +
                                 " is in step with nothing; `oxcontacts accounts add NAME` with "
                                 "--url or --folder makes an account that is");
}

// Each once, all where none is named.
Books wantedBooks(const std::vector<std::string>& texts) {
  auto known = sync::knownBooks();
  if (texts.empty()) return known;
  Books wanted;
  for (const auto& text : texts) {
    for (auto& book : booksNamed(text, known)) {
      const bool isThere = std::ranges::any_of(
          wanted, [&](const sync::KnownBook& each) { return each.container == book.container; });
      if (!isThere) wanted.push_back(std::move(book));
    }
  }
  return wanted;
}

std::vector<std::string> containersOf(const Books& books) {
  std::vector<std::string> containers;
  for (const auto& book : books) containers.push_back(book.container);
  return containers;
}

std::string textOf(const sync::SyncProgress& progress) {
  using Step = sync::SyncProgress::Step;
  const auto counts = [&](const char* what) {
    auto text = std::string(what) + " " + std::to_string(progress.done);
    if (progress.all > 0) text += " of " + std::to_string(progress.all);
    return progress.account + ": " + text;
  };
  switch (progress.step) {
    case Step::Listing:
      return progress.account + ": listing";
    case Step::Fetching:
      return counts("fetched");
    case Step::Sending:
      return counts("sent");
    case Step::Writing:
      return progress.account + ": writing";
  }
  return {};
}

// Somebody who is there is asked; elsewhere only --yes agrees.
std::function<bool(const BookReport&)> confirmation(const Context& context,
                                                    const Arguments& arguments,
                                                    ProgressLine& line) {
  if (arguments.agrees) return [](const BookReport&) { return true; };
  if (context.json || !Context::canAsk()) return {};
  return [&context, &line](const BookReport& plan) {
    line.wipe();
    tellPlan(context, plan);
    return agrees(plan.account + " and " + plan.book +
                  " both hold contacts and have not met before: " + summaryOf(plan) + ". Do it?");
  };
}

std::vector<BookReport> run(const Context& context, const Arguments& arguments,
                            const Books& books) {
  ProgressLine line(context);
  sync::SyncOptions options;
  options.containers = containersOf(books);
  options.isDryRun = arguments.isDryRun;
  options.listsAll = arguments.listsAll;
  options.pulls = !arguments.onlyPushes;
  options.pushes = !arguments.onlyPulls;
  options.allowsDeletions = arguments.allowsDeletions;
  options.setsBack = arguments.setsBack;
  options.confirm = confirmation(context, arguments, line);
  options.progress = [&](const sync::SyncProgress& progress) { line.show(textOf(progress)); };
  options.hooks = hooksOf(context, arguments.isVerbose, line);
  return sync::synchronise(options);
}

void synchroniseBooks(const Context& context, const Arguments& arguments, const Books& books) {
  auto reportFile = reportFileAt(arguments.reportFile);
  std::vector<BookReport> reports;
  if (books.empty()) {
    context.tell(
        "no account is in step with anything; `oxcontacts accounts add NAME --url URL` or "
        "`--folder PATH` makes one that is");
  } else {
    reports = run(context, arguments, books);
  }
  const auto needsJson = context.json || reportFile;
  const auto json =
      needsJson ? reportsJson(reports, conflictsOf(containersOf(books))) : Json::array();
  // First of all: whoever reads what is printed may stop reading, which ends the program.
  const bool written = !reportFile || writeReport(*reportFile, json);
  for (const auto& report : reports) printBook(context, report);
  if (context.json) printJson(json);
  const auto code = exitCodeOf(reports);
  if (code != kInterrupted && !written) throw CommandError(kFailed, "");
  if (code != kDone) throw CommandError(code, "");
}

void sync(const Context& context, const Arguments& arguments) {
  const auto books = wantedBooks(arguments.accounts);
  const auto containers =
      arguments.accounts.empty() ? std::vector<std::string>() : containersOf(books);
  if (arguments.showsStatus) return printStatus(context, books);
  if (arguments.showsConflicts) return printConflicts(context, conflictsOf(containers));
  if (!arguments.resolution.empty()) {
    const auto& side = arguments.resolution.back();
    if (side != "mine" && side != "theirs") {
      throw CommandError(kUsage, "\"" + side + "\": what stays is mine or theirs");
    }
    return settle(context, conflictsOf(containers), arguments.resolution.front(), side);
  }
  try {
    synchroniseBooks(context, arguments, books);
  } catch (const sync::RemoteError& error) {
    throw commandErrorOf(error);
  }
}

// Looking and settling are no runs, and take nothing of what a run takes.
void requireOneTask(const CLI::App& command) {
  std::string task;
  for (const auto* name : {"--conflicts", "--resolve", "--status"}) {
    if (command.count(name) == 0) continue;
    if (!task.empty()) throw CommandError(kUsage, task + " excludes " + name);
    task = name;
  }
  for (const auto* name : {"--dry-run", "--full", "--push-only", "--pull-only", "--allow-deletions",
                           "--set-back", "--yes", "--report"}) {
    if (!task.empty() && command.count(name) > 0) {
      throw CommandError(kUsage, task + " runs nothing, so that " + name + " is of no use to it");
    }
  }
}

}  // namespace

void declareSync(CLI::App& program, const Context& context) {
  auto* command = program.add_subcommand("sync", "Bring accounts in step with servers and folders");
  const auto arguments = std::make_shared<Arguments>();
  command->add_option("ACCOUNT", arguments->accounts, "Which (else every one that is in step)");
  command->add_flag("--dry-run", arguments->isDryRun,
                    "Show what would be done; change nothing on either side");
  command->add_flag("--full", arguments->listsAll, "List everything, whatever was known before");
  auto* push = command->add_flag("--push-only", arguments->onlyPushes, "Change nothing here");
  command->add_flag("--pull-only", arguments->onlyPulls, "Change nothing there")->excludes(push);
  command->add_flag("--allow-deletions", arguments->allowsDeletions,
                    "Let it delete much, for once");
  command
      ->add_flag("--set-back", arguments->setsBack,
                 "In books that take no changes: what was changed here becomes what is there")
      ->excludes(push);
  command->add_flag("--yes", arguments->agrees,
                    "Ask nothing where two sides with contacts first meet");
  command->add_option("--report", arguments->reportFile, "Write the report there as JSON")
      ->type_name("FILE");
  command->add_flag("--conflicts", arguments->showsConflicts,
                    "List values of which both sides made another");
  command
      ->add_option("--resolve", arguments->resolution,
                   "Settle what --conflicts lists: of a person, or by its number")
      ->type_name("CARD mine|theirs")
      ->expected(2);
  command->add_flag("--status", arguments->showsStatus,
                    "Tell when each was last in step, and what failed last");
  command->add_flag("--verbose", arguments->isVerbose, "Tell of each request");
  command->callback([&context, command, arguments] {
    requireOneTask(*command);
    sync(context, *arguments);
  });
}

}  // namespace ox::program
