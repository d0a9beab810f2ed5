#include "ox/platform/AddressBook/ABMultiValue.hpp"

#include <array>
#include <charconv>
#include <utility>

namespace ox {
namespace {

Text identifierText(std::uint64_t identifier) {
  std::array<char, 16> buffer{};
  const auto end = std::to_chars(buffer.data(), buffer.data() + buffer.size(), identifier, 16).ptr;
  return std::string(buffer.data(), end);
}

// The result is 0, which no entry has, for any text that is no identifier.
std::uint64_t identifierFromText(TextView text) {
  if (!text) return 0;
  std::uint64_t identifier = 0;
  const auto* end = text->data() + text->size();
  const auto read = std::from_chars(text->data(), end, identifier, 16);
  return read.ec == std::errc() && read.ptr == end ? identifier : 0;
}

std::optional<std::uint64_t> indexOf(const MultiValue& content, std::uint64_t identifier) {
  for (std::size_t i = 0; i < content.entries.size(); ++i) {
    if (content.entries[i].identifier == identifier) return i;
  }
  return std::nullopt;
}

Text identifierAt(const MultiValue& content, std::uint64_t index) {
  if (index >= content.entries.size()) return std::nullopt;
  return identifierText(content.entries[index].identifier);
}

}  // namespace

ABMultiValue::ABMultiValue(MultiValuePtr content) : content_(std::move(content)) {
  if (!content_) content_ = std::make_shared<const MultiValue>();
}

Object ABMultiValue::valueAtIndex(std::uint64_t index) const {
  return index < count() ? content_->entries[index].value : Object();
}

Text ABMultiValue::labelAtIndex(std::uint64_t index) const {
  return index < count() ? content_->entries[index].label : std::nullopt;
}

Text ABMultiValue::identifierAtIndex(std::uint64_t index) const {
  return identifierAt(*content_, index);
}

std::optional<std::uint64_t> ABMultiValue::indexForIdentifier(TextView identifier) const {
  const auto wanted = identifierFromText(identifier);
  return wanted == 0 ? std::nullopt : indexOf(*content_, wanted);
}

Text ABMultiValue::primaryIdentifier() const {
  return content_->primary == 0 ? std::nullopt : identifierText(content_->primary);
}

ABMutableMultiValue ABMutableMultiValue::mutableCopy(const ABMultiValue& source) {
  ABMutableMultiValue copy;
  copy.content_ = *source.content();
  return copy;
}

Text ABMutableMultiValue::addValue_withLabel(Object value, TextView label) {
  return identifierText(content_.add(std::move(value), label.toText()));
}

bool ABMutableMultiValue::removeValueAndLabelAtIndex(std::uint64_t index) {
  if (index >= count()) return false;
  const auto entry = content_.entries.begin() + static_cast<std::ptrdiff_t>(index);
  if (entry->identifier == content_.primary) content_.primary = 0;
  content_.entries.erase(entry);
  return true;
}

Text ABMutableMultiValue::identifierAtIndex(std::uint64_t index) const {
  return identifierAt(content_, index);
}

bool ABMutableMultiValue::setPrimaryIdentifier(TextView identifier) {
  if (!identifier) {
    content_.primary = 0;
    return true;
  }
  const auto wanted = identifierFromText(identifier);
  if (wanted == 0 || !indexOf(content_, wanted)) return false;
  content_.primary = wanted;
  return true;
}

}  // namespace ox
