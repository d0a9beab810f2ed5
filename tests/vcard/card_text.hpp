#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "ox/vcard/read/reader.hpp"

namespace ox::vcard {

// Everything that the reader makes of these bytes.
std::vector<Reader::Result> readAll(std::string_view bytes);

// A result as text, one line for each value and repair, so that a test compares it whole:
// "First=Ann", "Phone*[_$!<Home>!$_]=1" (* is the primary entry), "Address={Street=a,City=b}",
// "Birthday=1990-05-17", "kept=X-A:1", "photo=3 bytes", "member=b", "repair 3: why". A group starts
// with "group"; a refusal is "refused 1: why".
std::string textOf(const Reader::Result& result);

// The texts of all results, each followed by a line "--" but the last.
std::string textOfAll(std::string_view bytes);

// The text of one vCard of that version with the given lines, which end in line feeds.
std::string textOfCard(std::string_view version, std::string_view lines);

struct CardRow {
  std::string version;
  std::string lines;
  std::string expected;
};

// Expects textOfCard of each row to be what the row says.
void expectRows(const std::vector<CardRow>& rows);

}  // namespace ox::vcard
