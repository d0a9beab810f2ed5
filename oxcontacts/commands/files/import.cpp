// import: vCards, tables and LDIF into an account.
#include <algorithm>
#include <filesystem>
#include <iostream>
#include <optional>

#include "ox/base/store_location.hpp"
#include "ox/transfer/importer.hpp"
#include "oxcontacts/commands/commands.hpp"
#include "oxcontacts/commands/files/import_formats.hpp"
#include "oxcontacts/files.hpp"
#include "oxcontacts/find.hpp"
#include "oxcontacts/output/counted.hpp"
#include "oxcontacts/output/json.hpp"
#include "oxcontacts/output/progress_bar.hpp"
#include "oxcontacts/output/report_file.hpp"
#include "oxcontacts/output/terminal_text.hpp"

namespace ox::program {
namespace {

constexpr std::size_t kProblemsShown = 50;

struct Arguments {
  std::vector<std::string> files;
  std::string into = "_local";
  std::string reportFile;
  bool isDryRun = false;
  std::string categories = "tags";
  bool listsColumns = false;
  vcard::ImportOptions options;
};

Json skippedJson(const vcard::ImportReport& report) {
  Json skipped = Json::array();
  for (const auto& card : report.skippedCards) {
    skipped.push_back({{"file", report.files[card.file]},
                       {"line", card.line},
                       {"reason", card.differs ? "differs from the person with the same UID"
                                               : "is there already"}});
  }
  return skipped;
}

Json reportJson(const vcard::ImportReport& report) {
  Json problems = Json::array();
  for (const auto& problem : report.problems) {
    problems.push_back(
        {{"file", problem.file}, {"line", problem.line}, {"reason", problem.reason}});
  }
  return {{"cards", report.cards},
          {"added", report.added},
          {"updated", report.updated},
          {"skipped", report.skipped},
          {"repaired", report.repaired},
          {"refused", report.refused},
          {"groups", report.groups},
          {"categoryGroups", report.categoryGroups},
          {"strayLines", report.strayLines},
          {"problems", std::move(problems)},
          {"skippedCards", skippedJson(report)}};
}

bool isSameFile(const std::string& one, const std::string& other) {
  std::error_code error;
  return placeOf(one) == placeOf(other) || std::filesystem::equivalent(one, other, error);
}

// Never one of the files that are read.
std::optional<OutputFile> reportFileFor(const Arguments& arguments) {
  const auto& path = arguments.reportFile;
  for (const auto& input : arguments.files) {
    if (!path.empty() && isSameFile(input, path)) {
      throw CommandError(kFailed, path + ": is to be imported");
    }
  }
  return reportFileAt(path);
}

// Files with which nothing could be done come at the end, where nobody misses them.
void showProblems(const Context& context, const vcard::ImportReport& report) {
  std::size_t shown = 0;
  for (const auto& problem : report.problems) {
    if (problem.line == 0) continue;
    if (shown == kProblemsShown) break;
    context.tell(problem.file + ":" + std::to_string(problem.line) + ": " + problem.reason);
    ++shown;
  }
  const auto rest = report.problemCount - report.uselessFiles.size() - shown;
  if (rest > 0) {
    context.tell("and " + std::to_string(rest) + " more (--report FILE lists them)");
  }
}

std::string strayText(const vcard::ImportReport& report) {
  if (report.strayLines == 0) return {};
  return "; " + counted(report.strayLines, "line") + " outside of cards";
}

std::string summary(const vcard::ImportReport& report) {
  const auto count = [](std::uint64_t number, const char* what) {
    return std::to_string(number) + " " + what;
  };
  return count(report.cards, report.cards == 1 ? "card: " : "cards: ") +
         count(report.added, "added, ") + count(report.updated, "updated, ") +
         count(report.skipped, "skipped, ") + count(report.refused, "refused, ") +
         count(report.groups, report.groups == 1 ? "group; " : "groups; ") +
         count(report.repaired, "repaired") + strayText(report);
}

std::string previewSummary(const vcard::ImportReport& report) {
  return counted(report.cards, "card") + ": " + counted(report.added, "person") + ", " +
         counted(report.groups, "group") + ", " + std::to_string(report.refused) + " refused; " +
         std::to_string(report.repaired) + " repaired" + strayText(report) +
         "; nothing was written";
}

// Throws unless everything went well.
void endWith(const vcard::ImportReport& report, bool reportWritten) {
  for (const auto& useless : report.uselessFiles) Context::complain(useless);
  if (report.failureKind == StoreError::Kind::Busy) throw CommandError(kBusy, report.failure);
  if (!report.failure.empty()) throw CommandError(kFailed, report.failure);
  if (report.interrupted) throw CommandError(kInterrupted, "interrupted; what is counted is kept");
  if (report.filesRead == 0 || !reportWritten) throw CommandError(kFailed, "");
  if (report.refused > 0 || report.strayLines > 0 || !report.uselessFiles.empty()) {
    throw CommandError(kDoneWithRefusals, "");
  }
}

// Groups come into any account, so that an export holds them; not every account's book shows them.
void tellOfHiddenGroups(const Context& context, const CNContainerPtr& account,
                        const vcard::ImportReport& report) {
  if (report.categoryGroups > 0) {
    context.tell("made " + counted(report.categoryGroups, "group") + " of categories");
  }
  const auto groups = report.groups + report.categoryGroups;
  if (groups == 0) return;
  const auto book = OxMacAddressBook::initWithContainer(account);
  if (book->canCreateGroup()) return;
  context.tell(account->name().value_or("") + " shows no groups: " +
               counted(groups, report.categoryGroups == 0 ? "group card" : "group") + " stay" +
               (groups == 1 ? "s" : "") + " out of sight");
}

// What would be read, a card a line; the store is asked nothing.
void previewCards(const Context& context, const Arguments& arguments) {
  auto reportFile = reportFileFor(arguments);
  auto options = arguments.options;
  Json names = Json::array();
  const bool listsNames = context.json || reportFile;
  options.stop = &firstInterruption();
  options.preview = [&](const vcard::PreviewedCard& card) {
    if (listsNames) {
      names.push_back({{"file", card.file},
                       {"line", card.line},
                       {"kind", card.isGroup ? "group" : "person"},
                       {"name", card.name},
                       {"charset", card.charset.empty() ? Json() : Json(card.charset)}});
    }
    if (context.json) return;
    const auto charset = card.charset.empty() ? std::string() : " (read as " + card.charset + ")";
    std::cout << terminalText(card.file + ":" + std::to_string(card.line) + ": " + card.name +
                              charset)
              << '\n';
  };
  const auto report = vcard::importFiles(arguments.files, {}, options);
  auto json = reportJson(report);
  json["names"] = std::move(names);
  const bool written = !reportFile || writeReport(*reportFile, json);
  showProblems(context, report);
  if (context.json) {
    printJson(json);
  } else {
    std::cout << previewSummary(report) << '\n';
  }
  endWith(report, written);
}

// Names that are mistyped shall not make a store of nobody.
void requireStoreOrFile(const std::vector<std::string>& files) {
  if (!isMissing(contactStore().file()) || !std::ranges::all_of(files, isMissing)) return;
  for (const auto& file : files) Context::complain(file + ": No such file or directory");
  throw CommandError(kFailed, "nothing was imported, and no store was made");
}

void importCards(const Context& context, Arguments arguments) {
  const auto& charset = arguments.options.charset;
  if (!charset.empty() && !vcard::isCharsetOfCards(charset)) {
    throw CommandError(kUsage, charset + ": no charset that text of cards may be in");
  }
  std::replace(arguments.files.begin(), arguments.files.end(), std::string("-"),
               std::string("/dev/stdin"));
  if (arguments.listsColumns) {
    return printColumns(context, arguments.files, arguments.options.format);
  }
  if (arguments.isDryRun) return previewCards(context, arguments);
  requireStoreOrFile(arguments.files);
  const auto account = findAccount(arguments.into);
  auto reportFile = reportFileFor(arguments);
  auto options = arguments.options;
  if (arguments.categories == "groups") options.categories = vcard::CategoriesAs::Groups;
  vcard::ImportReport report;
  {
    ProgressBar bar(context, "importing");
    options.stop = &firstInterruption();
    options.progress = [&](std::uint64_t done, std::uint64_t total) {
      if (total > 0) bar.show(100.0 * static_cast<double>(done) / static_cast<double>(total));
    };
    report = vcard::importFiles(arguments.files, account->identifier().value_or(""), options);
  }
  // First of all: whoever reads what is printed may stop reading, which ends the program.
  const bool written = !reportFile || writeReport(*reportFile, reportJson(report));
  showProblems(context, report);
  tellOfHiddenGroups(context, account, report);
  if (context.json) {
    printJson(reportJson(report));
  } else {
    std::cout << summary(report) << '\n';
  }
  endWith(report, written);
}

}  // namespace

void declareImport(CLI::App& program, const Context& context) {
  auto* command =
      program.add_subcommand("import", "Import vCards, tables (CSV) and LDIF into an account");
  const auto arguments = std::make_shared<Arguments>();
  command->add_option("FILE", arguments->files, "Files; - is standard input")->required();
  command->add_option("--into", arguments->into, "The account (else the local one)")
      ->type_name("ACCOUNT");
  declareFormat(*command, arguments->options.format);
  command->add_flag("--columns", arguments->listsColumns,
                    "Tell what becomes of the columns of tables, and import nothing");
  command->add_flag("--update", arguments->options.update,
                    "Replace what has the same UID and other content");
  command->add_flag("--strict", arguments->options.strict,
                    "Refuse cards that would have to be mended");
  command
      ->add_option("--charset", arguments->options.charset,
                   "Read text in it that names no charset (else UTF-8, or what it looks like)")
      ->type_name("NAME");
  command->add_flag("--dry-run", arguments->isDryRun,
                    "Show what would be read, and the charsets assumed; write nothing");
  command
      ->add_option("--categories", arguments->categories,
                   "Make tags of the persons' categories, or groups")
      ->type_name("tags|groups")
      ->check(CLI::IsMember({"tags", "groups"}).description(""));
  command->add_option("--report", arguments->reportFile, "Write the report there as JSON")
      ->type_name("FILE");
  command->callback([&context, arguments] { importCards(context, *arguments); });
}

}  // namespace ox::program
