// oxcontacts: the contact store on the command line.
#include <CLI/CLI.hpp>
#include <cassert>
#include <csignal>
#include <cstdlib>
#include <exception>
#include <initializer_list>
#include <iostream>
#include <new>
#include <sstream>
#include <string_view>
#include <unistd.h>

#include "ox/OxMacAddressBookSDK/admin/accounts.hpp"
#include "ox/base/failures.hpp"
#include "ox/base/store_location.hpp"
#include "ox/platform/store/process_origin.hpp"
#include "ox/platform/store/values/store_error.hpp"
#include "oxcontacts/arguments.hpp"
#include "oxcontacts/commands/commands.hpp"
#include "oxcontacts/context.hpp"
#include "oxcontacts/edit/saving.hpp"
#include "oxcontacts/files.hpp"
#include "oxcontacts/output/terminal_text.hpp"

namespace ox::program {
namespace {

// What the help ends with.
std::string footer() {
  constexpr std::size_t kInFirstLine = 4;
  std::string text = kMeaningOfArguments + std::string("Exit codes: ");
  for (std::size_t i = 0; i < kExitCodes.size(); ++i) {
    if (i > 0) text += i == kInFirstLine ? ",\n" : ", ";
    text += std::to_string(kExitCodes[i].code) + " " + kExitCodes[i].meaning;
  }
  return text + ".";
}

When whenOf(const std::string& word) {
  return word == "always" ? When::Always : word == "never" ? When::Never : When::Auto;
}

void declareWhen(CLI::App& program, const char* option, const char* what, When& when) {
  const auto choose = [&when](const std::string& word) { when = whenOf(word); };
  program.add_option_function<std::string>(option, choose, what)
      ->check(CLI::IsMember({"auto", "always", "never"}))
      ->type_name("WHEN");
}

void declareGlobalOptions(CLI::App& program, Context& context) {
  program
      .add_option("--store", context.store,
                  "The contact store (else $OX_CONTACT_STORE, else the user's own)")
      ->type_name("PATH");
  program
      .add_option("--config", context.configFile,
                  "The configuration file (else $OX_CONTACTS_CONFIG, else the user's own)")
      ->type_name("FILE");
  program.add_option("--book", context.book, "PERSON and GROUP are looked for in this book alone")
      ->type_name("BOOK");
  program.add_flag("--json", context.json, "Print JSON");
  program.add_flag("--quiet", context.quiet, "Print data and errors only");
  declareWhen(program, "--color", "Colours: auto, always or never (NO_COLOR is honoured)",
              context.color);
  declareWhen(program, "--progress", "A progress bar: auto, always or never", context.progress);
}

// In the rooms that the help shows them in.
void declareCommands(CLI::App& program, const Context& context) {
  using Declare = void (*)(CLI::App&, const Context&);
  const auto room = [&](const char* name, std::initializer_list<Declare> commands) {
    const auto before = program.get_subcommands({}).size();
    for (const auto declare : commands) declare(program, context);
    auto all = program.get_subcommands({});
    for (auto i = before; i < all.size(); ++i) all[i]->group(name);
  };
  room("Look", {declarePersons, declareShow, declareBirthdays, declareValues, declareGroups,
                declareBooks, declareAccounts, declareDuplicates, declareConfig});
  room("Change", {declareEdit, declareEditPersons, declareMerge, declareCopy, declareTag,
                  declarePhoto, declareEditGroups, declareMembers});
  room("Carry to and from files", {declareImport, declareExport, declarePage, declareQr});
  room("Keep in step", {declareSync});
  room("Keep safe", {declareUndo, declareLog, declareTrash, declareForget, declareBackup,
                     declareRestore, declareCopies, declareCheck, declareRecover});
  room("Help", {declareHelp, declareComplete});
}

int exitCodeOf(const StoreError& error) {
  return error.kind() == StoreError::Kind::Busy ? kBusy : kFailed;
}

// What the database says of a store in a read-only place does not tell what to do.
std::string messageOf(const StoreError& error) {
  const auto store = contactStore();
  std::string reason = error.what();
  if (!store.isReadOnly() || !reason.starts_with(store.name())) return reason;
  return reason +
         "; a store is used where it and its folder can be written: copy it to such a place";
}

// Prints what the parser has to say: a help text, or what is wrong with the command line.
int refused(const CLI::App& program, const CLI::ParseError& error) {
  std::ostringstream output;
  std::ostringstream errors;
  if (program.exit(error, output, errors) == 0) {
    std::cout << terminalLines(output.str());
    return kDone;
  }
  const auto commands = program.get_subcommands();
  const auto words = commands.empty() ? "" : commands.front()->get_name() + " ";
  Context::complain(withoutMark(error.what()) + "; `oxcontacts " + words + "--help` says more");
  return kUsage;
}

// Whoever could not look has not found that there is nothing.
int told(const CommandError& error, const failures::Watch& watch) {
  if (error.code() == kNotFound && watch.hasFailures()) {
    Context::complain(watch.lastReason());
    return storeFailure({}, watch).code();
  }
  if (*error.what() != '\0') Context::complain(error.what());
  return error.code();
}

// Runs the command of the command line; parsing calls it. The watch is over all that it does.
int run(CLI::App& program, int argc, char** argv, const failures::Watch& watch) {
  try {
    program.parse(parserWords(argc, argv));
    return kDone;
  } catch (const CLI::RequiredError& error) {
    if (!program.get_subcommands().empty()) return refused(program, error);
    Context::complain(unknownCommand(program));
    return kUsage;
  } catch (const CLI::ExtrasError&) {
    Context::complain(unexpectedWords(program));
    return kUsage;
  } catch (const CLI::ParseError& error) {
    return refused(program, error);
  } catch (const CommandError& error) {
    return told(error, watch);
  } catch (const StoreError& error) {
    Context::complain(messageOf(error));
    return exitCodeOf(error);
  } catch (const std::exception& error) {
    Context::complain(error.what());
    return kFailed;
  }
}

// What neither an option nor the environment has said.
void configure(const CLI::App& program, Context& context) {
  context.config = Config::read(context.configFile);
  const auto& config = context.config;
  const auto isSet = [](const char* variable) {
    const char* value = std::getenv(variable);
    return value != nullptr && *value != '\0';
  };
  if (context.store.empty() && !isSet("OX_CONTACT_STORE")) context.store = config.textOf("store");
  if (program.count("--color") == 0 && !isSet("NO_COLOR")) {
    context.color = whenOf(config.textOf("color"));
  }
  if (program.count("--progress") == 0 && !context.quiet)
    context.progress = whenOf(config.textOf("progress"));
}

// A book that the command would not look at must not pass for one that it does.
void requireUseOfBook(const CLI::App& command, const Context& context) {
  if (context.book.empty()) return;
  for (const auto* option : command.get_options()) {
    const auto& name = option->get_single_name();
    if (name == "PERSON" || name == "GROUP" || name == "--under") return;
  }
  throw CommandError(
      kUsage, "`" + command.get_name() + "` looks for nobody in a book; --book " +
                  (command.get_option_no_throw("--book") == nullptr ? "is of no use to it"
                                                                    : "has its place behind it"));
}

// A reader of a store that is not there has mistyped its place more often than not.
void requireStore(const CLI::App& command) {
  for (const auto* each = &command; each != nullptr;) {
    for (const auto* name : {"import", "add", "add-person", "add-group", "restore"}) {
      if (each->get_name() == name) return;
    }
    const auto below = each->get_subcommands();
    each = below.empty() ? nullptr : below.front();
  }
  const auto store = contactStore();
  if (!isMissing(store.file())) return;
  throw CommandError(kFailed, "there is no contact store at " + store.name() +
                                  "; `import`, `accounts add` and `add-person` make one");
}

// The operations below report no errors: what the watch saw meanwhile tells whether the command did
// what it seems to have done.
int honest(int code, const failures::Watch& watch) {
  const bool seemsDone = code == kDone || code == kDoneWithRefusals;
  if (seemsDone && watch.hasFailures()) {
    Context::complain(watch.lastReason());
    code = kFailed;
  } else if (code == kDone && !watch.isClear()) {
    Context::complain(watch.lastReason());
    code = kDoneWithRefusals;
  }
  std::cout.flush();
  if (!std::cout) {
    Context::complain("the output could not be written");
    if (seemsDone) code = kFailed;
  }
  return code;
}

int mainOf(int argc, char** argv) {
  std::ios::sync_with_stdio(false);
  Context context;
  CLI::App program("Works with the address books of a contact store.", "oxcontacts");
  program.footer(footer());
  program.require_subcommand(1);
  program.fallthrough();
  program.set_version_flag("--version", "oxcontacts " OX_VERSION);
  declareGlobalOptions(program, context);
  program.parse_complete_callback([&] {
    const auto& command = *program.get_subcommands().front();
    const auto& name = command.get_name();
    // These answer whatever is wrong elsewhere.
    if (name == "help" || name == "completion") return;
    configure(program, context);
    if (!context.store.empty()) {
      [[maybe_unused]] const bool isFirst = useContactStore(context.store);
      assert(isFirst);  // nothing has asked for the store yet
    }
    requireUseOfBook(command, context);
    setOrigin({"oxcontacts", commandLine(argc, argv), true, std::nullopt});
    // A store that cannot be used ends every command here, before it has printed or changed
    // anything; check and recover look for themselves and make no store.
    if (name == "check" || name == "recover" || name == "config") return;
    // Copies are wanted most when the store itself is gone.
    const bool restores = !command.get_subcommands().empty();
    if (name == "copies" && !restores && isMissing(contactStore().file())) return;
    // Nor does the store matter to who wants to see what an import would read.
    if (name == "import" && command.count("--dry-run") > 0) return;
    if (name == "import" && command.count("--columns") > 0) return;
    // It makes a store once it has something for it.
    if (name == "import" && isMissing(contactStore().file())) return;
    requireStore(command);
    accounts();
  });
  declareCommands(program, context);
  if (argc > 1 && std::string_view(argv[1]) == "complete") {
    answerShell(program, argc, argv);
    return kDone;
  }
  takeAsGiven(program);
  const failures::Watch watch;
  return honest(run(program, argc, argv, watch), watch);
}

// The streams may want memory themselves.
int withoutMemory() {
  constexpr std::string_view kMessage = "oxcontacts: out of memory\n";
  [[maybe_unused]] const auto written = ::write(STDERR_FILENO, kMessage.data(), kMessage.size());
  return kFailed;
}

// A JSON value wants memory even to go away, and whatever goes away must not fail.
[[noreturn]] void endUnhandled() {
  if (!std::current_exception()) std::abort();
  try {
    throw;
  } catch (const std::bad_alloc&) {
    ::_exit(withoutMemory());
  } catch (...) {
    std::abort();
  }
}

}  // namespace
}  // namespace ox::program

int main(int argc, char** argv) {
  // A file that may not grow any more is a failure to be told, not a reason to die.
  std::signal(SIGXFSZ, SIG_IGN);
  std::set_terminate(ox::program::endUnhandled);
  try {
    return ox::program::mainOf(argc, argv);
  } catch (const std::bad_alloc&) {
    return ox::program::withoutMemory();
  }
}
