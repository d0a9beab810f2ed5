#pragma once

#include <memory>
#include <string>
#include <variant>

#include "ox/formats/card_source.hpp"
#include "ox/vcard/write/writer.hpp"

namespace ox::formats_tests {

// A card as the lines of its vCard 4.0 between VERSION and END, unfolded, with " | " between them.
inline std::string linesOf(const vcard::Card& card) {
  std::string text;
  if (card.isGroup) {
    vcard::appendGroup(card.properties, card.members, {.version = vcard::CardVersion::V40}, text);
  } else {
    vcard::appendCard(card.properties, card.photo, {.version = vcard::CardVersion::V40}, text);
  }
  std::string lines;
  for (std::size_t at = 0; at < text.size();) {
    const auto end = text.find("\r\n", at);
    const auto line = text.substr(at, end - at);
    at = end + 2;
    if (line.starts_with(' ')) {
      lines += line.substr(1);
    } else if (line.find("VCARD") == line.npos && line != "VERSION:4.0") {
      lines += (lines.empty() ? "" : " | ") + line;
    }
  }
  return lines;
}

// What a source gives, a line each: "line: lines", what was repaired as "  line! reason", refusals
// as "line# reason", remarks as "line? what".
inline std::string readAll(formats::CardSource& source) {
  std::string text;
  while (auto result = source.next()) {
    for (const auto& remark : source.takeRemarks()) {
      text += std::to_string(remark.line) + "? " + remark.reason + "\n";
    }
    if (const auto* refusal = std::get_if<vcard::Refusal>(&*result)) {
      text += std::to_string(refusal->line) + "# " + refusal->reason + "\n";
      continue;
    }
    const auto& card = std::get<vcard::Card>(*result);
    text += std::to_string(card.line) + ": " + linesOf(card) + "\n";
    for (const auto& repair : card.repairs) {
      text += "  " + std::to_string(repair.line) + "! " + repair.reason + "\n";
    }
  }
  return text;
}

}  // namespace ox::formats_tests
