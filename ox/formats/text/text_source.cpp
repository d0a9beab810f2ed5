#include "ox/formats/text/text_source.hpp"

#include <algorithm>
#include <utility>
#include <vector>

#include "ox/base/charsets/charset_scores.hpp"
#include "ox/base/text/charset.hpp"
#include "ox/base/text/locale.hpp"
#include "ox/base/text/utf8.hpp"

namespace ox::formats {
namespace {

constexpr std::size_t kBlock = 64U << 10U;
constexpr std::size_t kSample = 1U << 20U;

// Words in plain letters say nothing, and would outnumber those that do.
std::string foreignLines(std::string_view bytes) {
  std::string lines;
  while (!bytes.empty()) {
    const auto line = bytes.substr(0, bytes.find('\n'));
    bytes.remove_prefix(std::min(line.size() + 1, bytes.size()));
    if (!isValidUtf8(line)) lines.append(line) += '\n';
  }
  return lines;
}

}  // namespace

bool TextSource::refill() {
  block_.resize(kBlock);
  at_ = 0;
  std::size_t filled = 0;
  while (filled < block_.size()) {
    const auto got = text_.read(block_.data() + filled, block_.size() - filled);
    if (got == 0) break;
    filled += got;
  }
  block_.resize(filled);
  return filled > 0;
}

std::string TextSource::utf8(std::string text) {
  if (isValidUtf8(text)) return text;
  if (charset_.empty()) {
    std::string sample(kSample, '\0');
    sample.resize(bytes_.peekAt(0, sample.data(), sample.size()));
    const auto lines = foreignLines(sample);
    std::vector<std::string> languages;
    if (auto language = textLanguage(); !language.empty()) languages.push_back(std::move(language));
    charset_ = judgedAlone(lines.empty() ? text : lines, languages).charset;
  }
  auto read = utf8FromCharset(text, charset_);
  return read ? *std::move(read) : validUtf8(std::move(text));
}

}  // namespace ox::formats
