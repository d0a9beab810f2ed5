#pragma once

#include <nlohmann/json.hpp>
#include <string>

#include "ox/base/text.hpp"

namespace ox::program {

using Json = nlohmann::ordered_json;

// Missing is null.
Json jsonOf(const Text& text);
// On one line, as it may go to a terminal; ill-formed UTF-8 is replaced, never thrown on.
std::string oneLine(const Json& json);
// Prints it for readers, with a line feed at the end.
void printJson(const Json& json);

// Prints a JSON array as it grows, an element a line, so that a long list takes no memory.
class JsonList {
 public:
  JsonList();
  void add(const Json& element);
  void close();

 private:
  bool empty_ = true;
};

}  // namespace ox::program
