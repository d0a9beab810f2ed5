#include "tests/sync/support/scripted_connection.hpp"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <sys/socket.h>

#include "ox/base/text/ascii_case.hpp"

namespace ox::support {
namespace {

using Framing = ScriptedAnswer::Framing;

std::string trimmed(std::string_view text) {
  const auto first = text.find_first_not_of(" \t");
  if (first == std::string_view::npos) return {};
  return std::string(text.substr(first, text.find_last_not_of(" \t") - first + 1));
}

std::string inHex(std::size_t number) {
  std::string digits;
  do {
    digits.insert(digits.begin(), "0123456789abcdef"[number % 16]);
    number /= 16;
  } while (number != 0);
  return digits;
}

bool hasBody(const ScriptedRequest& request, int status) {
  return request.method != "HEAD" && status != 204 && status != 304;
}

std::string headOf(const ScriptedRequest& request, const ScriptedAnswer& answer) {
  auto head = "HTTP/1.1 " + std::to_string(answer.status) + " Scripted\r\n";
  for (const auto& [name, value] : answer.headers) head += name + ": " + value + "\r\n";
  if (!hasBody(request, answer.status)) return head + "\r\n";
  switch (answer.framing) {
    case Framing::Length:
      head += "Content-Length: " + std::to_string(answer.promised.value_or(answer.body.size())) +
              "\r\n";
      break;
    case Framing::Chunked:
      head += "Transfer-Encoding: chunked\r\n";
      break;
    case Framing::UntilClose:
      head += "Connection: close\r\n";
      break;
  }
  return head + "\r\n";
}

}  // namespace

bool ScriptedConnection::readMore() {
  std::array<char, 65536> part{};
  const auto count = ::recv(socket_, part.data(), part.size(), 0);
  if (count <= 0) return false;
  buffer_.append(part.data(), static_cast<std::size_t>(count));
  return true;
}

bool ScriptedConnection::readTo(std::size_t size) {
  while (buffer_.size() < size) {
    if (!readMore()) return false;
  }
  return true;
}

std::optional<std::string> ScriptedConnection::takeLine() {
  auto end = buffer_.find("\r\n");
  while (end == std::string::npos) {
    if (!readMore()) return {};
    end = buffer_.find("\r\n");
  }
  auto line = buffer_.substr(0, end);
  buffer_.erase(0, end + 2);
  return line;
}

bool ScriptedConnection::readChunks(std::string& body) {
  while (true) {
    const auto line = takeLine();
    if (!line) return false;
    const auto size = static_cast<std::size_t>(std::strtoul(line->c_str(), nullptr, 16));
    if (size == 0) return takeLine().has_value();
    if (!readTo(size + 2)) return false;
    body.append(buffer_, 0, size);
    buffer_.erase(0, size + 2);
  }
}

// As servers of HTTP do to a client that begins with TLS.
bool ScriptedConnection::refusesTls() {
  constexpr char kHandshake = 22;
  if ((buffer_.empty() && !readMore()) || buffer_.front() != kHandshake) return false;
  send("HTTP/1.1 400 Bad Request\r\nContent-Length: 0\r\n\r\n");
  return true;
}

std::optional<ScriptedRequest> ScriptedConnection::read() {
  if (refusesTls()) return {};
  const auto first = takeLine();
  if (!first) return {};
  const auto methodEnd = first->find(' ');
  const auto targetEnd = first->rfind(' ');
  if (methodEnd == std::string::npos || targetEnd <= methodEnd) return {};
  ScriptedRequest request;
  request.method = first->substr(0, methodEnd);
  request.target = first->substr(methodEnd + 1, targetEnd - methodEnd - 1);
  for (auto line = takeLine(); !line || !line->empty(); line = takeLine()) {
    if (!line) return {};
    const auto colon = line->find(':');
    if (colon == std::string::npos) return {};
    request.headers.emplace_back(lowerCase(line->substr(0, colon)),
                                 trimmed(std::string_view(*line).substr(colon + 1)));
  }
  if (lowerCase(request.header("expect")) == "100-continue") {
    if (!send("HTTP/1.1 100 Continue\r\n\r\n")) return {};
  }
  if (request.header("transfer-encoding") == "chunked") {
    if (!readChunks(request.body)) return {};
    return request;
  }
  const auto size =
      static_cast<std::size_t>(std::strtoul(request.header("content-length").c_str(), nullptr, 10));
  if (!readTo(size)) return {};
  request.body = buffer_.substr(0, size);
  buffer_.erase(0, size);
  return request;
}

bool ScriptedConnection::send(std::string_view bytes) {
  while (!bytes.empty()) {
    const auto count = ::send(socket_, bytes.data(), bytes.size(), MSG_NOSIGNAL);
    if (count <= 0) return false;
    bytes.remove_prefix(static_cast<std::size_t>(count));
  }
  return true;
}

bool ScriptedConnection::sendPart(std::string_view part, const ScriptedAnswer& answer) {
  if (answer.framing != Framing::Chunked) return send(part);
  return send(inHex(part.size()) + "\r\n") && send(part) && send("\r\n");
}

bool ScriptedConnection::sendBody(std::string_view body, const ScriptedAnswer& answer) {
  const auto step = answer.pauseBetween.count() > 0 ? std::size_t{1} : answer.bytesAtOnce;
  const auto stop = std::min(
      {body.size(), answer.cutAt.value_or(body.size()), answer.stallsAt.value_or(body.size())});
  for (std::size_t at = 0; at < stop;) {
    const auto part = body.substr(at, std::min(step, stop - at));
    if (!sendPart(part, answer)) return false;
    at += part.size();
    if (answer.pauseBetween.count() > 0 && !wait_(answer.pauseBetween)) return false;
  }
  while (answer.rest) {
    const auto part = answer.rest();
    if (part.empty()) break;
    if (!sendPart(part, answer)) return false;
  }
  if (answer.cutAt) return false;
  if (answer.stallsAt) {
    while (wait_(std::chrono::hours(1))) {
    }
    return false;
  }
  return answer.framing != Framing::Chunked || send("0\r\n\r\n");
}

bool ScriptedConnection::write(const ScriptedRequest& request, const ScriptedAnswer& answer) {
  if (answer.closesUnanswered || !send(headOf(request, answer))) return false;
  if (!hasBody(request, answer.status)) return !answer.closesAfterwards;
  return sendBody(answer.body, answer) && !answer.closesAfterwards &&
         answer.framing != Framing::UntilClose;
}

}  // namespace ox::support
