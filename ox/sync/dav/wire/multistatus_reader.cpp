#include "ox/sync/dav/wire/multistatus_reader.hpp"

#include <algorithm>
#include <charconv>
#include <utility>

#include "ox/sync/dav/wire/dav_names.hpp"
#include "ox/sync/remote/remote_error.hpp"

namespace ox::sync {

namespace {

constexpr std::size_t kMostResponses = 2'000'000;
constexpr std::size_t kMostParts = 10'000;

std::string_view trimmed(std::string_view text) {
  constexpr std::string_view kWhite = " \t\r\n";
  const auto from = text.find_first_not_of(kWhite);
  if (from == std::string_view::npos) return {};
  return text.substr(from, text.find_last_not_of(kWhite) + 1 - from);
}

[[noreturn]] void refuse(const char* why) {
  throw RemoteError(RemoteFailure::Protocol, why);
}

}  // namespace

std::string_view DavProperty::value() const {
  return trimmed(text);
}

bool DavProperty::has(std::string_view element) const {
  return std::ranges::find(elements, element, &DavElement::name) != elements.end();
}

std::vector<std::string> DavProperty::hrefs() const {
  std::vector<std::string> found;
  for (const auto& element : elements) {
    if (element.name == dav::kHref && !element.text.empty()) found.push_back(element.text);
  }
  return found;
}

const DavProperty* DavResponse::property(std::string_view name) const {
  const auto found = std::ranges::find_if(properties, [&](const DavProperty& property) {
    return property.name == name && property.status / 100 == 2;
  });
  return found == properties.end() ? nullptr : &*found;
}

int statusCode(std::string_view line) {
  line = trimmed(line);
  const auto space = line.find(' ');
  if (!line.starts_with("HTTP/") || space == std::string_view::npos) return 0;
  line = trimmed(line.substr(space));
  int code = 0;
  const auto [end, error] = std::from_chars(line.data(), line.data() + line.size(), code);
  return error == std::errc() && end == line.data() + 3 ? code : 0;
}

MultistatusReader::MultistatusReader(std::function<void(DavResponse)> sink)
    : sink_(std::move(sink)), reader_(*this) {}

void MultistatusReader::finish() {
  reader_.finish();
}

MultistatusReader::Place MultistatusReader::placeOf(std::string_view name) const {
  if (places_.empty()) {
    if (name != dav::kMultistatus) refuse("The answer is XML, and no multistatus of WebDAV.");
    return Place::Root;
  }
  switch (places_.back()) {
    case Place::Root:
      if (name == dav::kResponse) return Place::Response;
      if (name == dav::kSyncToken) return Place::Token;
      return Place::Ignored;
    case Place::Response:
      if (name == dav::kHref) return Place::Href;
      if (name == dav::kStatus) return Place::Status;
      if (name == dav::kError) return Place::Error;
      if (name == dav::kSaid) return Place::Said;
      if (name == dav::kPropstat) return Place::Propstat;
      return Place::Ignored;
    case Place::Propstat:
      if (name == dav::kStatus) return Place::PropstatStatus;
      if (name == dav::kProp) return Place::Prop;
      if (name == dav::kError) return Place::Error;
      if (name == dav::kSaid) return Place::Said;
      return Place::Ignored;
    case Place::Error:
      return Place::ErrorName;
    case Place::Prop:
      return Place::Property;
    case Place::Property:
    case Place::Element:
      return Place::Element;
    default:
      return Place::Ignored;
  }
}

void MultistatusReader::beginElement(std::string_view name, const XmlAttributes& attributes) {
  places_.push_back(placeOf(name));
  if (++parts_ > kMostParts) refuse("One entry of the answer has more than 10,000 elements.");
  beginPart(name, attributes);
}

void MultistatusReader::beginPart(std::string_view name, const XmlAttributes& attributes) {
  switch (places_.back()) {
    case Place::Response:
      if (++responses_ > kMostResponses) refuse("The answer has more than 2,000,000 entries.");
      response_ = {};
      hrefs_.clear();
      status_.clear();
      break;
    case Place::Href:
      hrefs_.emplace_back();
      break;
    case Place::ErrorName:
      response_.errors.emplace_back(name);
      break;
    case Place::Propstat:
      propstatFrom_ = response_.properties.size();
      propstatStatus_.clear();
      break;
    case Place::Property:
      response_.properties.push_back({.name = std::string(name), .text = {}, .elements = {}});
      break;
    case Place::Element: {
      auto& elements = response_.properties.back().elements;
      elements_.push_back(elements.size());
      elements.push_back({.name = std::string(name), .text = {}, .attributes = attributes});
      break;
    }
    default:
      break;
  }
}

void MultistatusReader::text(std::string_view part) {
  switch (places_.back()) {
    case Place::Token:
      syncToken_ += part;
      break;
    case Place::Href:
      hrefs_.back() += part;
      break;
    case Place::Status:
      status_ += part;
      break;
    case Place::Said:
      response_.said += part;
      break;
    case Place::PropstatStatus:
      propstatStatus_ += part;
      break;
    case Place::Property:
      response_.properties.back().text += part;
      break;
    case Place::Element:
      response_.properties.back().elements[elements_.back()].text += part;
      break;
    default:
      break;
  }
}

void MultistatusReader::endElement() {
  const auto place = places_.back();
  places_.pop_back();
  endPart(place);
  if (places_.size() == 1) parts_ = 0;
}

void MultistatusReader::endPart(Place place) {
  switch (place) {
    case Place::Token:
      syncToken_ = std::string(trimmed(syncToken_));
      break;
    case Place::Element: {
      auto& element = response_.properties.back().elements[elements_.back()];
      element.text = std::string(trimmed(element.text));
      elements_.pop_back();
      break;
    }
    case Place::Propstat:
      endPropstat();
      break;
    case Place::Response:
      endResponse();
      break;
    default:
      break;
  }
}

// The status may stand before or behind the properties.
void MultistatusReader::endPropstat() {
  const auto status = statusCode(propstatStatus_);
  for (auto at = propstatFrom_; at < response_.properties.size(); ++at) {
    response_.properties[at].status = status;
  }
}

// Several hrefs with one status are several responses in short (RFC 4918, section 14.24).
void MultistatusReader::endResponse() {
  response_.status = statusCode(status_);
  response_.said = std::string(trimmed(response_.said));
  if (hrefs_.empty()) return;
  for (std::size_t at = 0; at + 1 < hrefs_.size(); ++at) {
    auto copy = response_;
    copy.href = std::string(trimmed(hrefs_[at]));
    sink_(std::move(copy));
  }
  response_.href = std::string(trimmed(hrefs_.back()));
  sink_(std::exchange(response_, {}));
}

}  // namespace ox::sync
