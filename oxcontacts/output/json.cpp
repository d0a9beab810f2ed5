#include "oxcontacts/output/json.hpp"

#include <iostream>

#include "oxcontacts/output/terminal_text.hpp"

namespace ox::program {

Json jsonOf(const Text& text) {
  return text ? Json(*text) : Json();
}

std::string oneLine(const Json& json) {
  return terminalJson(json.dump(-1, ' ', false, Json::error_handler_t::replace));
}

void printJson(const Json& json) {
  std::cout << terminalJson(json.dump(2, ' ', false, Json::error_handler_t::replace)) << '\n';
}

JsonList::JsonList() {
  std::cout << '[';
}

void JsonList::add(const Json& element) {
  std::cout << (empty_ ? "\n" : ",\n") << oneLine(element);
  empty_ = false;
}

void JsonList::close() {
  std::cout << (empty_ ? "]\n" : "\n]\n");
}

}  // namespace ox::program
