// How fast are Chinese names brought into Latin letters? Beside it: ICU alone, which must give the
// same text.
#include <map>
#include <memory>
#include <stdexcept>
#include <unicode/locid.h>
#include <unicode/normalizer2.h>
#include <unicode/translit.h>
#include <unicode/unistr.h>

#include "bench/contacts.hpp"
#include "bench/figures.hpp"
#include "ox/base/text/transcription.hpp"

namespace ox::bench {
namespace {

const std::vector<std::string>& names(std::size_t count) {
  static auto& made = *new std::map<std::size_t, std::vector<std::string>>;
  auto& list = made[count];
  if (list.empty()) list = chineseNames(count);
  return list;
}

// Made before the clock starts, as ours is by its first call.
const icu::Transliterator& hanLatin() {
  static const auto& made = *[] {
    UErrorCode status = U_ZERO_ERROR;
    auto* transliterator = icu::Transliterator::createInstance(
        "Han-Latin; NFD; [:Mark:] Remove; NFC", UTRANS_FORWARD, status);
    if (U_FAILURE(status) || transliterator == nullptr) throw std::runtime_error("no Han-Latin");
    return transliterator;
  }();
  return made;
}

std::string transcribePlainly(const std::string& name) {
  auto text = icu::UnicodeString::fromUTF8(name);
  hanLatin().transliterate(text);
  text.toUpper(icu::Locale::getRoot());
  std::string result;
  text.toUTF8String(result);
  return result;
}

template <typename Transcribe>
Measured transcribeAll(std::size_t count, Transcribe transcribe) {
  const auto& list = names(count);
  transcribe(list.front());
  std::size_t bytes = 0;
  const Stopwatch watch;
  for (const auto& name : list) bytes += transcribe(name).size();
  const auto seconds = watch.seconds();
  keep(bytes);
  return {seconds, {}};
}

void compareTexts() {
  for (const auto& name : names(10'000)) {
    if (transcribeToLatin(name) != transcribePlainly(name)) {
      throw std::runtime_error("not what ICU gives: " + name);
    }
  }
}

Measured oursChecked(std::size_t count) {
  static const bool same = (compareTexts(), true);
  static_cast<void>(same);
  return transcribeAll(count, [](const std::string& name) { return transcribeToLatin(name); });
}

}  // namespace
}  // namespace ox::bench

int main(int argc, char** argv) {
  using namespace ox::bench;
  return runFigures(argc, argv, [] {
    addFigure(
        "Chinese names to Latin",
        {{"transcribeToLatin", oursChecked},
         {"plain ICU", [](std::size_t count) { return transcribeAll(count, transcribePlainly); }}});
  });
}
