#include "tests/sync/support/card_server.hpp"

#include <utility>

#include "tests/sync/support/dav_answers.hpp"

namespace ox::support {
namespace {

constexpr const char* kHome = "/ann/";

std::string etagOf(const CardServer::State::Card& card) {
  return "\"" + std::to_string(card.change) + "\"";
}

std::string escaped(const std::string& text) {
  std::string result;
  for (const char c : text) {
    switch (c) {
      case '&':
        result += "&amp;";
        break;
      case '<':
        result += "&lt;";
        break;
      case '\r':
        result += "&#13;";
        break;
      default:
        result += c;
    }
  }
  return result;
}

std::string uidOf(const std::string& text) {
  const auto from = text.find("\r\nUID:");
  if (from == std::string::npos) return {};
  return text.substr(from + 6, text.find("\r\n", from + 6) - from - 6);
}

// Empty for what is none of the book's.
std::string nameIn(const std::string& target) {
  const auto& book = CardServer::bookPath();
  return target.starts_with(book) ? target.substr(book.size()) : std::string();
}

// Every answer has a body, as those of some servers have, so that each can be cut.
ScriptedAnswer done(int code, ScriptedHeaders headers = {}) {
  auto answer = plain(code, "It is done.");
  answer.headers.insert(answer.headers.end(), headers.begin(), headers.end());
  return answer;
}

}  // namespace

CardServer::CardServer() {
  scripted.answer([this](const ScriptedRequest& request) {
    const std::lock_guard lock(mutex_);
    const auto answer = [&] { return answerTo(request); };
    return between_ ? between_(request, answer) : answer();
  });
}

void CardServer::between(Between work) {
  const std::lock_guard lock(mutex_);
  between_ = std::move(work);
}

void CardServer::wants(const std::string& authorization) {
  const std::lock_guard lock(mutex_);
  authorization_ = authorization;
}

void CardServer::put(const std::string& name, const std::string& text) {
  const std::lock_guard lock(mutex_);
  state_.gone.erase(name);
  state_.cards[name] = {text, ++state_.changes};
}

void CardServer::erase(const std::string& name) {
  const std::lock_guard lock(mutex_);
  state_.cards.erase(name);
  state_.gone[name] = ++state_.changes;
}

std::map<std::string, std::string> CardServer::texts() const {
  std::map<std::string, std::string> texts;
  for (const auto& [name, card] : state().cards) texts[name] = card.text;
  return texts;
}

CardServer::State CardServer::state() const {
  const std::lock_guard lock(mutex_);
  return state_;
}

void CardServer::setState(State state) {
  const std::lock_guard lock(mutex_);
  state_ = std::move(state);
}

ScriptedAnswer CardServer::answerTo(const ScriptedRequest& request) {
  if (!authorization_.empty() && request.header("authorization") != authorization_) {
    auto answer = plain(401, "Who are you?");
    answer.headers.emplace_back("WWW-Authenticate", "Basic realm=\"cards\"");
    return answer;
  }
  if (request.method == "PROPFIND") return propfind(request);
  if (request.method == "GET") return get(request);
  if (request.method == "PUT" || request.method == "DELETE") return change(request);
  if (request.target != bookPath()) return plain(404);
  if (isReport(request, "sync-collection")) return changesSince(request);
  if (isReport(request, "addressbook-multiget")) return multiget(request);
  return plain(501);
}

std::string CardServer::token() const {
  return "urn:token:" + std::to_string(state_.changes);
}

std::string CardServer::entryOf(const std::string& name) const {
  const auto& card = state_.cards.at(name);
  return response(bookPath() + name,
                  propstat("<resourcetype/><getcontenttype>text/vcard</getcontenttype>"
                           "<getcontentlength>" +
                           std::to_string(card.text.size()) + "</getcontentlength><getetag>" +
                           etagOf(card) + "</getetag>"));
}

ScriptedAnswer CardServer::propfind(const ScriptedRequest& request) const {
  const auto& path = request.target;
  const bool asksMembers = request.header("depth") == "1";
  const auto who =
      std::string("<current-user-principal><href>") + kHome + "</href></current-user-principal>";
  const auto book =
      response(bookPath(), propstat("<resourcetype><collection/><C:addressbook/></resourcetype>"
                                    "<displayname>Cards</displayname>" +
                                    who + "<sync-token>" + token() + "</sync-token>"));
  if (path == "/" || path == "/.well-known/carddav") {
    return multistatus(
        response(path, propstat("<resourcetype><collection/></resourcetype>" + who)));
  }
  if (path == kHome) {
    const auto home = response(kHome, propstat("<resourcetype><collection/></resourcetype>" + who +
                                               "<C:addressbook-home-set><href>" + kHome +
                                               "</href></C:addressbook-home-set>"));
    return multistatus(asksMembers ? home + book : home);
  }
  if (path != bookPath()) return plain(404);
  auto all = book;
  if (asksMembers) {
    for (const auto& [name, card] : state_.cards) all += entryOf(name);
  }
  return multistatus(all);
}

ScriptedAnswer CardServer::changesSince(const ScriptedRequest& request) const {
  const auto asked = tokenIn(request);
  const auto start = std::string("urn:token:");
  if (!asked.empty() && !asked.starts_with(start)) {
    return xmlAnswer(403, "<error xmlns=\"DAV:\"><valid-sync-token/></error>");
  }
  const auto since = asked.empty() ? 0 : std::stoull(asked.substr(start.size()));
  std::string all;
  for (const auto& [name, card] : state_.cards) {
    if (card.change > since) all += listed(bookPath() + name, etagOf(card));
  }
  for (const auto& [name, when] : state_.gone) {
    if (!asked.empty() && when > since) all += gone(bookPath() + name);
  }
  return multistatus(all + support::token(token()));
}

ScriptedAnswer CardServer::multiget(const ScriptedRequest& request) const {
  std::string all;
  for (const auto& href : hrefsIn(request)) {
    const auto found = state_.cards.find(nameIn(href));
    if (found == state_.cards.end()) {
      all += gone(href);
      continue;
    }
    all +=
        response(href, propstat("<getetag>" + etagOf(found->second) + "</getetag><C:address-data>" +
                                escaped(found->second.text) + "</C:address-data>"));
  }
  return multistatus(all);
}

ScriptedAnswer CardServer::get(const ScriptedRequest& request) const {
  const auto found = state_.cards.find(nameIn(request.target));
  if (found == state_.cards.end()) return plain(404);
  return {
      .status = 200,
      .headers = {{"Content-Type", "text/vcard; charset=utf-8"}, {"ETag", etagOf(found->second)}},
      .body = found->second.text};
}

ScriptedAnswer CardServer::change(const ScriptedRequest& request) {
  const auto name = nameIn(request.target);
  if (name.empty() || name.find('/') != std::string::npos) return plain(403);
  const auto found = state_.cards.find(name);
  const bool isThere = found != state_.cards.end();
  if (request.has("if-match") &&
      (!isThere || request.header("if-match") != etagOf(found->second))) {
    return plain(412);
  }
  if (request.header("if-none-match") == "*" && isThere) return plain(412);
  if (request.method == "DELETE") {
    if (!isThere) return plain(404);
    erase(name);
    return done(200);
  }
  const auto uid = uidOf(request.body);
  for (const auto& [other, card] : state_.cards) {
    if (other != name && uidOf(card.text) == uid) {
      return xmlAnswer(409,
                       "<error xmlns=\"DAV:\" xmlns:C=\"urn:ietf:params:xml:ns:carddav\">"
                       "<C:no-uid-conflict/></error>");
    }
  }
  put(name, request.body);
  return done(isThere ? 200 : 201, {{"ETag", etagOf(state_.cards.at(name))}});
}

}  // namespace ox::support
