#include "ox/sync/cards/lines/text_lines.hpp"

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

// Physical lines that are one, folded.
struct FoldedLine {
  std::string_view bytes;  // with line ends
  std::string unfolded;
};

// The next one, which is taken from the text.
FoldedLine takeLine(std::string_view& text) {
  FoldedLine line;
  const auto whole = text;
  std::size_t size = 0;
  do {
    const auto feed = text.find('\n');
    const auto next = text.substr(0, feed == std::string_view::npos ? text.size() : feed + 1);
    text.remove_prefix(next.size());
    line.unfolded += withoutBreak(size == 0 ? next : next.substr(1));
    size += next.size();
  } while (!text.empty() && vcard::isBlank(text.front()));
  line.bytes = whole.substr(0, size);
  return line;
}

bool isContentLine(std::string_view line) {
  vcard::ContentLine parsed;
  return vcard::parseHead(line, parsed) != std::string_view::npos;
}

bool beginsAgent(std::string_view line) {
  const auto colon = line.find(':');
  return vcard::startsWithWord(line, "AGENT") && colon != std::string_view::npos &&
         vcard::isBegin(vcard::trimmed(line.substr(colon + 1)));
}

class Cutter {
 public:
  // False once the card is over.
  bool add(const FoldedLine& line) {
    const bool isBegin = vcard::isBegin(line.unfolded);
    if (depth_ == 0) {
      if (!isBegin) return true;
      depth_ = 1;
      lines_.push_back({std::string(line.bytes), line.unfolded, {}, {}});
      return true;
    }
    const bool isNested = depth_ > 1 || isBegin;
    const bool isAgent = beginsAgent(line.unfolded);
    if (isBegin || isAgent) ++depth_;
    if (vcard::isEnd(line.unfolded)) --depth_;
    if (isNested || !isContentLine(line.unfolded)) {
      lines_.back().bytes += line.bytes;
      lines_.back().unfolded.append(1, '\n').append(line.unfolded);
    } else {
      lines_.push_back({std::string(line.bytes), line.unfolded, {}, {}});
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
