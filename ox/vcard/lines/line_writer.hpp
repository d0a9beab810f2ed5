#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace ox::vcard {

// A text as the lines of a card may hold it: every line break a line feed, other control characters
// but the tab left out. Borrows a text that is so already, as nearly all are.
class CardText {
 public:
  explicit CardText(std::string_view text);
  CardText(const CardText&) = delete;
  CardText& operator=(const CardText&) = delete;

  std::string_view view() const { return view_; }
  bool isChanged() const { return view_.data() == own_.data(); }

 private:
  std::string own_;
  std::string_view view_;
};

// True when the text is there and reads back from a value or a parameter.
bool isPlain(std::string_view text);

// Appends a text value with its escapes: backslash, comma, semicolon and line feed.
void appendTextEscaped(std::string_view text, std::string& out);

// Whether lines of more than 75 octets are folded, as those of a card have to be.
enum class Folding { No, Yes };

// Builds content lines at the end of a text that it borrows (RFC 6350, section 3.2). Nothing that
// it is given can start a line of its own: text() and parameter() escape line feeds, and end()
// takes out every other control character but the tab, whoever put it there.
class LineWriter {
 public:
  explicit LineWriter(std::string& out, Folding folding = Folding::Yes)
      : out_(out), start_(out.size()), folding_(folding) {}

  LineWriter& raw(std::string_view text) {
    out_.append(text);
    return *this;
  }
  LineWriter& number(std::size_t value);
  // As appendTextEscaped.
  LineWriter& text(std::string_view text);
  // As text, but commas and semicolons belong to the value, as in a URI or in parted units.
  LineWriter& uri(std::string_view text);
  // Percent escapes for whatever may not stand in a URI by itself (RFC 3986, section 2.3).
  LineWriter& percent(std::string_view bytes);
  // ";NAME=value", quoted where needed, with the escapes of RFC 6868.
  LineWriter& parameter(std::string_view name, std::string_view value);
  // Folds and ends the line.
  void end();

 private:
  void takeOutControls();

  std::string& out_;
  std::size_t start_;
  Folding folding_;
  std::string unfolded_;
};

}  // namespace ox::vcard
