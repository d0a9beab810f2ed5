// How fast are vCards read? Beside it: the same bytes split into names, parameters and values that
// lie in an arena; and their line ends found.
#include <algorithm>
#include <cstring>
#include <map>
#include <stdexcept>
#include <string_view>
#include <variant>
#include <vector>

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

Measured readCards(std::size_t count, vcard::Reader::Threads threads) {
  const auto& text = cards(count);
  const Stopwatch watch;
  vcard::MemorySource source(text);
  vcard::Reader reader(source, threads);
  std::size_t read = 0;
  while (auto result = reader.next()) {
    if (std::holds_alternative<vcard::Card>(*result)) ++read;
  }
  const auto seconds = watch.seconds();
  if (read != count) throw std::runtime_error("cards were refused");
  return {seconds, megabytes(text)};
}

// One line as a floor reads it: unfolded, and where its parts stand.
struct SplitLine {
  std::string_view name;
  std::string_view parameters;
  std::string_view value;
};

// The next line, unfolded into the arena where it goes over several; empty at the end.
std::string_view nextLine(std::string_view& rest, std::string& arena) {
  const auto from = arena.size();
  while (true) {
    const auto end = rest.find('\n');
    if (end == std::string_view::npos) return {};
    arena.append(rest.substr(0, end > 0 && rest[end - 1] == '\r' ? end - 1 : end));
    rest.remove_prefix(end + 1);
    if (rest.empty() || rest.front() != ' ') break;
    rest.remove_prefix(1);
  }
  return std::string_view(arena).substr(from);
}

// Card after card; the arena has room for the largest.
Measured splitLines(std::size_t count) {
  const auto& text = cards(count);
  std::string arena;
  arena.reserve(1U << 20U);
  std::vector<SplitLine> lines;
  std::size_t read = 0;
  std::size_t sum = 0;
  const Stopwatch watch;
  std::string_view rest = text;
  for (auto line = nextLine(rest, arena); !line.empty(); line = nextLine(rest, arena)) {
    const auto colon = line.find(':');
    const auto head = line.substr(0, colon);
    const auto semicolon = std::min(head.find(';'), head.size());
    lines.push_back({head.substr(0, semicolon), head.substr(semicolon), line.substr(colon + 1)});
    if (line != "END:VCARD") continue;
    for (const auto& each : lines) sum += each.name.size() + each.value.size();
    ++read;
    lines.clear();
    arena.clear();
  }
  keep(sum);
  const auto seconds = watch.seconds();
  if (read != count) throw std::runtime_error("cards were lost");
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
    const auto readBy = [](ox::vcard::Reader::Threads threads) {
      return [threads](std::size_t count) { return readCards(count, threads); };
    };
    using Threads = ox::vcard::Reader::Threads;
    addFigure("read vCards", {{"Reader, all processors", readBy(Threads::AllProcessors)},
                              {"Reader, one thread", readBy(Threads::One)},
                              {"line ends (memchr)", findLineEnds},
                              {"lines split in an arena", splitLines}});
  });
}
