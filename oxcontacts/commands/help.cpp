// help: what the program or one of its commands takes; the man pages.
#include <iostream>

#include "oxcontacts/commands/command_table.hpp"
#include "oxcontacts/commands/commands.hpp"
#include "oxcontacts/output/man_pages.hpp"
#include "oxcontacts/output/terminal_text.hpp"

namespace ox::program {
void declareHelp(CLI::App& program, const Context&) {
  auto* help = program.add_subcommand("help", "Say what a command does and takes");
  const auto words = std::make_shared<std::vector<std::string>>();
  help->add_option("COMMAND", *words, "Which; the program when none is named");
  // For whoever installs the program: not in the help.
  const auto manFolder = std::make_shared<std::string>();
  help->add_option("--man", *manFolder, "Write the man pages into this folder")->group("");
  help->callback([&program, words, manFolder] {
    if (!manFolder->empty()) return writeManPages(program, *manFolder);
    const CLI::App* command = &program;
    for (const auto& word : *words) {
      const auto all =
          command->get_subcommands([&](const CLI::App* each) { return each->check_name(word); });
      if (all.empty()) {
        throw CommandError(
            kUsage, "there is no command \"" + word + "\"; `oxcontacts help` lists the commands");
      }
      command = all.front();
    }
    // The program's own help would be that of the command that runs, which is this one.
    std::cout << terminalLines(
        command->get_formatter()->make_help(command, pathOf(*command), CLI::AppFormatMode::Normal));
  });
}

}  // namespace ox::program
