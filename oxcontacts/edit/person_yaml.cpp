#include "oxcontacts/edit/person_yaml.hpp"

#include <algorithm>
#include <nlohmann/json.hpp>
#include <string_view>
#include <yaml-cpp/yaml.h>

#include "ox/base/text/case.hpp"
#include "ox/base/text/joined.hpp"
#include "oxcontacts/context.hpp"
#include "oxcontacts/edit/assignment.hpp"
#include "oxcontacts/edit/value_parts.hpp"

namespace ox::program {
namespace {

void setPart(TextParts& parts, const std::string& name, const std::string& text) {
  if (!text.empty()) parts[name] = text;
}

// A scalar that every reader takes for this very text.
std::string scalar(const std::string& text) {
  constexpr std::string_view kPlain = "-+_ ()/.@";
  const auto isPlain = [&](char c) {
    const auto byte = static_cast<unsigned char>(c);
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
           byte >= 0xC3U || (byte >= 0x80U && byte < 0xC0U) ||
           kPlain.find(c) != std::string_view::npos;
  };
  const auto isLetter = [&](char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '+' ||
           static_cast<unsigned char>(c) >= 0xC3U;
  };
  const bool plain = !text.empty() && isLetter(text.front()) && text.back() != ' ' &&
                     std::ranges::all_of(text, isPlain) && !equalsIgnoringCase(text, "null");
  // A JSON string is a YAML scalar.
  return plain ? text : nlohmann::json(text).dump();
}

// A text of several lines as such, where YAML can say it without a word about its ends.
bool isBlock(const std::string& text) {
  if (text.find('\n') == std::string::npos || text.back() == '\n' || text.front() == ' ' ||
      text.front() == '\n') {
    return false;
  }
  return std::ranges::none_of(text, [](char c) {
    const auto byte = static_cast<unsigned char>(c);
    return (byte < 0x20U && c != '\n') || byte == 0x7FU || byte == 0xC2U || byte == 0xE2U ||
           byte == 0xEFU;
  });
}

void appendValue(const std::string& text, const std::string& indent, std::string& yaml) {
  if (!isBlock(text)) {
    yaml += " " + scalar(text) + "\n";
    return;
  }
  yaml += " |-\n";
  std::size_t at = 0;
  while (at <= text.size()) {
    const auto end = std::min(text.find('\n', at), text.size());
    if (end > at) yaml += indent + text.substr(at, end - at);
    yaml += '\n';
    at = end + 1;
  }
}

void appendParts(const OxProperty& property, const TextParts& parts, const std::string& indent,
                 std::string& yaml) {
  for (const auto name : partNames(property)) {
    yaml.append(indent).append(name).append(":");
    const auto part = parts.find(std::string(name));
    if (part == parts.end()) {
      yaml += '\n';
    } else {
      appendValue(part->second, indent + "  ", yaml);
    }
  }
}

void appendEntry(const OxProperty& property, const TextEntry& entry, std::string& yaml) {
  yaml += "  -";
  const bool hasParts = !partNames(property).empty();
  if (hasParts) {
    yaml += " " + (entry.label.empty() ? "\"\"" : scalar(entry.label)) + ":\n";
    appendParts(property, entry.parts, "      ", yaml);
    return;
  }
  if (!entry.label.empty()) yaml += " " + scalar(entry.label) + ":";
  appendValue(entry.parts.empty() ? "" : entry.parts.begin()->second,
              entry.label.empty() ? "    " : "      ", yaml);
}

[[noreturn]] void misread(const YAML::Mark& mark, const std::string& what) {
  throw CommandError(kUsage,
                     (mark.line >= 0 ? "line " + std::to_string(mark.line + 1) + ": " : "") + what);
}

std::string textIn(const YAML::Node& node) {
  if (node.IsNull()) return {};
  if (!node.IsScalar()) misread(node.Mark(), "one text is expected here");
  return node.Scalar();
}

TextParts readParts(const OxProperty& property, const YAML::Node& node) {
  TextParts parts;
  const auto names = partNames(property);
  if (names.empty()) {
    setPart(parts, "", textIn(node));
    return parts;
  }
  if (node.IsNull()) return parts;
  const auto known = joined(names, ", ");
  if (!node.IsMap()) misread(node.Mark(), "the parts are expected here: " + known);
  for (const auto& each : node) {
    const auto name = textIn(each.first);
    if (std::ranges::find(names, name) == names.end()) {
      misread(each.first.Mark(), "there is no part \"" + name + "\"; there are " + known);
    }
    setPart(parts, name, textIn(each.second));
  }
  return parts;
}

// "value", or "label: value".
TextEntry readEntry(const OxProperty& property, const YAML::Node& node) {
  TextEntry entry;
  if (!node.IsMap()) {
    if (!partNames(property).empty()) misread(node.Mark(), "a label and parts are expected here");
    entry.parts = readParts(property, node);
    return entry;
  }
  if (node.size() != 1) misread(node.Mark(), "one label and its value are expected here");
  entry.label = textIn(node.begin()->first);
  entry.parts = readParts(property, node.begin()->second);
  return entry;
}

TextProperty readProperty(const std::string& name, const YAML::Node& key, const YAML::Node& node) {
  const auto property = propertyCalled(name);
  if (!property) {
    misread(key.Mark(), "there is no property \"" + name + "\"; there are " + propertyNames());
  }
  TextProperty read{property, {}};
  if (!isMultiple(*property)) {
    auto parts = readParts(*property, node);
    if (!parts.empty()) read.entries.push_back({0, "", std::move(parts)});
    return read;
  }
  if (node.IsNull()) return read;
  if (!node.IsSequence()) misread(node.Mark(), "a list is expected here: lines that begin with -");
  for (const auto& each : node) {
    auto entry = readEntry(*property, each);
    if (!entry.parts.empty()) read.entries.push_back(std::move(entry));
  }
  return read;
}

}  // namespace

std::string yamlOf(const PersonText& text) {
  std::string yaml;
  for (const auto& [property, entries] : text) {
    yaml += shortNameOf(*property) + ":";
    if (isName(*property)) {
      yaml += '\n';
      appendParts(*property, entries.empty() ? TextParts() : entries.front().parts, "  ", yaml);
    } else if (isMultiple(*property)) {
      yaml += '\n';
      for (const auto& entry : entries) appendEntry(*property, entry, yaml);
    } else if (entries.empty()) {
      yaml += '\n';
    } else {
      appendValue(entries.front().parts.begin()->second, "  ", yaml);
    }
  }
  return yaml;
}

PersonText readYaml(const std::string& yaml) {
  try {
    const auto documents = YAML::LoadAll(yaml);
    PersonText text;
    // Whatever stands behind the mark would pass for taken out.
    if (documents.size() > 1) misread(documents[1].Mark(), "a line of --- or ... ends the person");
    if (documents.empty()) return text;
    const auto& root = documents.front();
    if (root.IsNull()) return text;
    if (!root.IsMap()) misread(root.Mark(), "properties are expected here, as in \"note: text\"");
    for (const auto& each : root) {
      const auto name = textIn(each.first);
      auto property = readProperty(name, each.first, each.second);
      if (std::ranges::find(text, property.property, &TextProperty::property) != text.end()) {
        misread(each.first.Mark(), "\"" + name + "\" stands here a second time");
      }
      text.push_back(std::move(property));
    }
    return text;
  } catch (const YAML::Exception& error) {
    misread(error.mark, error.msg);
  }
}

}  // namespace ox::program
