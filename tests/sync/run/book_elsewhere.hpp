#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "ox/sync/remote/remote_book.hpp"
#include "ox/sync/remote/remote_error.hpp"

namespace ox::test {

// An address book elsewhere, in memory, that several runs and the test itself change. It keeps
// texts as they are, counts ETags up, lists what is new since a token, and does wrong what the
// switches say.
class BookElsewhere : public sync::RemoteBook {
 public:
  struct Card {
    std::string text;
    std::string etag;
    std::uint64_t change = 0;
  };

  // Switches. Each is asked for every card that is sent.
  std::function<std::string(const std::string& text)> rewrite;           // what is kept of a text
  std::function<std::optional<sync::Pushed>(const sync::Push&)> refuse;  // instead of doing it
  std::function<void(const sync::Push&)> beforePush;
  bool givesTokens = true;
  bool givesEtagsOnPut = true;
  bool keepsEtags = false;  // of a card, whatever it becomes, as weak ones may be
  // The connection breaks at that request, counted from 0 (list, fetch, each push): before it is
  // done, or after.
  std::optional<std::size_t> breaksBefore;
  std::optional<std::size_t> breaksAfter;
  bool listsNothing = false;
  std::set<std::string> failing;  // hrefs that cannot be fetched now
  bool forgetsTokens = false;     // answers any with everything, as if that were new
  // Tells by a token whether anything has changed, not what: as by a ctag.
  bool listsAllOrNothing = false;
  // ETags and tokens tell what is held, not when it came: what has come and gone since is not told.
  bool marksByContent = false;

  std::size_t requests = 0;
  std::vector<std::string> log;  // "LIST", "FETCH 3", "PUT a.vcf", "CREATE a.vcf", "DELETE a.vcf"

  // As another client does.
  void put(const std::string& href, const std::string& text);
  void erase(const std::string& href);
  // Without a trace: no listing says that it is gone.
  void loses(const std::string& href) { cards_.erase(href); }
  const std::map<std::string, Card>& cards() const { return cards_; }
  const std::string& text(const std::string& href) const { return cards_.at(href).text; }
  // That of the only card; throws when there is not exactly one.
  const std::string& onlyText() const;
  const std::string& onlyHref() const;

  sync::BookFacts facts() override { return bookFacts; }
  sync::BookFacts bookFacts{"Book", false, 0, false};
  sync::Listing list(const std::string& token) override;
  void fetch(std::span<const sync::ListedCard> cards,
             const std::function<void(sync::FetchedCard)>& sink) override;
  std::string pathOf(std::string_view href) const override { return std::string(href); }
  std::string hrefFor(std::string_view fileName) const override {
    return std::string(fileName) + ".vcf";
  }
  void push(std::span<const sync::Push> pushes,
            const std::function<void(std::size_t, sync::Pushed)>& sink) override;

 private:
  void begin(std::string what);
  void end();
  sync::Pushed pushed(const sync::Push& push);
  sync::Listing listByContent(const std::string& token);

  std::map<std::string, Card> cards_;
  std::map<std::string, std::uint64_t> gone_;  // by href, when
  std::uint64_t changes_ = 0;
  std::vector<std::map<std::string, std::string>>
      held_;  // ETags by href, as listed; tokens count them
};

}  // namespace ox::test
