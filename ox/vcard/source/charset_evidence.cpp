#include "ox/vcard/source/charset_evidence.hpp"

#include <algorithm>

#include "ox/base/text/charset.hpp"
#include "ox/base/text/utf8.hpp"
#include "ox/vcard/lines/ascii.hpp"

namespace ox::vcard {
namespace {

constexpr std::size_t kFirstBlock = 16U << 10U;  // most cards come alone
constexpr std::size_t kBlock = 1U << 20U;
constexpr std::uint64_t kLookedAt = 16 * kBlock;
constexpr std::size_t kSample = 64U << 10U;

// The charset that a line names, when it is neither UTF-8 nor ASCII.
std::string_view namedCharset(std::string_view line) {
  constexpr std::string_view kParameter = ";CHARSET=";
  const auto head = line.substr(0, line.find(':'));
  for (auto at = head.find(';'); at != std::string_view::npos; at = head.find(';', at + 1)) {
    if (!startsWithWord(head.substr(at), kParameter)) continue;
    auto name = head.substr(at + kParameter.size());
    name = name.substr(0, name.find(';'));
    const bool plain = isWord(name, "UTF-8") || isWord(name, "UTF8") || isWord(name, "US-ASCII");
    return plain || !utf8FromCharset("", name) ? std::string_view() : name;
  }
  return {};
}

// What the lines looked at so far say.
struct Findings {
  std::string named;
  std::string sample;

  void look(std::string_view line) {
    if (!named.empty()) return;
    named = namedCharset(line);
    const auto colon = line.find(':');
    const auto value = colon == std::string_view::npos ? line : line.substr(colon + 1);
    if (sample.size() < kSample && !isValidUtf8(value)) sample.append(value) += '\n';
  }

  void lookAtAll(std::string_view text) {
    while (!text.empty()) {
      const auto stop = std::min(text.find_first_of("\r\n"), text.size());
      if (stop > 0) look(text.substr(0, stop));
      text.remove_prefix(std::min(stop + 1, text.size()));
    }
  }

  std::string verdict() const { return named.empty() ? detectCharset(sample) : named; }
};

}  // namespace

std::string CharsetEvidence::charsetFor(const RawCard& card) {
  Findings findings;
  for (std::size_t i = 0; i < card.lines.size(); ++i) findings.look(card.lineAt(i));
  if (!findings.named.empty()) return findings.named;
  const auto& file = charsetOfFile();
  return file.empty() ? findings.verdict() : file;
}

const std::string& CharsetEvidence::charsetOfFile() {
  const std::lock_guard lock(mutex_);
  if (file_) return *file_;
  Findings findings;
  std::string block(kFirstBlock, '\0');
  std::uint64_t offset = 0;
  while (offset < kLookedAt && findings.named.empty()) {
    const auto got = source_.peekAt(offset, block.data(), block.size());
    if (got == 0) break;
    findings.lookAtAll(std::string_view(block).substr(0, got));
    offset += got;
    if (got == block.size()) block.resize(kBlock);
  }
  return file_.emplace(offset == 0 ? std::string() : findings.verdict());
}

}  // namespace ox::vcard
