#include "platform/vcard/kept_values.hpp"

#include <algorithm>
#include <array>

#include "platform/vcard/ascii.hpp"
#include "platform/vcard/content_line.hpp"
#include "platform/vcard/kept_texts.hpp"
#include "platform/vcard/uri.hpp"

namespace ox::vcard {
namespace {

using Written = std::optional<std::string>;

Written asItStands(const ContentLine& line) {
  return std::string(line.head).append(":").append(line.value);
}

Written withValue(const ContentLine& line, std::string_view value) {
  return std::string(line.head).append(":").append(value);
}

bool hasValueType(const ContentLine& line, std::string_view type) {
  const auto* value = line.find(ParameterKind::Value);
  return value != nullptr && isWord(value->value, type);
}

// Beyond RFC 3986 letters of every script, as they stand in addresses that people copy.
bool isReference(std::string_view value) {
  return !schemeOf(value).empty() && value.find(' ') == std::string_view::npos;
}

std::string without(std::string_view text, char c) {
  std::string out(text);
  std::erase(out, c);
  return out;
}

bool areDigits(std::string_view text, std::size_t count) {
  return text.size() == count && std::all_of(text.begin(), text.end(), isDigit);
}

// RFC 6350, section 4.3.5: the basic form of ISO 8601, to the second.
Written timestamp(std::string_view text) {
  constexpr auto npos = std::string_view::npos;
  const auto mark = text.find('T');
  if (mark == npos) return std::nullopt;
  const auto date = without(text.substr(0, mark), '-');
  const auto zoneAt = std::min(text.find_first_of("Z+-", mark), text.size());
  auto clock = text.substr(mark + 1, zoneAt - mark - 1);
  clock = clock.substr(0, clock.find_first_of(".,"));
  const auto time = without(clock, ':');
  const auto zone = without(text.substr(zoneAt), ':');
  const bool zoned =
      zone.empty() || zone == "Z" ||
      (zone.front() != 'Z' && (areDigits(zone.substr(1), 2) || areDigits(zone.substr(1), 4)));
  if (!areDigits(date, 8) || !areDigits(time, 6) || !zoned) return std::nullopt;
  return date + "T" + time + zone;
}

Written rev40(const ContentLine& line) {
  const auto basic = timestamp(line.value);
  return basic ? withValue(line, *basic) : std::nullopt;
}

bool isDegrees(std::string_view text) {
  if (!text.empty() && (text.front() == '-' || text.front() == '+')) text.remove_prefix(1);
  const auto point = text.find('.');
  const auto whole = text.substr(0, point);
  const auto rest = point == std::string_view::npos ? "0" : text.substr(point + 1);
  return areDigits(whole, std::max<std::size_t>(whole.size(), 1)) &&
         areDigits(rest, std::max<std::size_t>(rest.size(), 1));
}

// Latitude and longitude with something between them; missing when the value says anything else.
// vCard 2.1 parts them by a comma, 3.0 by a semicolon, RFC 5870 by a comma.
Written degrees(std::string_view value, char separator) {
  const auto mark = value.find_first_of(",;");
  if (mark == std::string_view::npos) return std::nullopt;
  const auto latitude = trimmed(value.substr(0, mark));
  const auto longitude = trimmed(value.substr(mark + 1));
  if (!isDegrees(latitude) || !isDegrees(longitude)) return std::nullopt;
  return std::string(latitude).append(1, separator).append(longitude);
}

Written geo30(const ContentLine& line) {
  if (line.find(ParameterKind::Value) != nullptr) return std::nullopt;
  auto value = line.value;
  if (startsWithWord(value, "GEO:")) value.remove_prefix(4);
  const auto both = degrees(value, ';');
  return both ? withValue(line, *both) : std::nullopt;
}

Written geo40(const ContentLine& line) {
  if (isUri(line.value)) return asItStands(line);
  const auto both = degrees(line.value, ',');
  return both ? withValue(line, "geo:" + *both) : std::nullopt;
}

Written reference40(const ContentLine& line) {
  return hasValueType(line, "TEXT") || isReference(line.value) ? asItStands(line) : std::nullopt;
}

// A URI that says that it is one: 3.0 takes such a value for base64 or text otherwise.
Written saidReference(const ContentLine& line) {
  if (!isReference(line.value)) return std::nullopt;
  if (line.find(ParameterKind::Value) != nullptr) return asItStands(line);
  return std::string(line.head).append(";VALUE=uri:").append(line.value);
}

Written binary30(const ContentLine& line) {
  return line.encoding == Encoding::Base64 ? asItStands(line) : saidReference(line);
}

// A key may be text in both versions, but only 4.0 wants that said.
Written key30(const ContentLine& line) {
  const auto binary = binary30(line);
  return binary || hasValueType(line, "URI") ? binary : asItStands(line);
}

Written key40(const ContentLine& line) {
  return hasValueType(line, "TEXT") ? asItStands(line) : saidReference(line);
}

Written textOnly(const ContentLine& line) {
  return hasValueType(line, "TEXT") ? asItStands(line) : std::nullopt;
}

Written refused(const ContentLine& /*line*/) {
  return std::nullopt;
}

struct Rule {
  std::string_view name;
  Written (*in30)(const ContentLine&);
  Written (*in40)(const ContentLine&);
  bool onlyOnce = false;
};

constexpr std::array kRules = {
    // What properties give, or what belongs to the frame of a card.
    Rule{"BEGIN", refused, refused},
    Rule{"END", refused, refused},
    Rule{"VERSION", refused, refused},
    Rule{"N", refused, refused},
    Rule{"UID", refused, refused},
    Rule{"MEMBER", refused, refused},
    Rule{"X-OX-LINE", refused, refused},
    Rule{"X-OX-PROPERTY", refused, refused},
    // Dates that are none.
    Rule{"BDAY", refused, textOnly, true},
    Rule{"ANNIVERSARY", refused, textOnly, true},
    // Gone from 4.0: RFC 6350, appendix A.2.
    Rule{"AGENT", asItStands, refused},
    Rule{"CLASS", asItStands, refused, true},
    Rule{"LABEL", asItStands, refused},
    Rule{"MAILER", asItStands, refused},
    Rule{"NAME", asItStands, refused},
    Rule{"PROFILE", asItStands, refused},
    Rule{"SORT-STRING", asItStands, refused, true},
    // Values of another form.
    Rule{"REV", asItStands, rev40, true},
    Rule{"GEO", geo30, geo40},
    Rule{"PHOTO", binary30, saidReference},
    Rule{"LOGO", binary30, saidReference},
    Rule{"SOUND", binary30, saidReference},
    Rule{"KEY", key30, key40},
    Rule{"SOURCE", asItStands, reference40},
    Rule{"FBURL", asItStands, reference40},
    Rule{"CALADRURI", asItStands, reference40},
    Rule{"CALURI", asItStands, reference40},
    Rule{"RELATED", asItStands, reference40},
    Rule{"KIND", asItStands, asItStands, true},
    Rule{"PRODID", asItStands, asItStands, true},
    Rule{"GENDER", asItStands, asItStands, true},
};

const Rule* ruleOf(std::string_view name) {
  for (const auto& rule : kRules) {
    if (isWord(name, rule.name)) return &rule;
  }
  return nullptr;
}

}  // namespace

std::optional<std::string> lineInVersion(std::string_view line, CardVersion version) {
  const auto* rule = ruleOf(nameOfLine(line));
  if (rule == nullptr) {
    return isWellFormed(line, version) ? std::optional(std::string(line)) : std::nullopt;
  }
  if (!isWellFormed(line, version)) return std::nullopt;
  ContentLine content;
  const auto colon = parseHead(line, content);
  if (colon == std::string_view::npos) return std::nullopt;
  content.value = line.substr(colon + 1);
  return (version == CardVersion::V30 ? rule->in30 : rule->in40)(content);
}

bool isOnlyOnce(std::string_view name) {
  const auto* rule = ruleOf(name);
  return rule != nullptr && rule->onlyOnce;
}

}  // namespace ox::vcard
