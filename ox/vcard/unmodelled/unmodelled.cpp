#include "ox/vcard/unmodelled/unmodelled.hpp"

#include <algorithm>
#include <charconv>
#include <utility>

#include "ox/vcard/lines/ascii.hpp"
#include "ox/vcard/unmodelled/line_form.hpp"

namespace ox::vcard {
namespace {

bool byOwner(const DetailView& a, const DetailView& b) {
  return std::pair(a.property, a.entry) < std::pair(b.property, b.entry);
}

const DetailView* find(const std::vector<DetailView>& details, PropertyId property,
                       std::uint64_t entry) {
  const auto found =
      std::lower_bound(details.begin(), details.end(), DetailView{property, entry}, byOwner);
  if (found == details.end() || found->property != property || found->entry != entry) {
    return nullptr;
  }
  return &*found;
}

std::span<const DetailView> findAll(const std::vector<DetailView>& details, PropertyId property,
                                    std::uint64_t entry) {
  const auto [first, last] =
      std::equal_range(details.begin(), details.end(), DetailView{property, entry}, byOwner);
  return {first, last};
}

bool isContentLine(std::string_view text) {
  ContentLine line;
  return parseHead(text, line) != std::string_view::npos;
}

}  // namespace

Unmodelled::Unmodelled(const PropertyBag& properties) {
  const auto* held = properties.find(property_id::kUnmodelledLines);
  if (held == nullptr) return;
  const auto* single = std::get_if<Object>(held);
  const auto* texts = single != nullptr ? single->array() : nullptr;
  if (texts == nullptr) return;
  for (const auto& element : *texts) {
    const auto* text = element.text();
    if (text == nullptr || text->empty()) continue;
    if (const auto detail = decodeDetail(*text)) {
      takeDetail(*detail);
      continue;
    }
    const auto name = lineNameOf(*text);
    lines_.emplace_back(*text);
    takeGroup(name.group);
    if (formattedNameLine_.empty() && isWord(name.name, "FN") && isContentLine(*text)) {
      formattedNameLine_ = *text;
    }
  }
  for (auto* details : {&parameters_, &verbatim_, &ranks_, &groups_, &originals_}) {
    if (details->size() > 1) std::stable_sort(details->begin(), details->end(), byOwner);
  }
}

// Notes the number of an "itemN": a writer must not give it to a group of its own.
void Unmodelled::takeGroup(std::string_view group) {
  constexpr std::string_view kItem = "ITEM";
  if (!startsWithWord(group, kItem)) return;
  const auto digits = group.substr(kItem.size());
  std::uint32_t number = 0;
  std::from_chars(digits.data(), digits.data() + digits.size(), number);
  firstFreeItem_ = std::max<std::size_t>(firstFreeItem_, std::size_t{number} + 1);
}

void Unmodelled::takeDetail(const DetailView& detail) {
  switch (detail.kind) {
    case DetailKind::SortAs:
      sortAs_ = detail.text;
      return;
    case DetailKind::Preference:
      ranks_.push_back(detail);
      return;
    case DetailKind::Verbatim:
      verbatim_.push_back(detail);
      return;
    case DetailKind::Parameters:
      parameters_.push_back(detail);
      return;
    case DetailKind::Line:
      originals_.push_back(detail);
      return;
    case DetailKind::Group:
      if (!isName(detail.text)) return;
      groups_.push_back(detail);
      takeGroup(detail.text);
  }
}

std::span<const DetailView> Unmodelled::parametersOf(PropertyId property,
                                                     std::uint64_t entry) const {
  return findAll(parameters_, property, entry);
}

std::span<const DetailView> Unmodelled::originalLinesOf(PropertyId property,
                                                        std::uint64_t entry) const {
  return findAll(originals_, property, entry);
}

std::string_view Unmodelled::verbatimOf(PropertyId property, std::uint64_t entry) const {
  std::string_view longest;
  for (const auto& detail : findAll(verbatim_, property, entry)) {
    if (detail.text.size() > longest.size()) longest = detail.text;
  }
  return longest;
}

unsigned Unmodelled::rankOf(PropertyId property, std::uint64_t entry) const {
  const auto* detail = find(ranks_, property, entry);
  return detail != nullptr ? vcard::rankOf(*detail) : 0;
}

std::string_view Unmodelled::groupOf(PropertyId property, std::uint64_t entry) const {
  const auto* detail = find(groups_, property, entry);
  return detail != nullptr ? detail->text : std::string_view();
}

}  // namespace ox::vcard
