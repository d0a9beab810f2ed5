#include "oxcontacts/config.hpp"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <yaml-cpp/yaml.h>

#include "ox/base/text/joined.hpp"
#include "oxcontacts/context.hpp"
#include "oxcontacts/files.hpp"

namespace ox::program {
namespace {

namespace fs = std::filesystem;

constexpr std::uint64_t kLargestFile = 1U << 20U;

std::string environment(const char* name) {
  const char* value = std::getenv(name);
  return value != nullptr ? value : "";
}

std::string usualFile() {
  if (auto file = environment("OX_CONTACTS_CONFIG"); !file.empty()) return file;
  auto folder = environment("XDG_CONFIG_HOME");
  if (!folder.starts_with('/')) {
    const auto home = environment("HOME");
    if (home.empty()) return {};
    folder = home + "/.config";
  }
  return folder + "/oxcontacts/config.yaml";
}

[[noreturn]] void refuse(const std::string& file, const YAML::Mark& mark, const std::string& what) {
  const auto line = mark.is_null() ? 1 : mark.line + 1;
  throw CommandError(kUsage, file + ":" + std::to_string(line) + ": " + what);
}

struct Choices {
  std::string_view key;
  std::vector<std::string_view> words;
};

const std::vector<Choices>& choices() {
  static const auto& all = *new std::vector<Choices>{
      {"sort", {"name", "family", "pinyin", "store"}},
      {"color", {"auto", "always", "never"}},
      {"progress", {"auto", "always", "never"}},
  };
  return all;
}

std::string keyNames() {
  std::vector<std::string_view> names;
  names.reserve(kConfigKeys.size());
  for (const auto& key : kConfigKeys) names.push_back(key.name);
  return joined(names, ", ");
}

std::string absolutePath(const std::string& path, const std::string& file) {
  if (path.starts_with("~/")) return environment("HOME") + path.substr(1);
  return (fs::absolute(file).parent_path() / path).lexically_normal().string();
}

// The text of a value; of a list its texts with commas between them, where the key takes one.
std::string valueText(const std::string& file, const std::string& key, const YAML::Node& node) {
  const bool takesList = key == "columns";
  std::string text;
  if (node.IsScalar()) {
    text = node.Scalar();
  } else if (node.IsSequence() && takesList) {
    for (const auto& each : node) {
      if (!each.IsScalar()) refuse(file, each.Mark(), "columns: one name is expected here");
      text += (text.empty() ? "" : ",") + each.Scalar();
    }
  } else {
    refuse(file, node.Mark(),
           key + ": " + (takesList ? "a text or a list of texts" : "a text") + " is expected here");
  }
  if (text.empty()) refuse(file, node.Mark(), key + ": must not be empty");
  for (const auto& choice : choices()) {
    if (choice.key != key || std::ranges::count(choice.words, text) > 0) continue;
    refuse(file, node.Mark(), key + ": \"" + text + "\" is none of " + joined(choice.words, ", "));
  }
  if (key != "store") return text;
  if (text.starts_with("~/") && environment("HOME").empty()) {
    refuse(file, node.Mark(), "store: there is no HOME that ~/ would be");
  }
  return absolutePath(text, file);
}

std::vector<ConfiguredValue> valuesIn(const std::string& file, const std::string& yaml) {
  std::vector<ConfiguredValue> values;
  const auto documents = YAML::LoadAll(yaml);
  if (documents.size() > 1) refuse(file, documents[1].Mark(), "one document is all there may be");
  if (documents.empty() || documents.front().IsNull()) return values;
  const auto& root = documents.front();
  if (!root.IsMap()) {
    refuse(file, root.Mark(), "keys and values are expected here, as in \"sort: family\"");
  }
  for (const auto& each : root) {
    const auto name = each.first.IsScalar() ? each.first.Scalar() : std::string();
    if (std::ranges::find(kConfigKeys, name, &ConfigKey::name) == kConfigKeys.end()) {
      refuse(file, each.first.Mark(), "there is no key \"" + name + "\"; there are " + keyNames());
    }
    if (std::ranges::find(values, name, &ConfiguredValue::key) != values.end()) {
      refuse(file, each.first.Mark(), "\"" + name + "\" stands here a second time");
    }
    const auto line = static_cast<std::size_t>(each.first.Mark().line) + 1;
    values.push_back({name, valueText(file, name, each.second), line});
  }
  return values;
}

}  // namespace

Config Config::read(const std::string& named) {
  Config config;
  config.file_ = named.empty() ? usualFile() : named;
  if (config.file_.empty()) return config;
  if (named.empty() && isMissing(config.file_)) return config;
  try {
    config.values_ = valuesIn(config.file_, readFile(config.file_, kLargestFile));
  } catch (const YAML::Exception& error) {
    refuse(config.file_, error.mark, error.msg);
  } catch (const CommandError& error) {
    throw CommandError(kUsage, error.what());
  }
  config.isThere_ = true;
  return config;
}

const ConfiguredValue* Config::find(std::string_view key) const {
  const auto value = std::ranges::find(values_, key, &ConfiguredValue::key);
  return value == values_.end() ? nullptr : &*value;
}

std::string Config::textOf(std::string_view key) const {
  const auto* value = find(key);
  return value != nullptr ? value->text : std::string();
}

std::string Config::placeOf(std::string_view key) const {
  const auto* value = find(key);
  return value != nullptr ? file_ + ":" + std::to_string(value->line) : std::string();
}

}  // namespace ox::program
