#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <mutex>
#include <string>

#include "tests/sync/support/scripted_server.hpp"

namespace ox::support {

// A CardDAV server with one book, which keeps what it is sent byte for byte: discovery, PROPFIND,
// sync-collection, multiget, GET, and PUT and DELETE under conditions. No UID lies at two places.
// What it holds can be asked; what is to go wrong stands between the request and its answer.
class CardServer {
 public:
  using Answer = std::function<ScriptedAnswer()>;
  // Gets a request and what carries it out; answers in its place.
  using Between = std::function<ScriptedAnswer(const ScriptedRequest&, const Answer& answer)>;

  CardServer();
  CardServer(const CardServer&) = delete;
  CardServer& operator=(const CardServer&) = delete;
  ~CardServer() = default;

  std::string origin() const { return scripted.origin(); }
  std::string bookUrl() const { return scripted.url(bookPath()); }
  static std::string bookPath() { return "/ann/cards/"; }

  // For each request from now on; without one everything goes well.
  void between(Between work);
  // Only who sends that in "Authorization" is let in.
  void wants(const std::string& authorization);

  // As another client does; the name is that of the file.
  void put(const std::string& name, const std::string& text);
  void erase(const std::string& name);
  // By file name.
  std::map<std::string, std::string> texts() const;

  // What it holds, to be put back. A value.
  struct State {
    struct Card {
      std::string text;
      std::uint64_t change = 0;
    };
    std::map<std::string, Card> cards;
    std::map<std::string, std::uint64_t> gone;
    std::uint64_t changes = 0;
  };
  State state() const;
  void setState(State state);

  ScriptedServer scripted;

 private:
  ScriptedAnswer answerTo(const ScriptedRequest& request);
  ScriptedAnswer propfind(const ScriptedRequest& request) const;
  ScriptedAnswer changesSince(const ScriptedRequest& request) const;
  ScriptedAnswer multiget(const ScriptedRequest& request) const;
  ScriptedAnswer change(const ScriptedRequest& request);
  ScriptedAnswer get(const ScriptedRequest& request) const;
  std::string entryOf(const std::string& name) const;
  std::string token() const;

  mutable std::recursive_mutex mutex_;  // what stands between may ask and change what there is
  Between between_;
  std::string authorization_;
  State state_;
};

}  // namespace ox::support
