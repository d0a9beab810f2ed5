#include "ox/vcard/source/charset_evidence.hpp"

namespace ox::vcard {
namespace {

constexpr std::uint64_t kLookedAt = 16U << 20U;

void add(const CharsetWeights& more, CharsetWeights& weights) {
  for (std::size_t i = 0; i < weights.size(); ++i) weights[i] += more[i];
}

AssumedCharset assumed(const JudgedCharset& judged) {
  return {std::string(judged.charset), std::string(wordFor(judged.certainty))};
}

}  // namespace

// Once: what the source tells as a whole.
void CharsetEvidence::lookAtSource() {
  if (file_) return;
  file_ = findingsOf(source_, kLookedAt);
  auto languages = file_->languages;
  if (hints_.batch) {
    const auto& own = hints_.batch->languages();
    languages.insert(languages.end(), own.begin(), own.end());
  }
  known_ = weightsOfLanguages(languages);
  if (hints_.batch && file_->named.empty()) {
    known_ = amongOthers(known_, hints_.batch->weightsBeside(hints_.path));
  }
  if (file_->sample.isEmpty()) return;
  words_ = weightsOf(file_->sample);
  auto weights = known_;
  add(words_, weights);
  verdict_ = judged(file_->sample, weights);
}

AssumedCharset CharsetEvidence::charsetFor(const RawCard& card) {
  const auto findings = findingsOf(card);
  if (!findings.named.empty()) return {findings.named, "named in the card"};
  const std::lock_guard lock(mutex_);
  lookAtSource();
  if (!file_->named.empty()) return {file_->named, "named in the file"};
  if (verdict_ && fits(findings.sample, verdict_->charset)) return assumed(*verdict_);
  const auto own = weightsOf(findings.sample);
  // Of a source that cannot be looked at, the cards before this one are what there is.
  const bool isInOrder = file_->sample.isEmpty();
  auto weights = isInOrder ? known_ : amongOthers(known_, {{words_}});
  if (isInOrder) {
    add(words_, weights);
    add(own, words_);
  }
  add(own, weights);
  const auto verdict = judged(findings.sample, weights);
  if (isInOrder) verdict_ = verdict;
  return assumed(verdict);
}

}  // namespace ox::vcard
