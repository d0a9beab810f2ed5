#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <unicode/unistr.h>
#include <vector>

namespace ox {

// A part of a long text, and whether ICU sets it off by a blank from the one before it.
struct TranscriptionPiece {
  icu::UnicodeString text;
  bool isSetOff = false;
};

// The text in pieces that read by themselves as they read in the whole; what stands between them is
// a blank or nothing. About kPieceUnits long, unless the whole is shorter.
inline constexpr std::int32_t kPieceUnits = 512;
std::vector<TranscriptionPiece> transcriptionPieces(const icu::UnicodeString& text);

// What transcribeWithIcu gives, in time by the length of the text. ICU alone moves all that follows
// for each character that it replaces, and looks back over all marks before each of them.
std::string transcribeInPieces(std::string_view text);

}  // namespace ox
