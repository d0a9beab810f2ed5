#include "ox/formats/json/parameters.hpp"

#include <algorithm>
#include <utility>

#include "ox/base/text/ascii_case.hpp"
#include "ox/vcard/lines/ascii.hpp"

namespace ox::formats {
namespace {

// Their values are lists whether a comma stands in quotes or not, as RFC 6350 itself writes them
// (sections 5.5, 5.6 and 5.9).
bool isListInQuotes(std::string_view name) {
  return name == "type" || name == "pid" || name == "sort-as";
}

std::string plain(std::string_view value) {
  return vcard::parameterText({{}, value});
}

std::vector<std::string> valuesOf(std::string_view name, std::string_view raw) {
  std::vector<std::string> values;
  if (isListInQuotes(name)) {
    vcard::forEachWord(raw, [&](std::string_view word) { values.push_back(plain(word)); });
    if (values.empty()) values.emplace_back();
    return values;
  }
  std::size_t from = 0;
  bool quoted = false;
  for (std::size_t at = 0; at < raw.size(); ++at) {
    if (raw[at] == '"') quoted = !quoted;
    if (raw[at] != ',' || quoted) continue;
    values.push_back(plain(raw.substr(from, at - from)));
    from = at + 1;
  }
  values.push_back(plain(raw.substr(from)));
  return values;
}

}  // namespace

Parameters::Parameters(const vcard::ContentLine& line) {
  for (const auto& parameter : line.parameters) {
    if (parameter.kind == vcard::ParameterKind::Value) {
      valueType_ = lowerCase(parameterText(parameter));
    } else {
      add(parameter);
    }
  }
}

void Parameters::add(const vcard::Parameter& parameter) {
  auto name = parameter.name.empty() ? std::string("type") : lowerCase(parameter.name);
  auto values = valuesOf(name, parameter.value);
  if (auto* known = find(name)) {
    std::ranges::move(values, std::back_inserter(known->values));
  } else {
    parameters_.push_back({std::move(name), std::move(values)});
  }
}

Parameters::Parameter* Parameters::find(std::string_view name) {
  const auto found = std::ranges::find(parameters_, name, &Parameter::name);
  return found == parameters_.end() ? nullptr : &*found;
}

const Parameters::Parameter* Parameters::find(std::string_view name) const {
  const auto found = std::ranges::find(parameters_, name, &Parameter::name);
  return found == parameters_.end() ? nullptr : &*found;
}

std::vector<std::string> Parameters::takeAll(std::string_view name) {
  const auto found = std::ranges::find(parameters_, name, &Parameter::name);
  if (found == parameters_.end()) return {};
  auto values = std::move(found->values);
  parameters_.erase(found);
  return values;
}

std::optional<std::string> Parameters::take(std::string_view name) {
  if (!has(name)) return std::nullopt;
  std::string joined;
  for (const auto& value : takeAll(name)) {
    if (!joined.empty()) joined += ',';
    joined += value;
  }
  return joined;
}

bool Parameters::takeWord(std::string_view name, std::string_view word) {
  auto* parameter = find(name);
  if (parameter == nullptr) return false;
  const auto isIt = [word](const std::string& value) { return vcard::isSameWord(value, word); };
  const bool found = std::erase_if(parameter->values, isIt) > 0;
  if (parameter->values.empty()) takeAll(name);
  return found;
}

void Parameters::addGroup(std::string_view group) {
  parameters_.insert(parameters_.begin(), {"group", {std::string(group)}});
}

void Parameters::write(JsonWriter& out) const {
  out.beginObject();
  for (const auto& [name, values] : parameters_) {
    out.writeName(name);
    if (values.size() > 1) out.beginArray();
    for (const auto& value : values) out.writeText(value);
    if (values.size() > 1) out.endArray();
  }
  out.endObject();
}

}  // namespace ox::formats
