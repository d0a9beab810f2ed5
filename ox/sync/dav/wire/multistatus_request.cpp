#include "ox/sync/dav/wire/multistatus_request.hpp"

#include <algorithm>
#include <cstddef>
#include <utility>

#include "ox/base/text/ascii_case.hpp"
#include "ox/base/text/utf8.hpp"
#include "ox/sync/dav/wire/dav_names.hpp"
#include "ox/sync/remote/remote_error.hpp"

namespace ox::sync {

namespace {

constexpr std::size_t kMostSaid = 200;  // of what a server says, for a report

std::string contentTypeOf(const HttpAnswer& answer) {
  const auto* header = answer.header("content-type");
  if (!header) return {};
  auto type = lowerCase(header->substr(0, header->find(';')));
  type.erase(type.find_last_not_of(" \t") + 1);
  return type;
}

[[noreturn]] void refuse(const std::string& sentence) {
  throw RemoteError(RemoteFailure::Protocol, sentence);
}

void requireXml(const HttpAnswer& answer) {
  const auto type = contentTypeOf(answer);
  if (answer.status == 207 && (type == "application/xml" || type == "text/xml")) return;
  const auto what = type.empty() ? std::string("nothing") : type;
  refuse(answer.url + " answered " + std::to_string(answer.status) + " with " + what +
         " where a multistatus of WebDAV was expected.");
}

// What is within DAV:error, and the longest text of all, which is the one for people.
class ErrorHandler : public XmlHandler {
 public:
  std::vector<std::string> conditions;
  std::string said;

  void beginElement(std::string_view name, const XmlAttributes&) override {
    if (depth_ == 0 && name != dav::kError) refuse("no error of WebDAV");
    const auto local = name.substr(name.rfind('}') + 1);
    if (depth_ > 0 && local != "exception") conditions.emplace_back(local);
    isForPeople_ = local == "message" || local == "responsedescription" || local == "error";
    ++depth_;
  }
  void text(std::string_view part) override {
    if (isForPeople_ && said.size() < 4 * kMostSaid) said += part;
  }
  void endElement() override { --depth_; }

 private:
  std::size_t depth_ = 0;
  bool isForPeople_ = false;
};

// One line, without control characters, cut at a character.
std::string shortLine(std::string text) {
  text = validUtf8(std::move(text));
  std::string line;
  for (const char c : text) {
    const auto isWhite = static_cast<unsigned char>(c) <= 0x20 || c == 0x7F;
    if (!isWhite) {
      line += c;
    } else if (!line.empty() && line.back() != ' ') {
      line += ' ';
    }
  }
  if (line.size() > kMostSaid) {
    line.resize(kMostSaid);
    while (!line.empty() && !isValidUtf8(line)) line.pop_back();
    line += "...";
  }
  if (line.ends_with(' ')) line.pop_back();
  return line;
}

}  // namespace

MultistatusBody::MultistatusBody(std::function<void()> begin, std::function<void(DavResponse)> sink)
    : onBegin_(std::move(begin)), onResponse_(std::move(sink)) {}

void MultistatusBody::begin(const HttpAnswer& head) {
  reader_.reset();
  requireXml(head);
  if (onBegin_) onBegin_();
  reader_.emplace(onResponse_);
}

void MultistatusBody::take(std::string_view part) {
  if (reader_) reader_->take(part);
}

void MultistatusBody::finish(const HttpAnswer& answer) {
  requireXml(answer);
  if (!reader_) begin(answer);  // a 207 without any body
  try {
    reader_->finish();
  } catch (const RemoteError& error) {
    refuse(answer.url + " sent a multistatus that is cut short or broken. " + error.what());
  }
}

const std::string& MultistatusBody::syncToken() const {
  static const auto& none = *new std::string;
  return reader_ ? reader_->syncToken() : none;
}

BodySink MultistatusBody::sink() {
  return {.begin = [this](const HttpAnswer& head) { begin(head); },
          .take = [this](std::string_view part) { take(part); }};
}

Multistatus multistatusOf(HttpClient& client, const HttpRequest& request) {
  Multistatus read;
  MultistatusBody body(
      [&] { read.responses.clear(); },
      [&](DavResponse response) { read.responses.push_back(std::move(response)); });
  const auto sink = body.sink();
  read.answer = client.send(request, &sink);
  if (read.answer.status / 100 != 2) return read;
  body.finish(read.answer);
  read.syncToken = body.syncToken();
  return read;
}

std::vector<DavResponse> responsesIn(const HttpAnswer& answer) {
  std::vector<DavResponse> responses;
  MultistatusBody body({}, [&](DavResponse response) { responses.push_back(std::move(response)); });
  body.begin(answer);
  body.take(answer.body);
  body.finish(answer);
  return responses;
}

bool DavRefusal::names(std::string_view condition) const {
  return std::ranges::find(conditions, condition) != conditions.end();
}

DavRefusal refusalOf(const HttpAnswer& answer) {
  const auto type = contentTypeOf(answer);
  if (type == "text/html") return {};
  ErrorHandler handler;
  XmlReader reader(handler);
  try {
    reader.take(answer.body);
    reader.finish();
  } catch (const RemoteError&) {
    if (type.starts_with("text/plain")) return {.conditions = {}, .said = shortLine(answer.body)};
    return {};
  }
  auto said = shortLine(handler.said);
  if (said.empty() && !handler.conditions.empty()) said = handler.conditions.front();
  return {.conditions = std::move(handler.conditions), .said = std::move(said)};
}

std::string sentenceOf(const HttpAnswer& answer) {
  const auto refusal = refusalOf(answer);
  auto sentence = answer.url + " answered " + std::to_string(answer.status);
  if (!refusal.said.empty()) sentence += " (" + refusal.said + ")";
  return sentence;
}

}  // namespace ox::sync
