// How fast are vCards read? Beside it: finding the line ends of the same bytes.
#include <cstring>
#include <map>
#include <stdexcept>
#include <variant>

#include "bench/contacts.hpp"
#include "bench/figures.hpp"
#include "ox/vcard/read/reader.hpp"

namespace ox::bench {
namespace {

const std::string& cards(std::size_t count) {
  static auto& made = *new std::map<std::size_t, std::string>;
  auto& text = made[count];
  if (text.empty()) text = contactCards(count);
  return text;
}

std::string megabytes(const std::string& text) {
  return std::to_string(text.size() / 1'000'000) + " MB";
}

Measured readCards(std::size_t count) {
  const auto& text = cards(count);
  const Stopwatch watch;
  vcard::MemorySource source(text);
  vcard::Reader reader(source);
  std::size_t read = 0;
  while (auto result = reader.next()) {
    if (std::holds_alternative<vcard::Card>(*result)) ++read;
  }
  const auto seconds = watch.seconds();
  if (read != count) throw std::runtime_error("cards were refused");
  return {seconds, megabytes(text)};
}

Measured findLineEnds(std::size_t count) {
  const auto& text = cards(count);
  const Stopwatch watch;
  std::size_t lines = 0;
  const char* const end = text.data() + text.size();
  for (const char* at = text.data(); at < end; ++lines) {
    const auto* found = std::memchr(at, '\n', static_cast<std::size_t>(end - at));
    at = found != nullptr ? static_cast<const char*>(found) + 1 : end;
  }
  keep(lines);
  const auto seconds = watch.seconds();
  return {seconds, megabytes(text)};
}

}  // namespace
}  // namespace ox::bench

int main(int argc, char** argv) {
  using namespace ox::bench;
  return runFigures(argc, argv, [] {
    addFigure("read vCards", {{"Reader", readCards}, {"line ends (memchr)", findLineEnds}});
  });
}
