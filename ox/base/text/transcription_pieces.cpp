#include "ox/base/text/transcription_pieces.hpp"

#include <algorithm>
#include <optional>

#include "ox/base/text/icu_transcription.hpp"
#include "ox/base/text/marks.hpp"

namespace ox {
namespace {

// Farther than any rule looks: over a letter and the marks on it, or two Han characters and a
// blank.
constexpr int32_t kReach = 3 * kLongestRunOfMarks;

// What a cut has to put between its two sides; missing when it would change how they read. Seen
// from what stands within reach of it.
struct Join {
  bool isBlank = false;
};

std::optional<Join> joinAt(const icu::UnicodeString& text, int32_t place) {
  const auto from = text.getChar32Start(std::max(place - kReach, 0));
  const auto end =
      std::min(text.getChar32Limit(std::min(place + kReach, text.length())), text.length());
  const auto before = transcribeWithIcu(text.tempSubStringBetween(from, place));
  const auto after = transcribeWithIcu(text.tempSubStringBetween(place, end));
  const auto whole = transcribeWithIcu(text.tempSubStringBetween(from, end));
  if (whole == before + after) return Join{};
  if (whole == before + ' ' + after) return Join{true};
  return std::nullopt;
}

}  // namespace

std::vector<TranscriptionPiece> transcriptionPieces(const icu::UnicodeString& text) {
  const auto shorter = withShortRunsOfMarks(text);
  std::vector<TranscriptionPiece> pieces;
  int32_t start = 0;
  bool isSetOff = false;
  const auto takeUntil = [&](int32_t end) {
    pieces.push_back({icu::UnicodeString(shorter, start, end - start), isSetOff});
    start = end;
  };
  for (auto place = start + kPieceUnits; place < shorter.length(); ++place) {
    if (shorter.getChar32Start(place) != place) continue;
    const auto join = joinAt(shorter, place);
    if (!join) continue;
    takeUntil(place);
    isSetOff = join->isBlank;
    place += kPieceUnits - 1;
  }
  takeUntil(shorter.length());
  return pieces;
}

std::string transcribeInPieces(std::string_view text) {
  const auto wide = icu::UnicodeString::fromUTF8(
      icu::StringPiece(text.data(), static_cast<int32_t>(text.size())));
  std::string result;
  for (auto& piece : transcriptionPieces(wide)) {
    if (piece.isSetOff) result += ' ';
    result += transcribeWithIcu(std::move(piece.text));
  }
  return result;
}

}  // namespace ox
