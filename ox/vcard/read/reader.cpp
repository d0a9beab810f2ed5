#include "ox/vcard/read/reader.hpp"

#include <algorithm>
#include <array>
#include <string>
#include <utility>

#include "ox/vcard/read/card_builder.hpp"
#include "ox/vcard/read/card_facts.hpp"
#include "ox/vcard/source/card_lines.hpp"
#include "ox/vcard/source/card_slicer.hpp"
#include "ox/vcard/source/charset_evidence.hpp"
#include "ox/vcard/source/utf16_source.hpp"
#include "ox/vcard/unmodelled/property_detail.hpp"

namespace ox::vcard {
namespace {

// What lines say beside their values is nothing without them.
bool isDetail(const Object& stored) {
  const auto* text = stored.text();
  return text != nullptr && decodeDetail(*text).has_value();
}

bool saysNothing(const Card& card) {
  if (card.photo || !card.members.empty()) return false;
  return std::ranges::all_of(card.properties.entries(), [](const PropertyBag::Entry& entry) {
    const auto* single = std::get_if<Object>(&entry.second);
    const auto* lines = single != nullptr ? single->array() : nullptr;
    return entry.first == property_id::kUnmodelledLines && lines != nullptr &&
           std::ranges::all_of(*lines, isDetail);
  });
}

}  // namespace

class Reader::Parts {
 public:
  explicit Parts(ByteSource& source)
      : evidence_(source),
        utf16_(source),
        slicer_(utf16_),
        lines_([this](const RawCard& card) { return evidence_.charsetFor(card); }) {}

  std::optional<Result> next() {
    if (!slicer_.next(raw_)) return std::nullopt;
    ++cards_;
    if (!raw_.refusal.empty()) return Refusal{raw_.line, raw_.refusal};
    const auto facts = factsOf(raw_);
    if (!facts.hasVersion) raw_.repairs.push_back({raw_.line, "VERSION is missing"});
    lines_.start(raw_, facts.dialect, utf16_.saysItsEncoding());
    builder_.start(raw_.line, facts);
    while (const auto* line = lines_.next()) builder_.add(*line);
    Card card = builder_.finish();
    if (saysNothing(card)) return Refusal{raw_.line, "the card holds no property"};
    if (raw_.repairs.empty()) return card;
    card.repairs.insert(card.repairs.end(), std::make_move_iterator(raw_.repairs.begin()),
                        std::make_move_iterator(raw_.repairs.end()));
    std::stable_sort(card.repairs.begin(), card.repairs.end(),
                     [](const Problem& a, const Problem& b) { return a.line < b.line; });
    return card;
  }

  std::uint64_t bytesRead() const { return utf16_.bytesRead(); }
  std::size_t cards() const { return cards_; }
  const CardSlicer& slicer() const { return slicer_; }

 private:
  CharsetEvidence evidence_;
  Utf16Source utf16_;
  CardSlicer slicer_;
  CardLines lines_;
  CardBuilder builder_;
  RawCard raw_;
  std::size_t cards_ = 0;
};

Reader::Reader(ByteSource& source) : parts_(std::make_unique<Parts>(source)) {}

Reader::~Reader() = default;

std::optional<Reader::Result> Reader::next() {
  return parts_->next();
}

std::uint64_t Reader::bytesRead() const {
  return parts_->bytesRead();
}

std::size_t Reader::cardsSeen() const {
  return parts_->cards();
}

const std::vector<Problem>& Reader::strayLines() const {
  return parts_->slicer().strayLines();
}

std::size_t Reader::strayCount() const {
  return parts_->slicer().strayCount();
}

}  // namespace ox::vcard
