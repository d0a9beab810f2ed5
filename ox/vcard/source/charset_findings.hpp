#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "ox/base/charsets/charset_scores.hpp"
#include "ox/vcard/source/byte_source.hpp"
#include "ox/vcard/source/card_slicer.hpp"

namespace ox::vcard {

// What lines tell of the charset of text that does not name its own.
struct CharsetFindings {
  std::string named;                   // by a CHARSET parameter: the first that is not UTF-8
  std::vector<std::string> languages;  // of LANGUAGE parameters, LANG and PRODID
  CharsetSample sample;                // of values that are no UTF-8, also in quoted-printable

  // False when there is nothing more to learn.
  bool look(std::string_view line);

 private:
  bool isQuoted_ = false;  // the last line went on in quoted-printable
};

CharsetFindings findingsOf(const RawCard& card);
// Of the front of the source, so many bytes at most; nothing where it can only be read in order.
CharsetFindings findingsOf(ByteSource& source, std::uint64_t most);

// True when a text in which ill-formed parts were replaced has more characters beyond ASCII that
// were right than ones that were not: damaged UTF-8, no other charset.
bool isMostlyUtf8(std::string_view repaired);

}  // namespace ox::vcard
