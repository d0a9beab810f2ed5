#include "ox/formats/ldif/ldif_reader.hpp"

#include <algorithm>
#include <utility>

#include "ox/base/text/ascii_case.hpp"
#include "ox/formats/card_source.hpp"
#include "ox/vcard/lines/ascii.hpp"
#include "ox/vcard/lines/decode.hpp"

namespace ox::formats {
namespace {

constexpr std::size_t kMostLine = LdifReader::kMostBytes;

bool isAttributeName(std::string_view name) {
  return !name.empty() && std::ranges::all_of(name, [](char c) {
    return vcard::isLetter(c) || vcard::isDigit(c) || c == '-' || c == '.' || c == ';' || c == '_';
  });
}

// Without the blanks in front; those at the end belong to the value.
std::string_view withoutFill(std::string_view text) {
  while (!text.empty() && text.front() == ' ') text.remove_prefix(1);
  return text;
}

bool isText(std::string_view name) {
  return name != "jpegphoto" && name != "photo" && name != "audio" && name != "usercertificate";
}

void refuse(LdifRecord& record, std::string reason) {
  if (record.refusal.empty()) record.refusal = std::move(reason);
}

}  // namespace

const std::string* LdifRecord::find(std::string_view name) const {
  const auto found = std::ranges::find(attributes, name, &LdifAttribute::name);
  return found == attributes.end() ? nullptr : &found->value;
}

bool LdifRecord::has(std::string_view name, std::string_view lowerValue) const {
  return std::ranges::any_of(attributes, [&](const LdifAttribute& attribute) {
    return attribute.name == name && lowerCase(attribute.value) == lowerValue;
  });
}

void LdifReader::readPhysicalLine(std::string& line) {
  while (true) {
    const auto next = source_.peek();
    if (next == TextSource::kEnd) return;
    source_.skip();
    if (next == '\n') break;
    if (next == '\r' && (source_.peek() == '\n' || source_.peek() == TextSource::kEnd)) continue;
    // What is too long is read and not held; a line of that length is refused.
    if (line.size() <= kMostLine) line += static_cast<char>(next);
  }
  ++line_;
}

bool LdifReader::readLine(std::string& line) {
  do {
    line.clear();
    lineStart_ = line_;
    if (source_.peek() == TextSource::kEnd) return false;
    readPhysicalLine(line);
    if (line.empty()) return true;
    while (source_.peek() == ' ') {
      source_.skip();
      readPhysicalLine(line);
    }
  } while (line.starts_with('#'));
  return true;
}

bool LdifReader::next(LdifRecord& record) {
  record = {};
  std::string line;
  std::size_t bytes = 0;
  while (readLine(line)) {
    if (line.empty()) {
      if (record.line != 0) return true;
      continue;
    }
    if (!hasBegun_) {
      hasBegun_ = true;
      const auto front = lowerCase(std::string_view(line).substr(0, 8));
      if (front == "version:") continue;
      if (!front.starts_with("dn:")) throw FormatError("does not begin as LDIF does");
    }
    if (record.line == 0) record.line = lineStart_;
    bytes += line.size();
    if (bytes > kMostBytes) {
      refuse(record, "a record of more than 64 MiB");
    } else {
      readAttribute(line, record);
    }
  }
  return record.line != 0;
}

void LdifReader::readAttribute(std::string_view line, LdifRecord& record) {
  const auto at = " (line " + std::to_string(lineStart_) + ")";
  const auto colon = line.find(':');
  const auto whole = line.substr(0, colon);
  if (colon == std::string_view::npos || !isAttributeName(whole)) {
    // Between the parts of a change.
    return refuse(record, line == "-" ? "tells of a change, and no entry" : "no attribute" + at);
  }
  auto name = lowerCase(whole.substr(0, whole.find(';')));
  auto rest = line.substr(colon + 1);
  if (rest.starts_with('<')) {
    record.references.emplace_back(whole);
    return;
  }
  if (!rest.starts_with(':'))
    return takeValue(std::move(name), std::string(withoutFill(rest)), record);
  rest = withoutFill(rest.substr(1));
  auto bytes = rest.empty() ? std::optional<std::string>("") : vcard::decodeBase64(rest);
  if (!bytes) return refuse(record, "no base64" + at);
  takeValue(std::move(name), *std::move(bytes), record);
}

void LdifReader::takeValue(std::string name, std::string value, LdifRecord& record) {
  if (isText(name)) value = source_.utf8(std::move(value));
  if (name == "changetype") return refuse(record, "tells of a change, and no entry");
  if (name == "dn") {
    if (!record.dn.empty()) return refuse(record, "a second dn: a blank line is missing before it");
    record.dn = std::move(value);
    return;
  }
  record.attributes.push_back({std::move(name), std::move(value)});
}

}  // namespace ox::formats
