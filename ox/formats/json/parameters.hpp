#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "ox/base/json_writer.hpp"
#include "ox/vcard/lines/content_line.hpp"

namespace ox::formats {

// The parameters of a line as jCard has them (RFC 7095, section 3.4): names in lower case, values
// without quotes and escapes, those of one name together. VALUE stands apart, since a type says it.
class Parameters {
 public:
  explicit Parameters(const vcard::ContentLine& line);

  // In lower case; empty without VALUE.
  const std::string& valueType() const { return valueType_; }
  bool empty() const { return parameters_.empty(); }
  bool has(std::string_view name) const { return find(name) != nullptr; }

  // Each takes away what it gives. Names and words are in lower case, words found in any.
  std::optional<std::string> take(std::string_view name);  // its values with commas between them
  std::vector<std::string> takeAll(std::string_view name);
  bool takeWord(std::string_view name, std::string_view word);

  // Before all others.
  void addGroup(std::string_view group);
  // As a JSON object, a list where there are several values.
  void write(JsonWriter& out) const;

 private:
  struct Parameter {
    std::string name;
    std::vector<std::string> values;
  };

  void add(const vcard::Parameter& parameter);
  Parameter* find(std::string_view name);
  const Parameter* find(std::string_view name) const;

  std::string valueType_;
  std::vector<Parameter> parameters_;
};

}  // namespace ox::formats
