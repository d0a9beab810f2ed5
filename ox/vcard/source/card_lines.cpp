#include "ox/vcard/source/card_lines.hpp"

#include <algorithm>
#include <array>
#include <cassert>
#include <cstdint>
#include <utility>

#include "ox/base/text/charset.hpp"
#include "ox/base/text/utf8.hpp"
#include "ox/vcard/lines/decode.hpp"
#include "ox/vcard/lines/markers.hpp"

namespace ox::vcard {
namespace {

constexpr auto npos = std::string_view::npos;

// Charsets in which bytes below 80 may stand for something else than ASCII.
bool isShifting(std::string_view charset) {
  return startsWithWord(charset, "ISO-2022") || startsWithWord(charset, "HZ") ||
         startsWithWord(charset, "UTF-7") || startsWithWord(charset, "UTF-16");
}

// The frame of a card is UTF-8 in any case, and no character goes beyond its line.
bool isAllUtf8(const RawCard& card) {
  for (std::size_t i = 0; i < card.lines.size(); ++i) {
    if (!card.lines[i].isAscii && !isValidUtf8(card.lineAt(i))) return false;
  }
  return true;
}

// Names of properties whose values have no blanks: what stands at a break of theirs is the fold's.
constexpr std::array<std::string_view, 18> kWithoutBlanks = {"EMAIL",
                                                             "URL",
                                                             "UID",
                                                             "REV",
                                                             "BDAY",
                                                             "ANNIVERSARY",
                                                             "IMPP",
                                                             "GEO",
                                                             "MEMBER",
                                                             "SOURCE",
                                                             "FBURL",
                                                             "CALURI",
                                                             "CALADRURI",
                                                             "X-JABBER",
                                                             "X-AIM",
                                                             "X-ICQ",
                                                             "X-SOCIALPROFILE",
                                                             "X-ADDRESSBOOKSERVER-MEMBER"};

bool hasNoBlanks(const ContentLine& line) {
  return line.encoding == Encoding::Base64 ||
         std::ranges::any_of(kWithoutBlanks,
                             [&](std::string_view name) { return isWord(line.name, name); });
}

// What never goes over several lines, so that a line behind it is no part of it.
bool isSingleLine(const ContentLine& line) {
  return isWord(line.name, "VERSION") || isWord(line.name, "UID") || isWord(line.name, "REV") ||
         isWord(line.name, "KIND") || isWord(line.name, "BEGIN") || isWord(line.name, "END");
}

// What group and name at the front of a line consist of, as lineNameOf() takes them.
constexpr auto kInFront = [] {
  std::array<bool, 256> inFront{};
  for (std::size_t i = 0; i < inFront.size(); ++i) {
    const char c = static_cast<char>(i);
    inFront[i] = isLetter(c) || isDigit(c) || c == '-' || c == '_' || c == '.';
  }
  return inFront;
}();

// True when that is surely a content line. Asked of every line, so it looks at the front only.
bool isLikeProperty(std::string_view line) {
  std::size_t end = 0;
  while (end < line.size() && kInFront[static_cast<unsigned char>(line[end])]) ++end;
  if (end == 0 || end == line.size() || line[end - 1] == '.') return false;
  return line[end] == ':' || (line[end] == ';' && line.find(':', end) != npos);
}

// True for a line that may have been broken because it was too long.
bool isFull(const LineSpan& line) {
  constexpr std::size_t kShortest = 70;
  constexpr std::size_t kLongest = 80;
  return line.length >= kShortest && line.length <= kLongest;
}

// The front of a text for a message.
std::string excerpt(std::string_view text) {
  constexpr std::size_t kShown = 60;
  return validUtf8(std::string(text.substr(0, kShown))) + (text.size() > kShown ? "..." : "");
}

// Every CRLF becomes a line feed.
void withLineFeeds(std::string& text) {
  if (text.find('\r') == npos) return;
  std::size_t kept = 0;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] == '\r' && i + 1 < text.size() && text[i + 1] == '\n') continue;
    text[kept++] = text[i];
  }
  text.resize(kept);
}

}  // namespace

void CardLines::start(RawCard& card, Dialect dialect, bool trustBytes) {
  card_ = &card;
  trustBytes_ = trustBytes;
  dialect_ = dialect;
  validUtf8_ = isAllUtf8(card);
  guessed_.clear();
  next_ = 0;
}

const ContentLine* CardLines::next() {
  assert(card_ != nullptr && "a card was started");
  while (next_ < card_->lines.size()) {
    if (readLine(next_)) return &line_;
  }
  return nullptr;
}

// Reads the line that starts at that physical line; false when there is none to give.
bool CardLines::readLine(std::size_t index) {
  text_ = card_->lineAt(index);
  next_ = index + 1;
  if (text_.empty()) return false;
  if (isBlank(text_.front())) {
    text_ = trimmed(text_);
    if (text_.empty()) return false;
  }
  if (isBegin(text_)) {
    joined_.assign("AGENT:").append(text_);
    text_ = joined_;
    addRepair(index, "a card within the card, kept as its AGENT");
  }
  if (card_->isContinued(index)) unfold(index);
  if (text_.back() == '=' && parseHead(text_, line_) != npos &&
      line_.encoding == Encoding::QuotedPrintable) {
    joinSoftBreaks();
  }
  const auto colon = parseHead(text_, line_);
  if (colon == npos) {
    passOver(index, text_);
    return false;
  }
  if (next_ < card_->lines.size()) {
    const auto* const before = text_.data();
    const auto size = text_.size();
    if (line_.encoding == Encoding::Base64) {
      joinBase64();
    } else if (isWord(line_.name, "AGENT") && startsNested(line_)) {
      joinNested();
    } else if (!isLikeProperty(card_->lineAt(next_)) && !isSingleLine(line_)) {
      joinRawLines(colon + 1);
    }
    // Only the head again: a lone quote in it would find a partner in what was joined.
    if (text_.data() != before || text_.size() != size) {
      parseHead(text_.substr(0, colon + 1), line_);
    }
  }
  line_.number = card_->numberOf(index);
  if (!validUtf8_ && !isValidUtf8(line_.head)) repairHead();
  line_.value = text_.substr(colon + 1);
  if (!validUtf8_ || line_.encoding == Encoding::QuotedPrintable || !line_.charset.empty() ||
      !given_.empty()) {
    decodeValue();
  }
  return true;
}

// A guessed charset may take a mark of the head for a part of a letter: then only what is no letter
// of UTF-8 goes.
void CardLines::repairHead() {
  const auto raw = line_.head;
  const auto parameters = line_.parameters.size();
  head_ = toUtf8(raw, {}) + ':';
  if (parseHead(head_, line_) + 1 == head_.size() && line_.parameters.size() == parameters) return;
  head_ = validUtf8(std::string(raw)) + ':';
  parseHead(head_, line_);
}

// Joins the lines that continue this one: RFC 6350, section 3.2.
void CardLines::unfold(std::size_t index) {
  if (!card_->isContinued(next_ - 1)) return;
  // A soft break goes first: the blank after it belongs to the text.
  if (text_.back() == '=' && parseHead(text_, line_) != npos &&
      line_.encoding == Encoding::QuotedPrintable) {
    return;
  }
  if (index + 1 == next_) joined_.assign(text_);
  if (dialect_ == Dialect::V21) {
    unfoldAtBlanks();
  } else {
    while (card_->isContinued(next_ - 1)) joined_.append(card_->lineAt(next_++).substr(1));
  }
  text_ = joined_;
}

// In vCard 2.1 lines are broken at blanks, of which one stays. Many programs fold as in 3.0
// nevertheless: where all lines are of one length, or a blank would stand in what has none, it is
// the fold's.
void CardLines::unfoldAtBlanks() {
  const bool isFixed = foldsAtOneWidth(next_ - 1);
  ContentLine line;
  auto colon = npos;
  bool isTight = true;
  while (card_->isContinued(next_ - 1)) {
    if (colon == npos) {
      colon = parseHead(joined_, line);
      isTight = colon == npos || hasNoBlanks(line);
    }
    const auto next = card_->lineAt(next_++);
    if (isFixed) {
      joined_.append(next.substr(1));
      continue;
    }
    const auto rest = trimmed(next);
    if (rest.empty()) continue;
    while (!joined_.empty() && isBlank(joined_.back())) joined_.pop_back();
    if (!isTight && joined_.size() > colon + 1) joined_ += ' ';
    joined_.append(next.substr(static_cast<std::size_t>(rest.data() - next.data())));
  }
}

// True for two full lines or more of one length, of which only the first may lack the fold's blank.
bool CardLines::foldsAtOneWidth(std::size_t index) const {
  constexpr std::uint32_t kShortest = 60;
  const auto lengthAt = [&](std::size_t at) { return card_->lines[at].length; };
  const auto first = index;
  while (card_->isContinued(index + 1)) ++index;
  if (index == first) return false;  // one fold tells nothing
  const auto length = lengthAt(index);
  if (length < kShortest || lengthAt(index + 1) > length ||
      (lengthAt(first) != length && lengthAt(first) + 1 != length)) {
    return false;
  }
  for (auto at = first + 1; at < index; ++at) {
    if (lengthAt(at) != length) return false;
  }
  return true;
}

// RFC 2045, section 6.7, rule 5: an equals sign at the end of a line takes the break away.
void CardLines::joinSoftBreaks() {
  if (text_.data() != joined_.data()) joined_.assign(text_);
  while (!joined_.empty() && joined_.back() == '=') {
    joined_.pop_back();
    if (next_ == card_->lines.size()) break;
    joined_.append(card_->lineAt(next_++));
  }
  text_ = joined_;
  unfold(next_);
}

// Base64 goes on over lines with and without a leading blank until a blank line or a property.
void CardLines::joinBase64() {
  while (next_ < card_->lines.size()) {
    const auto line = card_->lineAt(next_);
    if (line.empty()) break;
    // A name may be so long that its colon stands on the next line.
    if (!isBlank(line.front()) && (!looksLikeBase64(line) || startsLine(next_))) break;
    if (text_.data() != joined_.data()) joined_.assign(text_);
    joined_.append(trimmed(line));
    text_ = joined_;
    ++next_;
  }
}

bool CardLines::startsNested(const ContentLine& line) const {
  const auto value = text_.substr(line.head.size() + 1);
  if (isBegin(value)) return true;
  if (!isBlankLine(value)) return false;
  std::size_t index = next_;
  while (index < card_->lines.size() && isBlankLine(card_->lineAt(index))) ++index;
  return index < card_->lines.size() && isBegin(card_->lineAt(index));
}

// Takes a whole nested card into one text, its lines parted by line feeds.
void CardLines::joinNested() {
  std::size_t depth = isBegin(text_.substr(line_.head.size() + 1)) ? 1 : 0;
  if (text_.data() != joined_.data()) joined_.assign(text_);
  while (next_ < card_->lines.size()) {
    const auto line = card_->lineAt(next_++);
    joined_ += '\n';
    joined_.append(line);
    const auto colon = startsWithWord(line, "AGENT") ? line.find(':') : npos;
    if (isBegin(line) || (colon != npos && isBegin(trimmed(line.substr(colon + 1))))) ++depth;
    if (isEnd(line) && --depth == 0) break;
  }
  text_ = joined_;
}

// True when a content line starts at that physical line; its head may be folded itself.
bool CardLines::startsLine(std::size_t index) const {
  ContentLine other;
  const auto line = card_->lineAt(index);
  if (parseHead(line, other) != npos) return true;
  std::string head(line);
  while (card_->isContinued(index)) {
    // Twice as much each time: however long the line is, it is looked at a few times only.
    const auto enough = 2 * head.size();
    while (card_->isContinued(index) && head.size() < enough) {
      head.append(card_->lineAt(++index).substr(1));
    }
    if (parseHead(head, other) != npos) return true;
  }
  return false;
}

// True for text that neither starts a property nor a card, and is no comment.
bool CardLines::isText(std::size_t index) const {
  const auto line = card_->lineAt(index);
  if (isBlank(line.front()) || line.front() == '#' || isBegin(line) || isLikeProperty(line)) {
    return false;
  }
  return !startsLine(index);
}

// A value whose line breaks were written as they are, or whose fold lost its leading blank.
void CardLines::joinRawLines(std::size_t valueAt) {
  const bool isQuoted = line_.encoding == Encoding::QuotedPrintable;
  const bool isTight = hasNoBlanks(line_);
  while (true) {
    auto index = next_;
    while (index < card_->lines.size() && isBlankLine(card_->lineAt(index))) ++index;
    if (index == card_->lines.size() || !isText(index)) return;
    if (text_.data() != joined_.data()) joined_.assign(text_);
    const bool isFolded = index == next_ && isFull(card_->lines[next_ - 1]);
    const bool isBroken = isQuoted && (joined_.ends_with("=0A") || joined_.ends_with("=0a"));
    if (!isTight && !isFolded && !isBroken && joined_.size() > valueAt) {
      for (auto at = next_; at <= index; ++at) joined_ += isQuoted ? "=0A" : "\\n";
    }
    joined_.append(card_->lineAt(index));
    text_ = joined_;
    addRepair(index, "line without a name, joined to the line before it");
    next_ = index + 1;
    if (isQuoted && joined_.back() == '=') joinSoftBreaks();
    unfold(next_);
  }
}

// The value becomes UTF-8: of its transport encoding first, then of the charset that the line
// names, or that the card is taken to be in.
void CardLines::decodeValue() {
  const auto named = line_.charset.empty() && !trustBytes_ ? given_ : line_.charset;
  if (line_.encoding == Encoding::QuotedPrintable) {
    decoded_.clear();
    appendQuotedPrintable(line_.value, decoded_);
    const bool clean = named.empty() || isWord(named, "UTF-8");
    if (!clean || !isValidUtf8(decoded_)) decoded_ = toUtf8(decoded_, named);
    withLineFeeds(decoded_);
    line_.value = decoded_;
    return;
  }
  if (validUtf8_ && (named.empty() || trustBytes_ || isWord(named, "UTF-8"))) return;
  if (isAscii(line_.value) && !isShifting(named)) return;
  const auto charset = trustBytes_ ? std::string_view() : named;
  if (charset.empty() && isValidUtf8(line_.value)) return;
  decoded_ = toUtf8(line_.value, charset);
  line_.value = decoded_;
}

// A charset that the line names comes first. Without one, bytes that are UTF-8 are taken for it,
// and damaged UTF-8 is told from another charset by how much of it is right.
std::string CardLines::toUtf8(std::string_view bytes, std::string_view charset) {
  const bool saysUtf8 = isWord(charset, "UTF-8") || isWord(charset, "UTF8");
  if (!charset.empty() && !saysUtf8) {
    if (auto text = utf8FromCharset(bytes, charset)) return *std::move(text);
  }
  if (isValidUtf8(bytes)) return std::string(bytes);
  auto repaired = validUtf8(std::string(bytes));
  if (trustBytes_ || isWord(given_, "UTF-8") || isMostlyUtf8(repaired)) {
    addRepair(next_ - 1, "ill-formed UTF-8 replaced by U+FFFD");
    return repaired;
  }
  auto text = utf8FromCharset(bytes, guessedCharset());
  return text ? *std::move(text) : repaired;
}

const std::string& CardLines::guessedCharset() {
  if (guessed_.empty()) {
    const auto assumed = given_.empty() ? guess_(*card_) : AssumedCharset{given_, "as told"};
    guessed_ = assumed.name;
    addRepair(next_ - 1, "text is not UTF-8, read as " + guessed_ + " (" + assumed.grounds + ")");
  }
  return guessed_;
}

void CardLines::passOver(std::size_t index, std::string_view text) {
  addRepair(index,
            (text.front() == '#' ? "comment passed over: " : "no content line, passed over: ") +
                excerpt(text));
}

void CardLines::addRepair(std::size_t index, std::string reason) {
  card_->repairs.push_back({card_->numberOf(index), std::move(reason)});
}

}  // namespace ox::vcard
