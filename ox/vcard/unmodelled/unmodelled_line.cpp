#include "ox/vcard/unmodelled/unmodelled_line.hpp"

#include <algorithm>
#include <array>
#include <cassert>
#include <utility>

#include "ox/vcard/lines/ascii.hpp"
#include "ox/vcard/lines/content_line.hpp"
#include "ox/vcard/lines/markers.hpp"
#include "ox/vcard/lines/name_table.hpp"
#include "ox/vcard/lines/uri.hpp"
#include "ox/vcard/unmodelled/line_form.hpp"
#include "ox/vcard/unmodelled/media_line.hpp"
#include "ox/vcard/unmodelled/value_form.hpp"

namespace ox::vcard {
namespace {

// What a version makes of a line: missing when it cannot say it. Borrows from the line or the room.
using Written = std::optional<std::string_view>;

Written withValue(const ContentLine& line, std::string_view value, std::string& room) {
  room.assign(line.head).append(":").append(value);
  return room;
}

// Head and value are parts of one line, with a colon between them. Texts that a card did not escape
// are.
Written asItStands(const ContentLine& line, std::string& room) {
  assert(line.head.data() + line.head.size() + 1 == line.value.data());
  const auto value = canonicalValue(line, Dialect::V30);
  if (value != line.value) return withValue(line, value, room);
  return std::string_view(line.head.data(), line.head.size() + 1 + line.value.size());
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
std::optional<std::string> timestamp(std::string_view text) {
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

Written rev40(const ContentLine& line, std::string& room) {
  const auto basic = timestamp(line.value);
  return basic ? withValue(line, *basic, room) : std::nullopt;
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
std::optional<std::string> degrees(std::string_view value, char separator) {
  const auto mark = value.find_first_of(",;");
  if (mark == std::string_view::npos) return std::nullopt;
  const auto latitude = trimmed(value.substr(0, mark));
  const auto longitude = trimmed(value.substr(mark + 1));
  if (!isDegrees(latitude) || !isDegrees(longitude)) return std::nullopt;
  return std::string(latitude).append(1, separator).append(longitude);
}

Written geo30(const ContentLine& line, std::string& room) {
  if (line.find(ParameterKind::Value) != nullptr) return std::nullopt;
  auto value = line.value;
  if (startsWithWord(value, "GEO:")) value.remove_prefix(4);
  const auto both = degrees(value, ';');
  return both ? withValue(line, *both, room) : std::nullopt;
}

Written geo40(const ContentLine& line, std::string& room) {
  if (isUri(line.value)) return asItStands(line, room);
  const auto both = degrees(line.value, ',');
  return both ? withValue(line, "geo:" + *both, room) : std::nullopt;
}

// vCard 2.1 calls a URI another name.
Written reference30(const ContentLine& line, std::string& room) {
  if (!hasValueType(line, "URL")) return asItStands(line, room);
  const auto* type = line.find(ParameterKind::Value);
  const auto at = static_cast<std::size_t>(type->value.data() - line.head.data());
  room.assign(line.head.substr(0, at)).append("uri");
  room.append(line.head.substr(at + type->value.size())).append(":").append(line.value);
  return room;
}

Written reference40(const ContentLine& line, std::string& room) {
  return hasValueType(line, "TEXT") || isReference(line.value) ? reference30(line, room)
                                                               : std::nullopt;
}

Written asWritten(std::optional<std::string> text, std::string& room) {
  if (!text) return std::nullopt;
  room = *std::move(text);
  return room;
}

Written media30(const ContentLine& line, std::string& room) {
  return asWritten(mediaLine(line, CardVersion::V30), room);
}

Written media40(const ContentLine& line, std::string& room) {
  return asWritten(mediaLine(line, CardVersion::V40), room);
}

// A key may be text too, which has to say so in both versions.
Written keyIn(CardVersion version, const ContentLine& line, std::string& room) {
  if (hasValueType(line, "TEXT")) return asItStands(line, room);
  if (auto written = mediaLine(line, version)) return asWritten(std::move(written), room);
  if (line.find(ParameterKind::Value) != nullptr) return std::nullopt;
  room.assign(line.head).append(";VALUE=text:").append(line.value);
  return room;
}

Written key30(const ContentLine& line, std::string& room) {
  return keyIn(CardVersion::V30, line, room);
}

Written key40(const ContentLine& line, std::string& room) {
  return keyIn(CardVersion::V40, line, room);
}

Written textOnly(const ContentLine& line, std::string& room) {
  return hasValueType(line, "TEXT") ? asItStands(line, room) : std::nullopt;
}

// What a reader would take for the beginning of a nested card is none.
Written agent30(const ContentLine& line, std::string& room) {
  return isBegin(trimmed(line.value)) ? std::nullopt : asItStands(line, room);
}

// RFC 6350, section 5.4, and RFC 9554, section 4.6: N in other languages and scripts.
Written alternativeName(const ContentLine& line, std::string& room) {
  const bool isAlternative =
      std::any_of(line.parameters.begin(), line.parameters.end(), [](const Parameter& each) {
        return isWord(each.name, "ALTID") || isWord(each.name, "PHONETIC");
      });
  return isAlternative ? asItStands(line, room) : std::nullopt;
}

Written refused(const ContentLine& /*line*/, std::string& /*room*/) {
  return std::nullopt;
}

}  // namespace

struct LineRule {
  std::string_view name;
  Written (*in30)(const ContentLine&, std::string&);
  Written (*in40)(const ContentLine&, std::string&);
  bool onlyOnce = false;
};

namespace {

constexpr std::array kRules = {
    // What properties give, or what belongs to the frame of a card.
    LineRule{"BEGIN", refused, refused},
    LineRule{"END", refused, refused},
    LineRule{"VERSION", refused, refused},
    LineRule{"N", refused, alternativeName},
    LineRule{"UID", refused, refused},
    LineRule{"MEMBER", refused, refused},
    LineRule{"X-OX-LINE", refused, refused},
    LineRule{"X-OX-PROPERTY", refused, refused},
    // Dates that are none.
    LineRule{"BDAY", refused, textOnly, true},
    LineRule{"ANNIVERSARY", refused, textOnly, true},
    // Gone from 4.0: RFC 6350, appendix A.2.
    LineRule{"AGENT", agent30, refused},
    LineRule{"CLASS", asItStands, refused, true},
    LineRule{"LABEL", asItStands, refused},
    LineRule{"MAILER", asItStands, refused},
    LineRule{"NAME", asItStands, refused},
    LineRule{"PROFILE", asItStands, refused},
    LineRule{"SORT-STRING", asItStands, refused, true},
    // Values of another form.
    LineRule{"REV", asItStands, rev40, true},
    LineRule{"GEO", geo30, geo40},
    LineRule{"PHOTO", media30, media40},
    LineRule{"LOGO", media30, media40},
    LineRule{"SOUND", media30, media40},
    LineRule{"KEY", key30, key40},
    LineRule{"SOURCE", reference30, reference40},
    LineRule{"FBURL", reference30, reference40},
    LineRule{"CALADRURI", reference30, reference40},
    LineRule{"CALURI", reference30, reference40},
    LineRule{"RELATED", reference30, reference40},
    LineRule{"KIND", asItStands, asItStands, true},
    LineRule{"PRODID", asItStands, asItStands, true},
    LineRule{"GENDER", asItStands, asItStands, true},
};

constexpr NameTable kTable(kRules);

}  // namespace

UnmodelledLine::UnmodelledLine(std::string_view text)
    : text_(text), name_(lineNameOf(text).name), rule_(kTable.find(name_)) {}

bool UnmodelledLine::isOnlyOnce() const {
  return rule_ != nullptr && rule_->onlyOnce;
}

std::optional<std::string_view> UnmodelledLine::inVersion(CardVersion version,
                                                          std::string& room) const {
  // What 3.0 admits may take another form in 4.0.
  if (!isWellFormed(text_, CardVersion::V30)) return std::nullopt;
  ContentLine content;
  const auto colon = parseHead(text_, content);
  if (colon == std::string_view::npos) return std::nullopt;
  content.value = text_.substr(colon + 1);
  auto* const form =
      rule_ == nullptr ? asItStands : (version == CardVersion::V30 ? rule_->in30 : rule_->in40);
  const auto written = form(content, room);
  if (!written || (version == CardVersion::V40 && !isWellFormed(*written, version))) {
    return std::nullopt;
  }
  return written;
}

}  // namespace ox::vcard
