#include "ox/sync/cards/text_lines.hpp"

#include <algorithm>

#include "ox/vcard/lines/ascii.hpp"
#include "ox/vcard/lines/content_line.hpp"
#include "ox/vcard/lines/markers.hpp"

namespace ox::sync {
namespace {

std::string_view withoutBreak(std::string_view line) {
  while (!line.empty() && (line.back() == '\n' || line.back() == '\r')) line.remove_suffix(1);
  return line;
}

// The next physical line with its line end, which is taken from the text.
std::string_view takeLine(std::string_view& text) {
  const auto feed = text.find('\n');
  const auto line = text.substr(0, feed == std::string_view::npos ? text.size() : feed + 1);
  text.remove_prefix(line.size());
  return line;
}

class Cutter {
 public:
  // False once the card is over.
  bool add(std::string_view bytes) {
    const auto line = withoutBreak(bytes);
    if (depth_ == 0) {
      if (!vcard::isBegin(line)) return true;
      depth_ = 1;
      start(bytes, line);
      return true;
    }
    if (vcard::isBegin(line)) ++depth_;
    const bool isEnd = vcard::isEnd(line);
    if (isEnd) --depth_;
    if (depth_ > 1 || (isEnd && depth_ == 1)) {
      extend(bytes, "\n", line);
    } else if (!line.empty() && vcard::isBlank(line.front())) {
      extend(bytes, "", line.substr(1));
    } else {
      vcard::ContentLine parsed;
      if (vcard::parseHead(line, parsed) != std::string_view::npos) {
        if (vcard::isWord(parsed.name, "AGENT") && vcard::isBegin(parsed.value)) ++depth_;
        start(bytes, line);
      } else {
        extend(bytes, "\n", line);
      }
    }
    return depth_ > 0;
  }

  std::vector<TextLine> lines() && {
    for (auto& line : lines_) {
      const auto name = vcard::lineNameOf(line.unfolded);
      line.group = name.group;
      line.name = name.name;
      std::ranges::transform(line.name, line.name.begin(), vcard::upper);
      if (!line.group.empty()) line.unfolded.erase(0, line.group.size() + 1);
    }
    return std::move(lines_);
  }

 private:
  void start(std::string_view bytes, std::string_view line) {
    lines_.push_back({std::string(bytes), std::string(line), {}, {}});
  }
  void extend(std::string_view bytes, std::string_view joint, std::string_view line) {
    lines_.back().bytes += bytes;
    lines_.back().unfolded.append(joint).append(line);
  }

  std::vector<TextLine> lines_;
  int depth_ = 0;
};

}  // namespace

std::vector<TextLine> linesOf(std::string_view text) {
  Cutter cutter;
  while (!text.empty() && cutter.add(takeLine(text))) continue;
  return std::move(cutter).lines();
}

std::string_view valueOf(const std::vector<TextLine>& lines, std::string_view name) {
  const auto line = std::ranges::find(lines, name, &TextLine::name);
  if (line == lines.end()) return {};
  const auto colon = line->unfolded.find(':');
  if (colon == std::string::npos) return {};
  return vcard::trimmed(std::string_view(line->unfolded).substr(colon + 1));
}

}  // namespace ox::sync
