#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace ox::sync {

// A card elsewhere without its text.
struct ListedCard {
  std::string href;         // exactly as the other side spells it
  std::string etag;         // exactly as received; empty: it gives none
  std::uint64_t bytes = 0;  // 0: not known

  bool operator==(const ListedCard&) const = default;
};

// What a book holds. Only what was read to its end and made sense is a listing.
struct Listing {
  // Cards names every card of the book. Otherwise it names what is new or changed since the token,
  // and `gone` what is not there any more.
  bool isWhole = false;
  // Whole because the token, which told what had changed once, is not known any more.
  bool hasLostToken = false;
  std::vector<ListedCard> cards;
  std::vector<std::string> gone;
  std::string token;  // for the next listing; empty: there is none
};

struct FetchedCard {
  enum class State : std::uint8_t {
    Read,
    Gone,        // it is certain that the card is not there
    Unreadable,  // it is there, and nobody can read it; `reason` says why
  };
  State state = State::Unreadable;
  std::string href;  // as it was asked for
  std::string etag;  // of this text
  std::string text;
  std::string reason;
};

// A change to be made elsewhere.
struct Push {
  enum class Kind : std::uint8_t { Create, Update, Remove };
  Kind kind = Kind::Update;
  std::string href;
  std::string etag;  // of Update and Remove: what the card must still have
  // Of Create and Update; asked when it is sent, and again when it has to be sent again.
  std::function<std::string()> text;
  // Of Update and Remove: whether that text is the card that is meant. Asked where an ETag proves
  // nothing.
  std::function<bool(std::string_view)> isOf = {};
};

struct Pushed {
  enum class Outcome : std::uint8_t {
    Done,
    Changed,       // the card there is not what the ETag says, or an Update found none
    Exists,        // a Create found something at that href
    Gone,          // an Update or a Remove found nothing
    ReadOnly,      // the book takes no changes of ours
    Refused,       // this card is not taken; not again until it is another one
    TooLarge,      // likewise
    UidElsewhere,  // the UID is that of another card of this user's
    Locked,        // not now: the next run
    Unknown,       // nobody knows whether it was done
  };
  Outcome outcome = Outcome::Unknown;
  std::string href;  // where the card is now: the other side may choose
  std::string etag;  // of what was sent, if it said so; proves nothing about the text
  int code = 0;      // HTTP's; 0 without one
  std::string reason;
};

// What is known of a book without listing it.
struct BookFacts {
  std::string name;
  bool isReadOnly = false;
  std::uint64_t mostBytes = 0;  // of a card; 0: not known
  bool wantsVersion4 = false;   // takes nothing else
};

// One address book elsewhere, as a run needs it. Operations throw RemoteError when the book as a
// whole cannot be used; what concerns one card is in that card's answer. One thread at a time;
// sinks are called on the thread of the caller.
class RemoteBook {
 public:
  RemoteBook() = default;
  RemoteBook(const RemoteBook&) = delete;
  RemoteBook& operator=(const RemoteBook&) = delete;
  virtual ~RemoteBook() = default;

  virtual BookFacts facts() = 0;
  // Since that token, as a listing gave it; of everything when it is empty or not known any more.
  // One kind of server takes a token that it does not know for the first one and names every card
  // again, but none that is gone: where most of what is named has the ETag that the asker holds,
  // only a listing of everything tells.
  virtual Listing list(const std::string& token) = 0;
  // Every card is given to the sink exactly once, in any order.
  virtual void fetch(std::span<const ListedCard> cards,
                     const std::function<void(FetchedCard)>& sink) = 0;
  // What hrefs are compared by: the same for every spelling of one place. Empty for what lies
  // outside of the book.
  virtual std::string pathOf(std::string_view href) const = 0;
  // Where a card of that file name (without ending, of A-Z a-z 0-9 - _ . alone) is created.
  virtual std::string hrefFor(std::string_view fileName) const = 0;
  // Makes the changes, several at once where that is quicker. What became of each is told with its
  // place in the list, exactly once. When the book as a whole fails, those that nothing was told of
  // may have been done or not.
  virtual void push(std::span<const Push> pushes,
                    const std::function<void(std::size_t, Pushed)>& sink) = 0;
};

}  // namespace ox::sync
