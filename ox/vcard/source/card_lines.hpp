#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <utility>

#include "ox/vcard/lines/content_line.hpp"
#include "ox/vcard/source/card_slicer.hpp"
#include "ox/vcard/source/charset_evidence.hpp"

namespace ox::vcard {

// Answers the charset of text that is no UTF-8 and names no charset of its own. Asked at most once
// for a card.
using CharsetGuess = std::function<AssumedCharset(const RawCard&)>;

// The content lines of one card, in order: unfolded, quoted-printable undone, everything in UTF-8.
// Lines that are no content lines go to the card's repairs.
class CardLines {
 public:
  // `given`: a charset that text is in which names none, so that nothing is guessed; or empty.
  explicit CardLines(CharsetGuess guess, std::string given = {})
      : guess_(std::move(guess)), given_(std::move(given)) {}

  // Starts with another card. It is borrowed until the next start. `trustBytes`: the file itself
  // says that it is UTF-8, whatever its CHARSET parameters claim.
  void start(RawCard& card, Dialect dialect, bool trustBytes);

  // The next line; null at the end. Valid until the next call.
  const ContentLine* next();

  // What text of the card was taken to be in that did not tell; empty when there was none so far.
  const std::string& assumedCharset() const { return guessed_; }

 private:
  bool readLine(std::size_t index);
  bool startsNested(const ContentLine& line) const;
  void joinNested();
  void unfold(std::size_t index);
  void unfoldAtBlanks();
  bool foldsAtOneWidth(std::size_t index) const;
  void joinSoftBreaks();
  void joinBase64();
  void repairHead();
  bool startsLine(std::size_t index) const;
  bool isText(std::size_t index) const;
  void joinRawLines(std::size_t valueAt);
  void decodeValue();
  std::string toUtf8(std::string_view bytes, std::string_view charset);
  const std::string& guessedCharset();
  void passOver(std::size_t index, std::string_view text);
  void addRepair(std::size_t index, std::string reason);

  bool trustBytes_ = false;
  CharsetGuess guess_;
  std::string given_;
  RawCard* card_ = nullptr;
  Dialect dialect_ = Dialect::V30;
  bool validUtf8_ = true;  // the whole card
  std::string guessed_;
  std::size_t next_ = 0;  // physical line
  ContentLine line_;
  std::string_view text_;  // the line at hand, unfolded
  std::string joined_;     // its bytes when it took more than one physical line
  std::string decoded_;    // its value when that is not a part of the text
  std::string head_;       // its head when that was no UTF-8
};

}  // namespace ox::vcard
