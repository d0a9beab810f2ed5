#include "ox/formats/card/written_card.hpp"

#include "ox/vcard/lines/ascii.hpp"
#include "ox/vcard/lines/decode.hpp"

namespace ox::formats {
namespace {

constexpr std::string_view kBreak = "\r\n";
constexpr auto npos = std::string_view::npos;

bool isOfTheFrame(const vcard::ContentLine& line) {
  return line.name == "BEGIN" || line.name == "END" || line.name == "VERSION";
}

}  // namespace

WrittenCard::WrittenCard(std::string_view text) {
  unfold(text);
  std::string_view rest = unfolded_;
  while (!rest.empty()) {
    const auto end = rest.find(kBreak);
    const auto whole = rest.substr(0, end);
    rest.remove_prefix(end == npos ? rest.size() : end + kBreak.size());
    vcard::ContentLine line;
    const auto colon = parseHead(whole, line);
    if (colon == npos || isOfTheFrame(line)) continue;
    line.value = whole.substr(colon + 1);
    lines_.push_back(std::move(line));
  }
}

void WrittenCard::unfold(std::string_view text) {
  unfolded_.reserve(text.size());
  for (auto at = text.find("\r\n "); at != npos; at = text.find("\r\n ")) {
    unfolded_ += text.substr(0, at);
    text.remove_prefix(at + 3);
  }
  unfolded_ += text;
}

const vcard::ContentLine* WrittenCard::find(std::string_view name) const {
  for (const auto& line : lines_) {
    if (vcard::isWord(line.name, name)) return &line;
  }
  return nullptr;
}

bool WrittenCard::isGroup() const {
  const auto* kind = find("KIND");
  return kind != nullptr && vcard::isWord(kind->value, "GROUP");
}

std::string textOf(std::string_view value) {
  return vcard::unescaped(value);
}

}  // namespace ox::formats
