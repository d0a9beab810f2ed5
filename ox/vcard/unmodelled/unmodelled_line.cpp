#include "ox/vcard/unmodelled/unmodelled_line.hpp"

#include <algorithm>
#include <array>
#include <cassert>

#include "ox/vcard/lines/ascii.hpp"
#include "ox/vcard/lines/content_line.hpp"
#include "ox/vcard/lines/markers.hpp"
#include "ox/vcard/lines/name_table.hpp"
#include "ox/vcard/lines/uri.hpp"
#include "ox/vcard/unmodelled/line_form.hpp"

namespace ox::vcard {
namespace {

// What a version makes of a line: missing when it cannot say it. Borrows from the line or the room.
using Written = std::optional<std::string_view>;

// Head and value are parts of one line, with a colon between them.
Written asItStands(const ContentLine& line, std::string& /*room*/) {
  assert(line.head.data() + line.head.size() + 1 == line.value.data());
  return std::string_view(line.head.data(), line.head.size() + 1 + line.value.size());
}

Written withValue(const ContentLine& line, std::string_view value, std::string& room) {
  room.assign(line.head).append(":").append(value);
  return room;
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

Written reference40(const ContentLine& line, std::string& room) {
  return hasValueType(line, "TEXT") || isReference(line.value) ? asItStands(line, room)
                                                               : std::nullopt;
}

// A URI that says that it is one: 3.0 takes such a value for base64 or text otherwise.
Written referenceWithType(const ContentLine& line, std::string& room) {
  if (!isReference(line.value)) return std::nullopt;
  if (line.find(ParameterKind::Value) != nullptr) return asItStands(line, room);
  room.assign(line.head).append(";VALUE=uri:").append(line.value);
  return room;
}

Written binary30(const ContentLine& line, std::string& room) {
  return line.encoding == Encoding::Base64 ? asItStands(line, room) : referenceWithType(line, room);
}

// A key may be text in both versions, but only 4.0 wants VALUE to tell it.
Written key30(const ContentLine& line, std::string& room) {
  const auto binary = binary30(line, room);
  return binary || hasValueType(line, "URI") ? binary : asItStands(line, room);
}

Written key40(const ContentLine& line, std::string& room) {
  return hasValueType(line, "TEXT") ? asItStands(line, room) : referenceWithType(line, room);
}

Written textOnly(const ContentLine& line, std::string& room) {
  return hasValueType(line, "TEXT") ? asItStands(line, room) : std::nullopt;
}

// What a reader would take for the beginning of a nested card is none.
Written agent30(const ContentLine& line, std::string& room) {
  return isBegin(trimmed(line.value)) ? std::nullopt : asItStands(line, room);
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
    LineRule{"N", refused, refused},
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
    LineRule{"PHOTO", binary30, referenceWithType},
    LineRule{"LOGO", binary30, referenceWithType},
    LineRule{"SOUND", binary30, referenceWithType},
    LineRule{"KEY", key30, key40},
    LineRule{"SOURCE", asItStands, reference40},
    LineRule{"FBURL", asItStands, reference40},
    LineRule{"CALADRURI", asItStands, reference40},
    LineRule{"CALURI", asItStands, reference40},
    LineRule{"RELATED", asItStands, reference40},
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
  if (!isWellFormed(text_, version)) return std::nullopt;
  if (rule_ == nullptr) return text_;
  ContentLine content;
  const auto colon = parseHead(text_, content);
  if (colon == std::string_view::npos) return std::nullopt;
  content.value = text_.substr(colon + 1);
  return (version == CardVersion::V30 ? rule_->in30 : rule_->in40)(content, room);
}

}  // namespace ox::vcard
