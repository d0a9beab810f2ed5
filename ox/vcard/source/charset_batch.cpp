#include "ox/vcard/source/charset_batch.hpp"

#include <filesystem>

#include "ox/vcard/source/byte_source.hpp"
#include "ox/vcard/source/charset_findings.hpp"

namespace ox::vcard {
namespace {

// Of each file, and of all together.
constexpr std::uint64_t kLookedAt = 256U << 10U;
constexpr std::size_t kMostFiles = 1000;

// Missing for a file that tells nothing.
std::optional<CharsetWeights> weightsOfFile(const std::string& path) {
  std::error_code error;
  if (!std::filesystem::is_regular_file(path, error)) return std::nullopt;
  try {
    FileSource source(path);
    const auto findings = findingsOf(source, kLookedAt);
    if (findings.named.empty() && findings.sample.isEmpty()) return std::nullopt;
    auto weights = weightsOf(findings.sample);
    addNamed(findings.named, weights);
    return weights;
  } catch (const SourceError&) {
    return std::nullopt;  // told when it is read
  }
}

}  // namespace

std::vector<CharsetWeights> CharsetBatch::weightsBeside(const std::string& path) {
  const std::lock_guard lock(mutex_);
  if (!weights_) {
    weights_.emplace();
    for (std::size_t i = 0; i < paths_.size() && i < kMostFiles; ++i) {
      weights_->push_back(weightsOfFile(paths_[i]));
    }
  }
  std::vector<CharsetWeights> beside;
  for (std::size_t i = 0; i < weights_->size(); ++i) {
    const auto& weights = (*weights_)[i];
    if (weights && paths_[i] != path) beside.push_back(*weights);
  }
  return beside;
}

}  // namespace ox::vcard
