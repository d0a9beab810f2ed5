#include <algorithm>
#include <span>
#include <utility>

#include "ox/records/card_uid.hpp"
#include "ox/vcard/lines/ascii.hpp"
#include "ox/vcard/lines/decode.hpp"
#include "ox/vcard/lines/line_writer.hpp"
#include "ox/vcard/lines/uri.hpp"
#include "ox/vcard/properties/card_date.hpp"
#include "ox/vcard/properties/picture_kind.hpp"
#include "ox/vcard/properties/spelling.hpp"
#include "ox/vcard/properties/uid.hpp"
#include "ox/vcard/read/card_builder.hpp"
#include "ox/vcard/unmodelled/kept_lines.hpp"

// The lines of a card that a record holds once. Every function is false when the line has to be
// kept as it is.

namespace ox::vcard {
namespace {

bool saysUri(const ContentLine& line) {
  const auto* value = line.find(ParameterKind::Value);
  return (value != nullptr && (isWord(value->value, "URI") || isWord(value->value, "URL"))) ||
         startsWithWord(line.value, "HTTP:") || startsWithWord(line.value, "HTTPS:") ||
         startsWithWord(line.value, "FILE:") || startsWithWord(line.value, "CID:");
}

// The bytes of a data URI (RFC 2397).
std::optional<std::string> dataUri(std::string_view uri) {
  const auto comma = uri.find(',');
  if (comma == std::string_view::npos) return std::nullopt;
  const auto semicolon = uri.substr(0, comma).rfind(';');
  const auto content = uri.substr(comma + 1);
  if (semicolon != std::string_view::npos &&
      isWord(trimmed(uri.substr(semicolon + 1, comma - semicolon - 1)), "BASE64")) {
    return decodeBase64(percentDecoded(content));
  }
  return percentDecoded(content);
}

std::string mediaOfDataUri(std::string_view uri) {
  return mediaType(uri.substr(0, uri.find_first_of(";,")));
}

// TYPE of vCard 3.0 is the name of the format, or the whole media type.
std::string mediaOfTypes(const ContentLine& line) {
  std::string media;
  for (const auto& parameter : line.parameters) {
    if (parameter.kind != ParameterKind::Type) continue;
    forEachWord(parameter.value, [&](std::string_view word) {
      if (!media.empty() || isWord(word, "PREF")) return;
      const bool isWhole = word.find('/') != std::string_view::npos;
      media = mediaType(isWhole ? std::string(word) : std::string("image/").append(word));
    });
  }
  return media;
}

bool hasType(const ContentLine& line, std::string_view wanted) {
  bool found = false;
  for (const auto& parameter : line.parameters) {
    if (parameter.kind != ParameterKind::Type) continue;
    forEachWord(parameter.value, [&](std::string_view word) { found |= isWord(word, wanted); });
  }
  return found;
}

// RFC 9554, section 4.4: what the line says is made of other lines. vCard 3.0 has no such
// parameter.
bool isDerived(const ContentLine& line) {
  for (const auto& parameter : line.parameters) {
    const bool named = isWord(parameter.name, "DERIVED") || isWord(parameter.name, "X-DERIVED");
    if (named && isWord(parameter.value, "TRUE")) return true;
  }
  return false;
}

}  // namespace

bool CardBuilder::addName(const ContentLine& line) {
  if (hasName_) return false;
  const auto parts = components<6>(line.value);
  const auto take = [&](PropertyId property, std::string_view part, std::string_view separator) {
    if (part.empty()) return;
    single(property) = unescapedList(part, dialect_, separator);
    hasName_ = true;
  };
  take(property_id::kLast, parts[0], " ");
  take(property_id::kFirst, parts[1], " ");
  take(property_id::kMiddle, parts[2], " ");
  take(property_id::kTitle, parts[3], " ");
  take(property_id::kSuffix, parts[4], ", ");
  const bool allTaken = parts[5].find_first_not_of("; ") == std::string_view::npos;
  if (!allTaken) mend(line, "N has more than five components, kept as text beside them");
  if (!card_.isGroup && hasList(line.value, dialect_)) {
    nameSpelling_ = structureSpelling(std::span(parts).first<5>(), dialect_);
    keepSpelling(property_id::kLast, nameSpelling_);
  }
  if (line.parameters.empty()) return allTaken;
  if (const auto* sortAs = line.find(ParameterKind::SortAs)) {
    auto readings = sortedAs(*sortAs);
    single(property_id::kLastPhonetic) = std::move(readings.last);
    single(property_id::kFirstPhonetic) = std::move(readings.first);
    const auto said = std::string(";SORT-AS=").append(sortAs->value);
    if (!card_.isGroup) {
      unmodelled_.emplace_back(KeptDetail{property_id::kLastPhonetic, 0, said}.text());
    }
  }
  keepParameters(property_id::kLast, 0, line, bitOf(ParameterKind::SortAs), 0, true);
  return allTaken;
}

bool CardBuilder::addFullName(const ContentLine& line) {
  if (!fullName_.empty()) {
    moreFullNames_ = true;
    return false;
  }
  fullName_ = text(line);
  fullNameDerived_ = isDerived(line);
  fullNameLine_.clear();
  appendKept(line, fullNameLine_);
  if (card_.isGroup && !fullNameDerived_ && !fullName_.empty()) {
    keepParameters(property_id::kGroupName, 0, line, 0, 0, true);
  }
  return true;
}

bool CardBuilder::addText(const ContentLine& line) {
  if (line.value.empty()) return true;
  auto& held = single(line.row->property);
  // SORT-AS may have said it already.
  const bool isReading = line.row->property == property_id::kFirstPhonetic ||
                         line.row->property == property_id::kLastPhonetic;
  if (!held.empty()) return isReading && line.parameters.empty() && held == text(line);
  held = text(line);
  if (line.row->property == property_id::kNickname && hasList(line.value, dialect_)) {
    keepSpelling(property_id::kNickname, listSpelling(line.value, dialect_));
  }
  keepParameters(line.row->property, 0, line, 0, 0, true);
  return true;
}

// The company, then its units: the department holds them as the card parts them.
bool CardBuilder::addOrganization(const ContentLine& line) {
  auto& company = single(property_id::kOrganization);
  auto& department = single(property_id::kDepartment);
  if (!company.empty() || !department.empty()) return false;
  auto read = organizationOf(line.value, dialect_);
  company = std::move(read.company);
  department = std::move(read.department);
  if (line.value.find("\\;") != std::string_view::npos) {
    const auto spelling = unitsSpelling(line.value, dialect_);
    const auto ours = organizationSpelling(CardText(company).view(), CardText(department).view());
    if (spelling != ours) keepSpelling(property_id::kOrganization, spelling);
  }
  keepParameters(property_id::kOrganization, 0, line, 0, 0, true);
  return true;
}

// Several notes are one, unless their parameters tell them apart.
bool CardBuilder::addNote(const ContentLine& line) {
  if (line.value.empty()) return true;
  auto& note = single(property_id::kNote);
  if (note.empty()) {
    note = text(line);
    const auto kept = unmodelled_.size();
    keepParameters(property_id::kNote, 0, line, 0, 0, true);
    noteParameters_ = unmodelled_.size() > kept ? scratch_ : std::string();
    return true;
  }
  readTypeWords(line, types_);
  collectParameters(line, 0, types_.known, true);
  if (scratch_ != noteParameters_) return false;
  if (types_.rank != 0) mend(line, "preference of one note among several left out");
  (note += '\n') += text(line);
  return true;
}

std::optional<Date> CardBuilder::readDate(const ContentLine& line) {
  const auto* omitted = line.find(ParameterKind::OmittedYear);
  const auto read = readCardDate(text(line), omitted != nullptr ? omitted->value : "");
  if (!read) {
    const auto* value = line.find(ParameterKind::Value);
    const bool freeText = value != nullptr && isWord(value->value, "TEXT");
    if (!freeText) mend(line, std::string(line.name) + " is no readable date, kept as text");
    return std::nullopt;
  }
  if (read->mended) {
    mend(line, std::string(line.name) + " in an unusual spelling, read as " + read->date.toText());
  }
  return read->date;
}

bool CardBuilder::addBirthday(const ContentLine& line) {
  if (trimmed(line.value).empty()) return true;
  if (birthday_) return false;
  birthday_ = readDate(line);
  if (!birthday_) return false;
  keepParameters(property_id::kBirthday, 0, line, bitOf(ParameterKind::OmittedYear), 0, true);
  return true;
}

// SOUND;X-IRMC-N holds the reading of N.
bool CardBuilder::addSound(const ContentLine& line) {
  if (line.encoding == Encoding::Base64 || !hasType(line, "X-IRMC-N")) return false;
  if (!single(property_id::kLastPhonetic).empty() || !single(property_id::kFirstPhonetic).empty()) {
    return false;
  }
  const auto parts = components<5>(line.value);
  single(property_id::kLastPhonetic) = unescaped(parts[0], dialect_);
  single(property_id::kFirstPhonetic) = unescaped(parts[1], dialect_);
  single(property_id::kMiddlePhonetic) = unescaped(parts[2], dialect_);
  return true;
}

std::string CardBuilder::uidOf(const ContentLine& line) {
  auto value = trimmed(line.value);
  // Only 4.0 wants a URI of it.
  std::string named;
  if (is40_) value = named = uidOfValue(value);
  const CardText clean(value);
  auto uid = clean.view();
  if (clean.isChanged() || uid.find('\n') != std::string_view::npos) {
    named = uid;
    std::erase(named, '\n');
    uid = named;
    if (uid.size() != value.size()) mend(line, "UID with control characters");
  }
  const bool isBare =
      std::any_of(line.parameters.begin(), line.parameters.end(),
                  [](const Parameter& each) { return isWord(each.name, kBareUid); });
  return std::string(isBare ? uidKey(uid) : uid);
}

bool CardBuilder::addUid(const ContentLine& line) {
  if (!uid_.empty()) return false;
  uid_ = uidOf(line);
  return true;
}

bool CardBuilder::addPhoto(const ContentLine& line) {
  const auto value = trimmed(line.value);
  if (value.empty()) return true;
  if (card_.photo) return false;
  const bool isData = startsWithWord(value, "DATA:");
  if (!isData && line.encoding != Encoding::Base64 && saysUri(line)) return false;
  auto bytes = isData ? dataUri(value.substr(5)) : decodeBase64(value);
  if (!bytes || bytes->empty()) {
    mend(line, "PHOTO is no base64, kept as text");
    return false;
  }
  card_.photo = makeData(*std::move(bytes));
  // Nearly always the kind of picture is told by its own bytes.
  if (mediaTypeOf(*card_.photo).empty()) {
    const auto media = isData ? mediaOfDataUri(value.substr(5)) : mediaOfTypes(line);
    if (!media.empty()) keepSpelling(kPhotoParameters, media);
  }
  keepParameters(kPhotoParameters, 0, line, 0, 0, false);
  return true;
}

}  // namespace ox::vcard
