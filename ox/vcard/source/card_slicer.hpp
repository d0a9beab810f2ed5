#pragma once

#include <cassert>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "ox/vcard/lines/ascii.hpp"
#include "ox/vcard/lines/problem.hpp"
#include "ox/vcard/source/byte_source.hpp"

namespace ox::vcard {

// One physical line of a card without its line break, as a part of RawCard::bytes.
struct LineSpan {
  std::uint32_t offset = 0;
  std::uint32_t length = 0;
  bool isAscii = false;  // certainly
};

// One card as the file spells it. The views are borrowed from the slicer until its next call.
struct RawCard {
  std::size_t line = 0;         // of BEGIN, or the first one where that is missing
  std::size_t firstLine = 0;    // of lines[0]
  std::string_view bytes;       // from BEGIN on
  std::vector<LineSpan> lines;  // what stands between BEGIN and END, blank lines included
  std::string refusal;          // not empty: the card cannot be read, and why
  std::vector<Problem> repairs;

  std::string_view lineAt(std::size_t index) const {
    assert(index < lines.size());
    return {bytes.data() + lines[index].offset, lines[index].length};
  }
  // In the file.
  std::size_t numberOf(std::size_t index) const { return firstLine + index; }
  // True when the line after that one starts with a blank.
  bool isContinued(std::size_t index) const {
    return ++index < lines.size() && lines[index].length > 0 && isBlank(bytes[lines[index].offset]);
  }
};

// Cuts a source into cards by their BEGIN and END lines. LF, CR, CRLF and CR CR LF end a line. A
// BEGIN right after an AGENT line without value opens a nested card, which belongs to the outer
// one. Any other BEGIN inside a card does so too when lines of the outer card follow the END that
// belongs to it; else the END before it is missing. A card whose BEGIN or END is missing is
// repaired: it starts with the first line that names a property, and ends before the next card, or
// with the source. Without both it is text outside of any card.
class CardSlicer {
 public:
  static constexpr std::size_t kMaxCard = 64U << 20U;
  static constexpr std::size_t kMaxLines = 1U << 20U;
  static constexpr std::size_t kMaxDepth = 8;  // cards inside a card
  static constexpr std::size_t kStrayKept = 100;
  // How far behind the start of a card is looked for what tells where it ends.
  static constexpr std::size_t kMostAhead = 32U << 20U;

  explicit CardSlicer(ByteSource& source) : source_(source) {}

  // The next card; false at the end.
  bool next(RawCard& card);

  std::uint64_t bytesRead() const { return bytesRead_; }
  const std::vector<Problem>& strayLines() const { return stray_; }
  std::size_t strayCount() const { return strayCount_; }

 private:
  struct Line {
    std::string_view text;  // only its front when it is too long to keep
    std::size_t start = 0;  // in the buffer
    bool whole = true;
    bool isAscii = true;
  };
  enum class Step { Inside, Closed, CutOff };

  bool nextLine(Line& line);
  bool lookAhead(Line& line, bool (CardSlicer::*look)());
  bool isNestedAhead();
  bool isOuterAhead();
  bool isEndAhead();
  bool startsHeadless(Line& line);
  std::size_t findBreak();
  bool fill();
  void makeRoom();
  // The next line starts there.
  void goTo(std::size_t place) {
    next_ = place;
    scanned_ = place;
    isAscii_ = true;
  }
  void takeBack(const Line& line);
  void dropFront(Line& line);
  void addStray(std::string_view text);

  void startCard(RawCard& card, const Line& line);
  Step addLine(RawCard& card, Line& line);
  Step addUnusualLine(RawCard& card, Line& line);
  void keepLine(RawCard& card, const Line& line) const {
    assert(line.whole && line.start >= card_ && "the card's bytes are one run in the buffer");
    card.lines.push_back({static_cast<std::uint32_t>(line.start - card_),
                          static_cast<std::uint32_t>(line.text.size()), line.isAscii});
  }
  void refuse(RawCard& card, std::string reason);
  void endOfSource(RawCard& card) const;

  ByteSource& source_;
  std::unique_ptr<char[]> buffer_;
  std::size_t capacity_ = 0;
  std::size_t end_ = 0;      // of the bytes in the buffer
  std::size_t next_ = 0;     // where the next line starts
  std::size_t card_ = 0;     // where the kept card starts
  bool keeping_ = false;     // everything from card_ on must stay in the buffer
  bool atEnd_ = false;       // the source has no more
  bool isLooking_ = false;   // ahead
  std::size_t scanned_ = 0;  // the line that starts at next_ has no break before this
  bool isAscii_ = true;      // and is ASCII up to there
  std::string front_;        // of a line that is too long to keep
  std::size_t lineNumber_ = 0;
  std::uint64_t bytesRead_ = 0;

  std::size_t depth_ = 0;  // 1 inside a card
  bool agentBefore_ = false;
  bool isNested_ = false;             // in a card that no AGENT announced
  std::size_t noHeadlessBefore_ = 0;  // line; up to there no END was found
  std::vector<Problem> stray_;
  std::size_t strayCount_ = 0;
};

}  // namespace ox::vcard
