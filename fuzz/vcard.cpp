// Cards: whatever the bytes are, they are read to the end, and what was read once is the same when
// it was written, as 3.0 or 4.0, and read again.
#include <algorithm>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "fuzz/require.hpp"
#include "ox/base/checksum.hpp"
#include "ox/base/text/utf8.hpp"
#include "ox/records/card_uid.hpp"
#include "ox/vcard/lines/ascii.hpp"
#include "ox/vcard/read/reader.hpp"
#include "ox/vcard/write/writer.hpp"

namespace {

using namespace ox;
using namespace ox::vcard;

// UIDs that name those members, of which a reader gives what it compares them by.
std::vector<std::string> uidsOf(const std::vector<std::string>& members) {
  auto uids = members;
  for (auto& uid : uids) {
    if (uidKey(uid) != uid) uid.insert(0, kUrnPrefix);
  }
  return uids;
}

std::string written(const Card& card, CardVersion version) {
  std::string text;
  const WriteOptions options{.version = version};
  if (card.isGroup) {
    appendGroup(card.properties, uidsOf(card.members), options, text);
  } else {
    appendCard(card.properties, card.photo, options, text);
  }
  return text;
}

// Missing when a reader finds no card in it.
std::optional<std::string> writtenAgain(const std::string& text, CardVersion version) {
  MemorySource source(text);
  Reader reader(source);
  const auto again = reader.next();
  const auto* card = again ? std::get_if<Card>(&*again) : nullptr;
  return card != nullptr ? std::optional(written(*card, version)) : std::nullopt;
}

std::vector<std::string_view> sortedLines(std::string_view text) {
  std::vector<std::string_view> lines;
  while (!text.empty()) {
    const auto end = text.find('\n');
    lines.push_back(text.substr(0, end));
    text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
  }
  std::ranges::sort(lines);
  return lines;
}

// What is read of our own writing is written the same way. Where the order of lines that nobody
// knows changes it does so once. Lines of ours that others have made up settle after a few times,
// or say nothing.
void expectStable(const Card& card, CardVersion version, bool hasOwnLines) {
  constexpr int kMostTimes = 4;
  const auto text = written(card, version);
  auto before = writtenAgain(text, version);
  if (before == text) return;
  fuzz::require(hasOwnLines || (before && sortedLines(*before) == sortedLines(text)));
  for (int times = hasOwnLines ? kMostTimes : 1; before; --times) {
    const auto again = writtenAgain(*before, version);
    if (again == before) return;
    fuzz::require(times > 1);
    before = again;
  }
}

// Names of lines are read in capitals and small letters alike, and lines may be folded anywhere.
bool holdsOwnLines(std::string_view input) {
  std::string unfolded(input);
  std::erase_if(unfolded, [](char c) { return isBlank(c) || c == '\r' || c == '\n'; });
  for (std::string_view rest = unfolded; !rest.empty(); rest.remove_prefix(1)) {
    if (startsWithWord(rest, "X-OX-")) return true;
  }
  return false;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  // Guessing a charset takes longer than all the rest, so most inputs are made such that nobody has
  // to. Which ones, the sum tells: an input that was found is read the same way again.
  std::string input(reinterpret_cast<const char*>(data), size);
  if (checksum64(input) % 8 != 0) input = validUtf8(std::move(input));
  const bool hasOwnLines = holdsOwnLines(input);
  MemorySource source(input);
  Reader reader(source);
  std::size_t cards = 0;
  while (const auto result = reader.next()) {
    ++cards;
    const auto* card = std::get_if<Card>(&*result);
    if (card == nullptr) continue;
    expectStable(*card, input.size() % 2 == 0 ? CardVersion::V30 : CardVersion::V40, hasOwnLines);
  }
  fuzz::require(reader.cardsSeen() == cards && reader.bytesRead() == input.size());
  return 0;
}
