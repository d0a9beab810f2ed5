#include <algorithm>
#include <utility>

#include "ox/vcard/lines/ascii.hpp"
#include "ox/vcard/lines/decode.hpp"
#include "ox/vcard/lines/structured_value.hpp"
#include "ox/vcard/properties/each_property.hpp"

// ORG: the company, then its units. The department holds the units as the card parts them.

namespace ox::vcard {
namespace {

struct Organization {
  std::string company;
  std::string department;
};

// A semicolon at the end is there when a backslash stands before it.
bool endsWithBareSemicolon(std::string_view value) {
  return value.ends_with(';') && !value.ends_with("\\;");
}

// False when blanks may stand around the company or a unit.
bool hasBareUnits(std::string_view value) {
  while (true) {
    const auto end = std::min(value.find(';'), value.size());
    const auto unit = value.substr(0, end);
    if (trimmed(unit) != unit) return false;
    if (end == value.size()) return true;
    value.remove_prefix(end + 1);
  }
}

// ORG as a card wrote it, without the blanks around company and units.
std::string withBareUnits(std::string_view value) {
  auto parts = components<2>(value);
  std::string bare(parts[0]);
  while (parts[1].data() != nullptr) {
    parts = components<2>(parts[1]);
    (bare += ';') += parts[0];
  }
  return bare;
}

Organization organizationOf(std::string_view value) {
  const auto bare = hasBareUnits(value) ? std::string() : withBareUnits(value);
  if (!bare.empty()) value = bare;
  const auto parts = components<2>(value);
  auto units = parts[1];
  while (endsWithBareSemicolon(units)) units.remove_suffix(1);
  return {unescaped(parts[0]), unescaped(units)};
}

// ORG as a card wrote it, in canonical form.
std::string canonicalValue(std::string_view value) {
  auto out = withBareUnits(canonicalPieces(value, ';'));
  while (endsWithBareSemicolon(out)) out.pop_back();
  return out;
}

// Units are parted by semicolons; one at the end would be taken for an empty unit, and the blanks
// beside one for nothing.
void appendUnits(std::string_view department, std::string& out) {
  constexpr auto npos = std::string_view::npos;
  const bool atEnd = department.ends_with(';');
  if (atEnd) department.remove_suffix(1);
  std::size_t from = 0;
  for (auto mark = department.find(';'); mark != npos; mark = department.find(';', from)) {
    appendTextEscaped(department.substr(from, mark - from), out);
    const bool isBare = (mark == 0 || !isBlank(department[mark - 1])) &&
                        (mark + 1 == department.size() || !isBlank(department[mark + 1]));
    out += isBare ? ";" : "\\;";
    from = mark + 1;
  }
  appendTextEscaped(department.substr(from), out);
  if (atEnd) out += "\\;";
}

std::string valueOf(std::string_view company, std::string_view department) {
  std::string out;
  appendTextEscaped(company, out);
  if (department.empty()) return out;
  out += ';';
  appendUnits(department, out);
  return out;
}

bool gives(std::string_view verbatim, std::string_view company, std::string_view department) {
  const auto read = organizationOf(verbatim);
  return read.company == company && read.department == department;
}

}  // namespace

bool readOrganization(const PropertyRow& row, const ContentLine& line, CardDraft& draft) {
  auto& company = draft.values.text(row.property);
  auto& department = draft.values.text(property_id::kDepartment);
  if (!company.empty() || !department.empty()) return false;
  auto read = organizationOf(line.value);
  const auto saysNothing = [](const std::string& text) {
    return trimmed(CardText(text).view()).empty();
  };
  if (saysNothing(read.company) && saysNothing(read.department)) return true;
  company = std::move(read.company);
  department = std::move(read.department);
  if (line.value.find("\\;") != std::string_view::npos) {
    const auto canonical = canonicalValue(line.value);
    const auto ours = valueOf(CardText(company).view(), CardText(department).view());
    if (canonical != ours) draft.preserveVerbatim(row.property, canonical);
  }
  draft.preserveParameters(row.property, line);
  return true;
}

void writeOrganization(const PropertyRow& row, PropertyWriter& card) {
  const auto company = card.textOf(row.property);
  const auto department = card.textOf(property_id::kDepartment);
  if (company.empty() && department.empty()) return;
  card.line().raw("ORG");
  card.writeParameters(row.property);
  const auto verbatim = card.unmodelled().verbatimOf(row.property, 0);
  card.line().raw(":");
  if (!verbatim.empty() && gives(verbatim, company, department)) {
    card.line().raw(verbatim).end();
  } else {
    if (trimmed(company) != company) card.noteInexact(row.property);
    if (trimmed(department) != department) card.noteInexact(property_id::kDepartment);
    card.line().raw(valueOf(company, department)).end();
  }
}

bool lacksOrganization(const PropertyRow& row, std::string_view /*line*/, PropertyWriter& card) {
  return card.textOf(row.property).empty() && card.textOf(property_id::kDepartment).empty();
}

}  // namespace ox::vcard
