#include "ox/base/text/collation.hpp"

#include <cstdint>
#include <stdexcept>
#include <unicode/alphaindex.h>
#include <unicode/coll.h>
#include <unicode/locid.h>
#include <unicode/ucol.h>
#include <unicode/unistr.h>

#include "ox/base/text/locale.hpp"

namespace ox {
namespace {

icu::UnicodeString wide(std::string_view text) {
  return icu::UnicodeString::fromUTF8(
      icu::StringPiece(text.data(), static_cast<int32_t>(text.size())));
}

void require(UErrorCode status) {
  if (U_FAILURE(status)) {
    throw std::runtime_error(std::string("ICU cannot order texts: ") + u_errorName(status));
  }
}

icu::Locale userLocale() {
  const auto name = localeNameFor("LC_COLLATE");
  const bool isNone = name.empty() || name == "C" || name == "POSIX" || name.starts_with("C.");
  return isNone ? icu::Locale::getRoot() : icu::Locale::createCanonical(name.c_str());
}

}  // namespace

struct Collation::Icu {
  icu::Locale locale;
  std::unique_ptr<icu::Collator> order;
  // Made for the first letter that is asked for.
  std::unique_ptr<icu::AlphabeticIndex::ImmutableIndex> index;
};

Collation::Collation() : icu_(std::make_unique<Icu>()) {
  UErrorCode status = U_ZERO_ERROR;
  icu_->locale = userLocale();
  icu_->order.reset(icu::Collator::createInstance(icu_->locale, status));
  require(status);
}

Collation::~Collation() = default;

std::string Collation::keyOf(std::string_view text) const {
  const auto source = wide(text);
  std::string key(text.size() * 3 + 16, '\0');
  const auto into = [&] {
    return static_cast<std::size_t>(icu_->order->getSortKey(
        source, reinterpret_cast<std::uint8_t*>(key.data()), static_cast<int32_t>(key.size())));
  };
  const auto size = into();
  const bool fitted = size <= key.size();
  key.resize(size);
  if (!fitted) into();
  return key;
}

std::string Collation::keyOf(std::string_view first, std::string_view second) const {
  const auto one = keyOf(first);
  const auto other = keyOf(second);
  const auto bytes = [](const std::string& key) {
    return reinterpret_cast<const std::uint8_t*>(key.data());
  };
  const auto sizeOf = [](const std::string& key) { return static_cast<int32_t>(key.size()); };
  std::string merged(one.size() + other.size(), '\0');
  const auto size =
      ucol_mergeSortkeys(bytes(one), sizeOf(one), bytes(other), sizeOf(other),
                         reinterpret_cast<std::uint8_t*>(merged.data()), sizeOf(merged));
  merged.resize(static_cast<std::size_t>(size));
  return merged;
}

std::string Collation::indexLetterOf(std::string_view text) const {
  UErrorCode status = U_ZERO_ERROR;
  if (!icu_->index) {
    icu::AlphabeticIndex index(icu_->locale, status);
    index.addLabels(icu::Locale::getEnglish(), status);
    icu_->index.reset(index.buildImmutableIndex(status));
    require(status);
  }
  const auto at = icu_->index->getBucketIndex(wide(text), status);
  require(status);
  std::string letter;
  icu_->index->getBucket(at)->getLabel().toUTF8String(letter);
  return letter;
}

}  // namespace ox
