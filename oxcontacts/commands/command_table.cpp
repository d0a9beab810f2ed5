#include "oxcontacts/commands/command_table.hpp"

#include <sstream>

namespace ox::program {
namespace {

std::vector<const CLI::Option*> allOf(const CLI::App& command) {
  std::vector<const CLI::Option*> all;
  for (const auto* option : command.get_options()) {
    if (!option->get_group().empty()) all.push_back(option);
  }
  for (const auto* group : command.get_subcommands([](const CLI::App*) { return true; })) {
    if (!group->get_name().empty()) continue;
    for (const auto* option : allOf(*group)) {
      if (option != group->get_help_ptr()) all.push_back(option);  // the command has its own
    }
  }
  return all;
}

}  // namespace

std::string pathOf(const CLI::App& command) {
  const auto* parent = command.get_parent();
  return (parent == nullptr ? "" : pathOf(*parent) + " ") + command.get_name();
}

std::vector<const CLI::App*> commandsBelow(const CLI::App& command) {
  return command.get_subcommands(
      [](const CLI::App* each) { return !each->get_name().empty() && !each->get_group().empty(); });
}

std::vector<const CLI::Option*> positionalsOf(const CLI::App& command) {
  auto all = allOf(command);
  std::erase_if(all, [](const CLI::Option* option) { return !option->get_positional(); });
  return all;
}

std::vector<const CLI::Option*> optionsOf(const CLI::App& command) {
  auto all = allOf(command);
  std::erase_if(all, [](const CLI::Option* option) { return option->get_positional(); });
  return all;
}

// The parser has both in one text: "WHEN:{auto,always,never}", "N:INT in [0 - 36500]".
OptionValue valueOf(const CLI::Option& option) {
  OptionValue value;
  if (option.get_items_expected_max() == 0) return value;
  const auto type = option.get_type_name();
  value.name = type.substr(0, type.find(':'));
  if (const auto brace = type.find('{'); brace != std::string::npos) {
    std::istringstream list(type.substr(brace + 1, type.find('}') - brace - 1));
    for (std::string word; std::getline(list, word, ',');) value.choices.push_back(word);
  }
  return value;
}

}  // namespace ox::program
