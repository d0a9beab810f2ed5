#include "ox/platform/store/committed/overtaken.hpp"

#include <string>

namespace ox {
namespace {

// The texts of a value, for people to know it by.
std::string textOf(const Object& value) {
  if (const auto* text = value.text()) return *text;
  if (const auto* date = value.as<Date>()) return date->toText();
  if (const auto* number = value.as<std::int64_t>()) return std::to_string(*number);
  std::string texts;
  if (const auto* dictionary = value.dictionary()) {
    for (const auto& [key, held] : dictionary->entries()) {
      const auto text = textOf(held);
      if (!text.empty()) texts += (texts.empty() ? "" : ", ") + text;
    }
  }
  return texts;
}

}  // namespace

Failure overtaken(const RecordKey& record, PropertyId property, const MultiEntry& theirs) {
  auto what = property_table::nameOf(property);
  const auto text = textOf(theirs.value);
  if (!text.empty()) what += " \"" + text + "\"";
  return {FailureKind::Other,
          "the " + what + " of " + record.text() +
              (theirs.value.isMissing() ? " was taken away" : " was changed") +
              " by another program meanwhile; what was saved last stands",
          record.text()};
}

}  // namespace ox
