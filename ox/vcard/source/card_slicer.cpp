#include "ox/vcard/source/card_slicer.hpp"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <utility>

#include "ox/base/text/sixteen_bytes.hpp"
#include "ox/base/text/utf8.hpp"
#include "ox/vcard/lines/ascii.hpp"
#include "ox/vcard/lines/content_line.hpp"
#include "ox/vcard/lines/markers.hpp"

namespace ox::vcard {
namespace {

constexpr std::size_t kBlock = 256U << 10U;
// Of the first block, which doubles: a single card takes no room for a whole file.
constexpr std::size_t kFirstBlock = 8U << 10U;
// Of a line that is too long to keep, this much tells what it is.
constexpr std::size_t kFront = 64;

// What follows the group of a line; asked of every line, so it looks at the front only.
std::string_view withoutGroup(std::string_view line) {
  constexpr std::size_t kLongestGroup = 16;
  const auto count = std::min(line.size(), kLongestGroup);
  for (std::size_t i = 0; i < count && line[i] != ':' && line[i] != ';'; ++i) {
    if (line[i] == '.') return line.substr(i + 1);
  }
  return line;
}

// Of the line break that the text starts with: LF, CR, CRLF, or the CR CR LF that comes of
// converting twice.
std::size_t breakLength(std::string_view text) {
  if (text.front() == '\n' || text.size() == 1) return 1;
  if (text[1] == '\n') return 2;
  return text.starts_with("\r\r\n") ? 3 : 1;
}

// Letters that tell a line apart from nearly every other.
enum Mark : std::uint8_t {
  kFirstOfMarker = 1,  // BEGIN, END, or what stands before BEGIN at the start of a file
  kLastOfOpener = 2,   // of a line that ends in a colon and blanks, or in the word VCARD
};

constexpr auto kMarks = [] {
  std::array<std::uint8_t, 256> marks{};
  for (const char c : std::string_view("BbEe\xEF")) {
    marks[static_cast<unsigned char>(c)] |= std::uint8_t{kFirstOfMarker};
  }
  for (const char c : std::string_view(":Dd \t\0", 6)) {
    marks[static_cast<unsigned char>(c)] |= std::uint8_t{kLastOfOpener};
  }
  return marks;
}();

bool is(char c, Mark mark) {
  return (kMarks[static_cast<unsigned char>(c)] & mark) != 0;
}

bool mayOpenNested(std::string_view line) {
  return is(line.back(), kLastOfOpener);
}

// Nearly every line: it cannot open or close a card, and is not blank.
bool isOrdinary(std::string_view line) {
  return !line.empty() && !is(line.front(), kFirstOfMarker) && !mayOpenNested(line);
}

// The value of an AGENT line without blanks, which opens a nested card when it is empty or a BEGIN;
// null data for other lines, and where it is anything else.
std::string_view agentValue(std::string_view line) {
  if (!mayOpenNested(line)) return {};
  line = withoutGroup(line);
  if (line.size() < 6 || upper(line.front()) != 'A' || !startsWithWord(line, "AGENT")) return {};
  const auto colon = line.find(':');
  if (colon == std::string_view::npos || (line[5] != ':' && line[5] != ';')) return {};
  return trimmed(line.substr(colon + 1));
}

// A name with what follows one.
std::string_view propertyName(std::string_view line) {
  const auto front = lineNameOf(line);
  if (front.end == 0 || front.end == line.size()) return {};
  const char next = line[front.end];
  return next == ':' || next == ';' ? front.name : std::string_view();
}

// What a card may start with whose BEGIN is missing: names that other text hardly has.
constexpr std::array<std::string_view, 20> kFirstNames = {
    "VERSION", "N",        "FN",   "PRODID", "UID",   "REV",       "KIND",
    "PROFILE", "NICKNAME", "ORG",  "TITLE",  "PHOTO", "NOTE",      "TEL",
    "EMAIL",   "ADR",      "BDAY", "URL",    "IMPP",  "CATEGORIES"};

bool mayStartCard(std::string_view line) {
  if (line.empty() || !isLetter(line.front())) return false;
  const auto name = propertyName(line);
  return !name.empty() && std::ranges::any_of(kFirstNames, [&](std::string_view first) {
    return isWord(name, first);
  });
}

// True for an END line that lost its tail.
bool isCutEnd(std::string_view line) {
  constexpr std::string_view kEnd = "END:VCARD";
  line = trimmed(line);
  return line.size() >= 3 && line.size() < kEnd.size() && isWord(line, kEnd.substr(0, line.size()));
}

}  // namespace

// The first line break at or after next_; end_ when the buffer holds none. Every byte is looked at
// once, and by the way whether it is ASCII.
std::size_t CardSlicer::findBreak() {
  const char* const text = buffer_.get();
  std::size_t at = scanned_;
  SixteenBytes seen;
  SixteenBytes breaks;
  while (breaks.isZero() && end_ - at >= SixteenBytes::kCount) {
    const SixteenBytes bytes(text + at);
    seen = seen | bytes;
    breaks = bytes.equalTo('\n') | bytes.equalTo('\r');
    at += breaks.isZero() ? SixteenBytes::kCount : breaks.firstSet();
  }
  isAscii_ = isAscii_ && seen.isAscii();
  if (breaks.isZero()) {
    for (; at < end_ && text[at] != '\n' && text[at] != '\r'; ++at) {
      isAscii_ = isAscii_ && (text[at] & 0x80) == 0;
    }
  }
  scanned_ = at;
  return at;
}

void CardSlicer::makeRoom() {
  const std::size_t kept = keeping_ ? card_ : next_;
  if (kept > 0) {
    std::memmove(buffer_.get(), buffer_.get() + kept, end_ - kept);
    end_ -= kept;
    next_ -= kept;
    card_ -= keeping_ ? kept : card_;
    scanned_ -= kept;
  }
  const auto block = std::clamp(capacity_ / 2, kFirstBlock, kBlock);
  if (capacity_ - end_ >= block) return;
  const auto wanted = std::max(2 * capacity_, 2 * block);
  auto larger = std::make_unique_for_overwrite<char[]>(wanted);
  if (end_ > 0) std::memcpy(larger.get(), buffer_.get(), end_);
  buffer_ = std::move(larger);
  capacity_ = wanted;
}

bool CardSlicer::fill() {
  if (atEnd_) return false;
  makeRoom();
  const auto got = source_.read(buffer_.get() + end_, std::min(capacity_ - end_, kBlock));
  if (got == 0) atEnd_ = true;
  end_ += got;
  bytesRead_ += got;
  return got > 0;
}

// Forgets what is in the buffer of a line that is not kept, but for its front.
void CardSlicer::dropFront(Line& line) {
  if (line.whole) front_.assign(buffer_.get() + next_, std::min(kFront, end_ - next_));
  line.whole = false;
  next_ = end_;
  scanned_ = end_;
}

bool CardSlicer::nextLine(Line& line) {
  line.whole = true;
  std::size_t stop = findBreak();
  // A carriage return near the end may be the first part of a longer break.
  while (stop == end_ || (buffer_[stop] == '\r' && stop + 2 >= end_ && !atEnd_)) {
    if (isLooking_ && end_ - card_ > kMostAhead) return false;
    if (keeping_ && end_ - card_ > kMaxCard) keeping_ = false;
    if (!keeping_ && end_ - next_ > kBlock && stop == end_) dropFront(line);
    if (!fill()) {
      stop = findBreak();
      break;
    }
    stop = findBreak();
  }
  if (stop == end_ && next_ == end_ && line.whole) return false;
  ++lineNumber_;
  line.start = next_;
  line.text = line.whole ? std::string_view(buffer_.get() + next_, stop - next_) : front_;
  line.isAscii = isAscii_;
  goTo(stop == end_ ? stop : stop + breakLength({buffer_.get() + stop, end_ - stop}));
  return true;
}

void CardSlicer::takeBack(const Line& line) {
  goTo(line.start);
  --lineNumber_;
}

// Looks at lines behind that one, which is kept, and goes back to it.
bool CardSlicer::lookAhead(Line& line, bool (CardSlicer::*look)()) {
  assert(keeping_ && line.whole && "nothing of what is looked at again is lost");
  const auto start = line.start - card_;
  const auto behind = next_ - card_;
  const auto number = lineNumber_;
  isLooking_ = true;
  const bool found = (this->*look)();
  isLooking_ = false;
  line.start = card_ + start;
  line.text = {buffer_.get() + line.start, line.text.size()};
  goTo(card_ + behind);
  lineNumber_ = number;
  return found;
}

// Behind a BEGIN within a card: true when the END that belongs to it stands before further cards,
// and lines of the outer card behind it.
bool CardSlicer::isNestedAhead() {
  std::size_t depth = 1;
  Line line;
  while (nextLine(line)) {
    if (isBegin(line.text) || isBegin(agentValue(line.text))) {
      if (++depth > kMaxDepth) return false;
    } else if (isEnd(line.text)) {
      if (!isOuterAhead()) return false;
      if (--depth == 0) return true;
    }
  }
  return false;
}

// Behind the END of what may be nested. A VERSION starts a card whose BEGIN is missing.
bool CardSlicer::isOuterAhead() {
  const auto place = next_ - card_;
  bool isOuter = false;
  Line line;
  while (nextLine(line) && !isBegin(line.text)) {
    const auto name = propertyName(line.text);
    if (name.empty()) continue;
    isOuter = !isWord(name, "VERSION");
    break;
  }
  goTo(card_ + place);
  return isOuter;
}

// Behind the first line of a card without BEGIN: true when its END stands before the next card.
bool CardSlicer::isEndAhead() {
  Line line;
  while (nextLine(line)) {
    if (isEnd(line.text)) return true;
    if (isBegin(line.text)) break;
  }
  noHeadlessBefore_ = lineNumber_;
  return false;
}

// True, and everything as it was, when a card starts with that line, though no BEGIN says so.
bool CardSlicer::startsHeadless(Line& line) {
  if (!line.whole || lineNumber_ < noHeadlessBefore_ || !mayStartCard(line.text)) return false;
  card_ = line.start;
  keeping_ = true;
  const bool starts = lookAhead(line, &CardSlicer::isEndAhead);
  keeping_ = false;
  return starts;
}

void CardSlicer::addStray(std::string_view text) {
  if (isBlankLine(text)) return;
  ++strayCount_;
  if (stray_.size() >= kStrayKept) return;
  constexpr std::size_t kShown = 60;
  stray_.push_back(
      {lineNumber_, "text outside of any card: " + validUtf8(std::string(text.substr(0, kShown)))});
}

void CardSlicer::startCard(RawCard& card, const Line& line) {
  card.line = lineNumber_;
  card.firstLine = lineNumber_ + 1;
  card.lines.clear();
  card.refusal.clear();
  card.repairs.clear();
  card_ = line.start;
  keeping_ = true;
  depth_ = 1;
  agentBefore_ = false;
  isNested_ = false;
}

// From here on the card's lines are only counted, not kept.
void CardSlicer::refuse(RawCard& card, std::string reason) {
  if (card.refusal.empty()) card.refusal = std::move(reason);
  keeping_ = false;
}

CardSlicer::Step CardSlicer::addLine(RawCard& card, Line& line) {
  if (!keeping_ || !isOrdinary(line.text) || card.lines.size() >= kMaxLines) {
    return addUnusualLine(card, line);
  }
  agentBefore_ = false;
  keepLine(card, line);
  return Step::Inside;
}

CardSlicer::Step CardSlicer::addUnusualLine(RawCard& card, Line& line) {
  if (!keeping_ && card.refusal.empty()) refuse(card, "the card is larger than 64 MiB");
  const bool opens = line.whole && isBegin(line.text);
  if (opens && !agentBefore_ && !isNested_) {
    if (depth_ > 1 || !keeping_ || !lookAhead(line, &CardSlicer::isNestedAhead)) {
      return Step::CutOff;
    }
    isNested_ = true;
  }
  if (line.whole && isEnd(line.text)) {
    if (--depth_ == 0) return Step::Closed;
    isNested_ = isNested_ && depth_ > 1;
  }
  if (opens) ++depth_;
  if (!isBlankLine(line.text)) {
    const auto agent = agentValue(line.text);
    agentBefore_ = agent.data() != nullptr && agent.empty();
    if (isBegin(agent)) ++depth_;
  }
  if (depth_ > 1 + kMaxDepth) refuse(card, "cards are nested more than 8 deep");
  if (card.lines.size() >= kMaxLines) refuse(card, "the card has more than 1048576 lines");
  if (keeping_) keepLine(card, line);
  return Step::Inside;
}

void CardSlicer::endOfSource(RawCard& card) const {
  if (!card.refusal.empty()) return;
  if (depth_ == 1 && !card.lines.empty()) {
    const auto& span = card.lines.back();
    if (isCutEnd({buffer_.get() + card_ + span.offset, span.length})) {
      card.lines.pop_back();
      card.repairs.push_back({lineNumber_, "END:VCARD is cut off"});
      return;
    }
  }
  card.repairs.push_back({lineNumber_, "END:VCARD is missing at the end of the file"});
}

bool CardSlicer::next(RawCard& card) {
  keeping_ = false;
  Line line;
  bool isHeadless = false;
  while (!isHeadless) {
    if (!nextLine(line)) return false;
    if (line.whole && isBegin(line.text)) break;
    isHeadless = startsHeadless(line);
    if (!isHeadless) addStray(line.text);
  }
  startCard(card, line);
  Step step = Step::Inside;
  if (isHeadless) {
    card.firstLine = lineNumber_;
    card.repairs.push_back({lineNumber_, "BEGIN:VCARD is missing"});
    step = addLine(card, line);
  }
  while (step == Step::Inside && nextLine(line)) step = addLine(card, line);
  if (step == Step::Inside) endOfSource(card);
  if (step == Step::CutOff) {
    if (card.refusal.empty()) {
      card.repairs.push_back({lineNumber_, "END:VCARD is missing before the next card"});
    }
    takeBack(line);
  }
  if (card.refusal.empty()) card.bytes = {buffer_.get() + card_, next_ - card_};
  return true;
}

}  // namespace ox::vcard
