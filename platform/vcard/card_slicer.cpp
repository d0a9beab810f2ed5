#include "platform/vcard/card_slicer.hpp"

#include <algorithm>
#include <cstring>
#include <utility>

#include "base/text/utf8.hpp"
#include "platform/vcard/ascii.hpp"
#include "platform/vcard/markers.hpp"

namespace ox::vcard {
namespace {

constexpr std::size_t kBlock = 256U << 10U;
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

// False for nearly every line: it neither ends in a colon and blanks nor in the word VCARD.
bool mayOpenNested(std::string_view line) {
  const char last = upper(line.back());
  return last == ':' || last == 'D' || isBlank(last) || last == '\0';
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

// True for an END line that lost its tail.
bool isCutEnd(std::string_view line) {
  constexpr std::string_view kEnd = "END:VCARD";
  line = trimmed(line);
  return line.size() >= 3 && line.size() < kEnd.size() && isWord(line, kEnd.substr(0, line.size()));
}

}  // namespace

void CardSlicer::seek(Mark& mark) const {
  if (mark.at >= next_ && mark.at < end_ && buffer_[mark.at] == mark.byte) return;
  const std::size_t from = std::max(mark.at, next_);
  const auto* found =
      from < end_ ? std::memchr(buffer_.get() + from, mark.byte, end_ - from) : nullptr;
  mark.at = found == nullptr
                ? end_
                : static_cast<std::size_t>(static_cast<const char*>(found) - buffer_.get());
}

// The first line break at or after next_; end_ when the buffer holds none.
std::size_t CardSlicer::findBreak() {
  seek(feed_);
  seek(carriage_);
  return std::min(feed_.at, carriage_.at);
}

void CardSlicer::makeRoom() {
  const std::size_t kept = keeping_ ? card_ : next_;
  if (kept > 0) {
    std::memmove(buffer_.get(), buffer_.get() + kept, end_ - kept);
    end_ -= kept;
    next_ -= kept;
    card_ -= keeping_ ? kept : card_;
    feed_.at -= std::min(feed_.at, kept);
    carriage_.at -= std::min(carriage_.at, kept);
  }
  if (capacity_ - end_ >= kBlock) return;
  const std::size_t wanted = std::max(2 * capacity_, 2 * kBlock);
  auto larger = std::make_unique_for_overwrite<char[]>(wanted);
  if (end_ > 0) std::memcpy(larger.get(), buffer_.get(), end_);
  buffer_ = std::move(larger);
  capacity_ = wanted;
}

bool CardSlicer::fill() {
  if (atEnd_) return false;
  makeRoom();
  const auto got = source_.read(buffer_.get() + end_, kBlock);
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
}

bool CardSlicer::nextLine(Line& line) {
  line.whole = true;
  std::size_t stop = findBreak();
  // A carriage return near the end may be the first part of a longer break.
  while (stop == end_ || (buffer_[stop] == '\r' && stop + 2 >= end_ && !atEnd_)) {
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
  next_ = stop;
  if (stop == end_) return true;
  next_ += breakLength(stop);
  return true;
}

// Of the line break at that place: LF, CR, CRLF, or the CR CR LF that comes of converting twice.
std::size_t CardSlicer::breakLength(std::size_t at) const {
  const std::string_view rest(buffer_.get() + at, end_ - at);
  if (rest.starts_with("\r\r\n")) return 3;
  return rest.starts_with("\r\n") ? 2 : 1;
}

void CardSlicer::takeBack(const Line& line) {
  next_ = line.start;
  feed_.at = next_;
  carriage_.at = next_;
  --lineNumber_;
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
  card.lines.clear();
  card.refusal.clear();
  card.repairs.clear();
  card_ = line.start;
  keeping_ = true;
  depth_ = 1;
  agentBefore_ = false;
}

// From here on the card's lines are only counted, not kept.
void CardSlicer::refuse(RawCard& card, std::string reason) {
  if (card.refusal.empty()) card.refusal = std::move(reason);
  keeping_ = false;
}

CardSlicer::Step CardSlicer::addLine(RawCard& card, const Line& line) {
  if (!keeping_ && card.refusal.empty()) refuse(card, "the card is larger than 64 MiB");
  const bool opens = line.whole && isBegin(line.text);
  if (opens && !agentBefore_) return Step::CutOff;
  if (line.whole && isEnd(line.text) && --depth_ == 0) return Step::Closed;
  if (opens) ++depth_;
  if (!isBlankLine(line.text)) {
    const auto agent = agentValue(line.text);
    agentBefore_ = agent.data() != nullptr && agent.empty();
    if (isBegin(agent)) ++depth_;
  }
  if (depth_ > 1 + kMaxDepth) refuse(card, "cards are nested more than 8 deep");
  if (card.lines.size() >= kMaxLines) refuse(card, "the card has more than 1048576 lines");
  if (keeping_) {
    card.lines.push_back({static_cast<std::uint32_t>(line.start - card_),
                          static_cast<std::uint32_t>(line.text.size())});
  }
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
  card.refusal = "the file ends inside the card";
}

bool CardSlicer::next(RawCard& card) {
  keeping_ = false;
  Line line;
  while (true) {
    if (!nextLine(line)) return false;
    if (line.whole && isBegin(line.text)) break;
    addStray(line.text);
  }
  startCard(card, line);
  Step step = Step::Inside;
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
