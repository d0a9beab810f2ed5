#include "oxcontacts/output/man_pages.hpp"

#include <array>
#include <charconv>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <sstream>
#include <string_view>

#include "ox/base/text/ascii_case.hpp"
#include "ox/base/text/joined.hpp"
#include "oxcontacts/commands/command_table.hpp"
#include "oxcontacts/context.hpp"
#include "oxcontacts/output/man_examples.hpp"
#include "oxcontacts/output_file.hpp"

namespace ox::program {
namespace {

struct Row {
  std::string_view name;
  std::string_view what;
};

constexpr std::array kEnvironment = {
    Row{"OX_CONTACT_STORE", "The contact store, where --store names none."},
    Row{"OX_TAG_STORE", "The tag file, else the path of the store with \".tags\" after it."},
    Row{"XDG_DATA_HOME", "The folder that the user's own store is below."},
    Row{"OX_CONTACTS_CONFIG", "The configuration file, where --config names none."},
    Row{"XDG_CONFIG_HOME", "The folder that the user's own configuration is below."},
    Row{"VISUAL, EDITOR",
        "The editor that edit opens; the first that is set, else the configured one."},
    Row{"NO_COLOR", "Set to anything, it keeps colours away where --color says nothing."},
    Row{"COLUMNS", "How wide tables may be."},
    Row{"LC_ALL, LANG", "The language that names are ordered in."},
    Row{"XDG_RUNTIME_DIR", "Where page --open leaves the page, else TMPDIR."},
    Row{"TMPDIR", "Where the text that edit opens lies meanwhile."},
    Row{"OX_RESOURCES", "Where the pictures of services are looked for last."},
    Row{"OX_SYSTEM_VERSION", "The version that the system is taken for."},
};

constexpr std::array kFiles = {
    Row{"~/.local/share/oxcontacts/contacts.db",
        "The user's own store, where $XDG_DATA_HOME names no other folder."},
    Row{"~/.config/oxcontacts/config.yaml",
        "The configuration, where $XDG_CONFIG_HOME names no other folder; see oxcontacts config."},
    Row{"STORE.tags", "The tags that go with a store."},
    Row{"STORE.copies", "The copies that are kept of it; see oxcontacts copies."},
};

// What a reader of the mdoc language would take for more than text, it takes for text now.
std::string escaped(std::string_view text) {
  std::string safe;
  for (const char c : text) {
    if (c == '\\') {
      safe += "\\e";
    } else if (c == '-') {
      safe += "\\-";
    } else {
      safe += c;
    }
  }
  return safe;
}

// A line of text: one that begins like a request is none.
std::string textLine(std::string_view text) {
  const bool seemsRequest = text.starts_with('.') || text.starts_with('\'');
  return (seemsRequest ? "\\&" : "") + escaped(text) + "\n";
}

// Text as sentences, each of which begins a line, as the language wants it.
std::string sentences(std::string_view text) {
  std::string page;
  for (auto end = text.find(". "); end != std::string_view::npos; end = text.find(". ")) {
    page += textLine(text.substr(0, end + 1));
    text.remove_prefix(end + 2);
  }
  return page + textLine(text);
}

std::string sentencesOf(const std::string& description) {
  return sentences(description + (description.ends_with('.') ? "" : "."));
}

// An argument of a macro: it is one, whatever is in it, and no macro itself.
std::string argument(std::string_view text) {
  std::string safe = "\"\\&";
  for (const char c : escaped(text)) safe += c == '"' ? std::string("\\(dq") : std::string(1, c);
  return safe + '"';
}

constexpr std::string_view kParagraph = ".Pp\n";

// Several short or indented lines stand as they were written; long ones are text, and a sentence
// that ends a line ends a paragraph.
std::string footerText(const std::string& footer) {
  constexpr std::size_t kShort = 80;
  std::vector<std::string> lines;
  std::istringstream text(footer);
  for (std::string line; std::getline(text, line);) lines.push_back(line);
  std::string page;
  for (std::size_t i = 0; i < lines.size();) {
    auto end = i;
    while (end < lines.size() && (lines[end].size() < kShort || lines[end].starts_with("  "))) {
      ++end;
    }
    const bool isLiteral = end - i > 1;
    if (!isLiteral) end = i + 1;
    const bool continues =
        i > 0 && !isLiteral && !page.ends_with(".Ed\n") && !page.ends_with(".\n");
    if (!isLiteral && !continues) page += kParagraph;
    if (isLiteral) page += ".Bd -literal\n";
    for (; i < end; ++i) page += isLiteral ? textLine(lines[i]) : sentences(lines[i]);
    if (isLiteral) page += ".Ed\n";
  }
  return page;
}

std::string rowsOf(std::string_view macro, const auto& rows) {
  std::string page = ".Bl -tag -width Ds\n";
  for (const auto& row : rows) {
    page += ".It " + std::string(macro) + " " + argument(row.name) + "\n" + sentences(row.what);
  }
  return page + ".El\n";
}

std::string argumentOf(const CLI::Option& option) {
  const auto value = valueOf(option);
  if (value.name.empty()) return "";
  const bool isUnnamed = value.name == "TEXT" && !value.choices.empty();
  return " Ar " + argument(isUnnamed ? "WORD" : value.name);
}

std::string choicesOf(const CLI::Option& option) {
  const auto list = joined(valueOf(option).choices, ", ");
  if (list.empty()) return "";
  const auto usual = option.get_default_str();
  return textLine("One of: " + list + (usual.empty() ? "." : "; else " + usual + "."));
}

std::string optionsText(const std::vector<const CLI::Option*>& options) {
  if (options.empty()) return "";
  std::string page = ".Bl -tag -width Ds\n";
  for (const auto* option : options) {
    std::string names;
    for (const auto& name : option->get_snames())
      names += (names.empty() ? "" : " , ") + ("Fl " + argument(name));
    for (const auto& name : option->get_lnames())
      names += (names.empty() ? "" : " , ") + ("Fl " + argument("-" + name));
    page += ".It " + names + argumentOf(*option) + "\n";
    page += sentencesOf(option->get_description()) + choicesOf(*option);
  }
  return page + ".El\n";
}

std::string positionalsText(const CLI::App& command) {
  const auto positionals = positionalsOf(command);
  if (positionals.empty()) return "";
  std::string page = ".Bl -tag -width Ds\n";
  for (const auto* positional : positionals) {
    page += ".It Ar " + argument(positional->get_name(true)) + "\n" +
            sentencesOf(positional->get_description()) + choicesOf(*positional);
  }
  return page + ".El\n";
}

std::string synopsis(const CLI::App& command) {
  std::string page = ".Nm oxcontacts\n";
  auto path = pathOf(command);
  path.erase(0, path.find(' ') + 1);
  page += ".Cm " + argument(path) + "\n.Op Ar options\n";
  for (const auto* positional : positionalsOf(command)) {
    const bool isList = positional->get_items_expected_max() > 1;
    page += std::string(positional->get_required() ? ".Ar " : ".Op Ar ") +
            argument(positional->get_name(true)) + (isList ? " ..." : "") + "\n";
  }
  return page;
}

std::string exitStatus() {
  std::string page = ".Sh EXIT STATUS\n.Bl -tag -width Ds\n";
  for (const auto& row : kExitCodes) {
    page += ".It " + std::to_string(row.code) + "\n" + sentencesOf(row.meaning);
  }
  return page + ".El\n";
}

std::string examplesOf(std::string_view command) {
  std::string page;
  for (const auto& example : kManExamples) {
    if (example.command != command) continue;
    if (!example.what.empty()) page += textLine(example.what);
    page += ".Dl oxcontacts " + argument(example.line) + "\n";
  }
  return page;
}

std::string dayOfPages() {
  auto moment = std::time(nullptr);
  if (const char* epoch = std::getenv("SOURCE_DATE_EPOCH")) {
    const std::string_view text = epoch;
    std::from_chars(text.data(), text.data() + text.size(), moment);
  }
  std::tm day{};
  ::gmtime_r(&moment, &day);
  constexpr std::array kMonths = {"January",   "February", "March",    "April",
                                  "May",       "June",     "July",     "August",
                                  "September", "October",  "November", "December"};
  return std::string(kMonths[static_cast<std::size_t>(day.tm_mon)]) + " " +
         std::to_string(day.tm_mday) + ", " + std::to_string(1900 + day.tm_year);
}

std::string head(const std::string& name, const std::string& what) {
  return ".Dd " + dayOfPages() + "\n.Dt " + upperCase(name) +
         " 1\n.Os \"oxcontacts " OX_VERSION "\"\n.Sh NAME\n.Nm " + name + "\n.Nd " + escaped(what) +
         "\n";
}

std::string withoutPeriod(std::string text) {
  if (text.ends_with('.')) text.pop_back();
  return text;
}

// What the command says at the end of its help, where that is not what the program says.
std::string ownFooter(const CLI::App& command) {
  const auto footer = command.get_footer();
  return footer == command.get_parent()->get_footer() ? "" : footerText(footer);
}

std::string commandText(const CLI::App& command) {
  std::string page = sentencesOf(command.get_description());
  if (!command.get_aliases().empty()) {
    page += textLine("Short: " + command.get_aliases().front() + ".");
  }
  return page + positionalsText(command) + optionsText(optionsOf(command)) + ownFooter(command);
}

std::string pageOf(const CLI::App& command) {
  const auto below = commandsBelow(command);
  auto page = head("oxcontacts-" + command.get_name(), withoutPeriod(command.get_description()));
  page += ".Sh SYNOPSIS\n" + synopsis(command);
  for (const auto* each : below) page += synopsis(*each);
  page += ".Sh DESCRIPTION\n" + commandText(command);
  for (const auto* each : below) {
    page +=
        ".Ss " + argument(command.get_name() + " " + each->get_name()) + "\n" + commandText(*each);
  }
  page += ".Pp\nThe options of\n.Xr oxcontacts 1\ncount here too, before or behind the command.\n";
  return page + exitStatus() + ".Sh EXAMPLES\n" + examplesOf(command.get_name()) +
         ".Sh SEE ALSO\n.Xr oxcontacts 1\n";
}

std::string pageOfProgram(const CLI::App& program) {
  auto page = head("oxcontacts", withoutPeriod(program.get_description()));
  page += ".Sh SYNOPSIS\n.Nm oxcontacts\n.Op Ar options\n.Ar COMMAND\n.Op Ar \"\\&...\"\n";
  page += ".Sh DESCRIPTION\n" + footerText(kMeaningOfArguments).substr(kParagraph.size()) +
          optionsText(optionsOf(program));
  std::string room;
  for (const auto* command : commandsBelow(program)) {
    if (command->get_group() != room) {
      page += (room.empty() ? ".Sh COMMANDS\n" : ".El\n");
      room = command->get_group();
      page += ".Ss " + argument(room) + "\n.Bl -tag -width Ds\n";
    }
    page += ".It Xr oxcontacts-" + command->get_name() + " 1\n" +
            sentencesOf(command->get_description());
  }
  page += ".El\n.Sh ENVIRONMENT\n" + rowsOf("Ev", kEnvironment);
  page += ".Sh FILES\n" + rowsOf("Pa", kFiles);
  return page + exitStatus() + ".Sh EXAMPLES\n" + examplesOf("import") + examplesOf("find");
}

void writePage(const std::filesystem::path& path, const std::string& page) {
  OutputFile file(path.string());
  file.write(page);
  file.commit();
}

}  // namespace

void writeManPages(const CLI::App& program, const std::string& folder) {
  const std::filesystem::path place(folder);
  std::filesystem::create_directories(place);
  writePage(place / "oxcontacts.1", pageOfProgram(program));
  for (const auto* command : commandsBelow(program)) {
    writePage(place / ("oxcontacts-" + command->get_name() + ".1"), pageOf(*command));
  }
}

}  // namespace ox::program
