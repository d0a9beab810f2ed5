#include "ox/vcard/properties/spelling.hpp"

#include "ox/vcard/lines/ascii.hpp"
#include "ox/vcard/lines/decode.hpp"
#include "ox/vcard/lines/line_writer.hpp"

namespace ox::vcard {
namespace {

constexpr auto npos = std::string_view::npos;

// The first of that character at or after a place that no backslash stands before.
std::size_t findBare(std::string_view text, char wanted, std::size_t at) {
  for (; at < text.size(); ++at) {
    if (text[at] == '\\') {
      ++at;
    } else if (text[at] == wanted) {
      return at;
    }
  }
  return npos;
}

void appendText(std::string_view raw, Dialect dialect, std::string& out) {
  const auto text = unescaped(raw, dialect);
  appendTextEscaped(CardText(text).view(), out);
}

// Pieces parted by that mark, each as we would spell it.
void appendPieces(std::string_view raw, char mark, Dialect dialect, std::string& out) {
  std::size_t from = 0;
  for (auto at = findBare(raw, mark, 0); at != npos; at = findBare(raw, mark, from)) {
    appendText(raw.substr(from, at - from), dialect, out);
    out += mark;
    from = at + 1;
  }
  appendText(raw.substr(from), dialect, out);
}

// Units are parted by semicolons; one at the end would be taken for an empty unit.
void appendUnits(std::string_view department, std::string& out) {
  const bool atEnd = department.ends_with(';');
  if (atEnd) department.remove_suffix(1);
  std::size_t from = 0;
  for (auto mark = department.find(';'); mark != npos; mark = department.find(';', from)) {
    appendTextEscaped(department.substr(from, mark - from), out);
    out += ';';
    from = mark + 1;
  }
  appendTextEscaped(department.substr(from), out);
  if (atEnd) out += "\\;";
}

}  // namespace

bool hasList(std::string_view value, Dialect dialect) {
  return dialect == Dialect::V30 && findBare(value, ',', 0) != npos;
}

std::string listSpelling(std::string_view value, Dialect dialect) {
  std::string out;
  appendPieces(value, ',', dialect, out);
  return out;
}

std::string structureSpelling(std::span<const std::string_view> components, Dialect dialect) {
  std::string out;
  for (std::size_t i = 0; i < components.size(); ++i) {
    if (i > 0) out += ';';
    appendPieces(components[i], ',', dialect, out);
  }
  return out;
}

std::string nameSpelling(const NameParts& parts) {
  std::string out;
  appendTextEscaped(parts.last, out);
  for (const auto part : {parts.first, parts.middle, parts.title, parts.suffix}) {
    out += ';';
    appendTextEscaped(part, out);
  }
  return out;
}

bool isNameSpelling(std::string_view spelling, const NameParts& parts) {
  const auto read = components<5>(spelling);
  const auto says = [&](std::size_t i, std::string_view separator, std::string_view part) {
    return unescapedList(read[i], Dialect::V30, separator) == part;
  };
  return says(0, " ", parts.last) && says(1, " ", parts.first) && says(2, " ", parts.middle) &&
         says(3, " ", parts.title) && says(4, ", ", parts.suffix);
}

std::string unitsSpelling(std::string_view value, Dialect dialect) {
  std::string out;
  appendPieces(value, ';', dialect, out);
  while (out.ends_with(';') && !out.ends_with("\\;")) out.pop_back();
  return out;
}

Organization organizationOf(std::string_view value, Dialect dialect) {
  const auto parts = components<2>(value);
  auto units = parts[1];
  while (!units.empty() && units.back() == ';' && !units.ends_with("\\;")) units.remove_suffix(1);
  return {unescaped(parts[0], dialect), unescaped(units, dialect)};
}

std::string organizationSpelling(std::string_view company, std::string_view department) {
  std::string out;
  appendTextEscaped(company, out);
  if (department.empty()) return out;
  out += ';';
  appendUnits(department, out);
  return out;
}

bool isAddressSpelling(std::string_view spelling,
                       const std::array<std::string_view, 7>& components) {
  const auto read = vcard::components<7>(spelling);
  for (std::size_t i = 0; i < read.size(); ++i) {
    if (unescaped(read[i], Dialect::V30) != components[i]) return false;
  }
  return true;
}

SortedAs sortedAs(const Parameter& sortAs) {
  const auto reading = parameterText(sortAs);
  const auto mark = reading.find_first_of(",;");
  SortedAs result{reading.substr(0, mark), {}};
  if (mark != std::string::npos) {
    result.first = trimmed(std::string_view(reading).substr(mark + 1));
  }
  return result;
}

SortedAs keptSortedAs(std::string_view parameters) {
  const auto equals = parameters.find('=');
  if (equals == npos) return {};
  return sortedAs({"SORT-AS", parameters.substr(equals + 1), ParameterKind::SortAs});
}

}  // namespace ox::vcard
