// config: what counts of options, environment and configuration file, and where it comes from.
#include "oxcontacts/config.hpp"

#include <array>
#include <cstdlib>

#include "ox/base/store_location.hpp"
#include "oxcontacts/commands/commands.hpp"
#include "oxcontacts/edit/editor.hpp"
#include "oxcontacts/output/json.hpp"
#include "oxcontacts/output/order.hpp"
#include "oxcontacts/output/person_columns.hpp"
#include "oxcontacts/output/table.hpp"

namespace ox::program {
namespace {

struct Setting {
  std::string_view key;
  Text value;                     // missing: nothing is set, and nothing is built in
  const char* from = "built-in";  // or "option", "environment", "file"
  Text where = std::nullopt;      // "--store", "OX_CONTACT_STORE", "FILE:12"
};

// Who may set a value beside the file, and what counts where nobody does.
struct Origins {
  std::string_view key;
  const char* option;                    // null: none of the program itself
  std::array<const char*, 2> variables;  // null: no further one
  const char* builtIn;                   // null: none
};

constexpr std::array kOrigins = {
    Origins{"store", "--store", {"OX_CONTACT_STORE", nullptr}, nullptr},
    Origins{"book", nullptr, {nullptr, nullptr}, nullptr},
    Origins{"columns", nullptr, {nullptr, nullptr}, kUsualColumns},
    Origins{"sort", nullptr, {nullptr, nullptr}, kUsualOrder},
    Origins{"editor", nullptr, {"VISUAL", "EDITOR"}, kUsualEditor},
    Origins{"color", "--color", {"NO_COLOR", nullptr}, "auto"},
    Origins{"progress", "--progress", {nullptr, nullptr}, "auto"},
};
static_assert(kOrigins.size() == kConfigKeys.size());

Setting settingOf(const Origins& origins, const CLI::App& program, const Config& config) {
  if (origins.option != nullptr && program.count(origins.option) > 0) {
    const auto given = program.get_option(origins.option)->as<std::string>();
    return {origins.key, given, "option", origins.option};
  }
  for (const auto* variable : origins.variables) {
    const auto* value = variable != nullptr ? std::getenv(variable) : nullptr;
    if (value == nullptr || *value == '\0') continue;
    const bool isSwitch = origins.key == "color";
    return {origins.key, isSwitch ? "never" : value, "environment", variable};
  }
  if (config.find(origins.key) != nullptr) {
    return {origins.key, config.textOf(origins.key), "file", config.placeOf(origins.key)};
  }
  if (origins.key == "store") return {origins.key, contactStore().name()};
  return {origins.key, origins.builtIn != nullptr ? Text(origins.builtIn) : std::nullopt};
}

void showConfig(const Context& context, const CLI::App& program) {
  const auto& config = context.config;
  std::vector<Setting> settings;
  settings.reserve(kOrigins.size());
  for (const auto& origins : kOrigins) settings.push_back(settingOf(origins, program, config));
  if (context.json) {
    Json list = Json::array();
    for (const auto& setting : settings) {
      list.push_back({{"key", setting.key},
                      {"value", jsonOf(setting.value)},
                      {"from", setting.from},
                      {"where", jsonOf(setting.where)}});
    }
    printJson({{"file", config.file().empty() ? Json() : Json(config.file())},
               {"isThere", config.isThere()},
               {"settings", std::move(list)}});
    return;
  }
  Table table({{"KEY"}, {"VALUE"}, {"FROM"}});
  for (const auto& setting : settings) {
    table.addRow({std::string(setting.key), setting.value.value_or(""),
                  setting.where.value_or(setting.from)});
  }
  table.print(context);
  if (!config.isThere()) context.tell("there is no " + config.file());
}

}  // namespace

void declareConfig(CLI::App& program, const Context& context) {
  auto* command =
      program.add_subcommand("config", "Show what is configured, and where it comes from");
  std::string footer =
      "An option comes before the environment, the environment before the file, the file before "
      "what is built in. The file is --config FILE, else $OX_CONTACTS_CONFIG, else "
      "$XDG_CONFIG_HOME/oxcontacts/config.yaml. Its keys, a line each as in \"sort: family\":\n";
  for (const auto& key : kConfigKeys) {
    footer += "  " + std::string(key.name) + ": " + std::string(key.what) + "\n";
  }
  footer.pop_back();
  command->footer(footer);
  command->callback([&program, &context] { showConfig(context, program); });
}

}  // namespace ox::program
