#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "ox/base/record_key.hpp"
#include "ox/platform/store/values/record_keys.hpp"

// What the store keeps of accounts that are in step with a book elsewhere. It keeps it in the
// transaction of the contacts themselves and understands none of it: texts and blobs are those of
// whoever synchronises (ox/sync).

namespace ox {

// A login, without its secret.
struct SyncLogin {
  std::int64_t id = 0;  // 0: one that is not stored yet
  std::string name;     // unique
  std::string kind;
  std::string url;
  std::string user;
  std::string passwordKind;
  std::string passwordSource;
  std::string scheme;  // of authentication, as it was found
  std::string principal;
  std::vector<std::string> homes;
  std::vector<std::string> origins;  // that the secret may go to
  std::string clientCertificate;
  std::string authorities;
  bool allowHttp = false;
  std::int64_t notBefore = 0;  // milliseconds since 1970

  bool operator==(const SyncLogin&) const = default;
};

// A container and the book that it is in step with.
struct SyncBook {
  // Copied: the store is a copy, and no run has looked since whether it is behind the book. What it
  // holds may be what it was taken for.
  enum class State : std::uint8_t { Active = 0, Away = 1, Copied = 2 };
  // Whether the book takes changes: it says itself that it does not, or the user wants it so. The
  // store then refuses what would change the container (SaveRequest::bringsFromElsewhere).
  enum class ReadOnly : std::uint8_t { No = 0, AsItSays = 1, AsAsked = 2 };

  std::string container;  // its identifier
  std::int64_t login = 0;
  std::string url;
  std::string name;  // there
  ReadOnly readOnly = ReadOnly::No;
  std::string token;            // of the last listing
  std::string sent;             // hrefs of what was sent since that listing, one a line
  std::string reports;          // that the server supports
  std::string versions;         // of cards that it takes
  std::uint64_t mostBytes = 0;  // of a card; 0: not known
  std::string groupSpelling;
  std::int64_t lastWhole = 0;    // when everything was listed, milliseconds since 1970; 0: never
  std::int64_t lastSuccess = 0;  // likewise: when a run last ended in step, to the hour
  State state = State::Active;

  bool isReadOnly() const { return readOnly != ReadOnly::No; }
  bool operator==(const SyncBook&) const = default;
};

// A card elsewhere and its record here. A card whose record is gone is a deletion that the other
// side has not agreed to yet: it stays when the record goes, in whatever process and by whatever
// act that happens, and is its record's again when that comes back. One that was stored without a
// record, because nothing could be made of the card there, is no deletion.
struct SyncCard {
  enum class Intent : std::uint8_t { None = 0, Create = 1, Delete = 2 };

  std::int64_t id = 0;    // 0: one that is not stored yet
  std::string container;  // identifier
  RecordKey record;       // none when it is gone
  RecordKind kind = RecordKind::Person;
  std::string href;
  std::string path;  // what it is found by: one card of a container has it
  std::string etag;
  std::string uid;
  // contentFingerprint of the record as last agreed; 0 while nothing is agreed.
  std::uint64_t fingerprint = 0;
  // What was agreed beside values and picture (tags, members), as a number.
  std::uint64_t beside = 0;
  Intent intent = Intent::None;
  std::string keepsLess;                 // what the server does not keep, in words
  std::string refused;                   // why it was refused last; empty: it was not
  std::uint64_t refusedFingerprint = 0;  // what was refused

  // Read by syncCardTexts alone.
  struct Texts {
    std::string text;    // there, as last read
    std::string agreed;  // values here, as last agreed
    std::string tags;    // here, as last agreed
    std::string members;
    // Of what was sent last and may have arrived, whatever became of the answer: all of these as
    // they are if it has; empty when the answer came.
    std::string sent = {};

    bool operator==(const Texts&) const = default;
  };
};

// A card as it stands beside the store of now.
struct SyncCardNow {
  SyncCard card;
  // contentFingerprint of its record; missing when that is gone.
  std::optional<std::uint64_t> now;
};

// To be stored: the card, and its texts where these change (always, for a new one).
struct SyncCardChange {
  SyncCard card;
  std::optional<SyncCard::Texts> texts;
  // Instead of them, when they were put aside; asked when they are written.
  std::function<SyncCard::Texts()> readTexts = {};
};

// To be stored, of a card that is there: what is about to be sent (SyncCard::Texts::sent).
struct SyncCardSent {
  std::int64_t card = 0;
  std::string sent;
};

// A record that no card stands for yet.
struct RecordWithoutCard {
  RecordKey key;
  RecordKind kind = RecordKind::Person;
  std::uint64_t fingerprint = 0;
};

// A value of which both sides have made another: theirs stands in the record.
struct SyncConflict {
  std::int64_t id = 0;    // 0: one that is not stored yet
  std::string container;  // of its card
  std::string path;       // of its card
  std::string property;
  std::string theirs;  // encoded
  std::string ours;
  std::string base;
  std::int64_t at = 0;  // milliseconds since 1970

  bool operator==(const SyncConflict&) const = default;
};

// One run of one book that did something, or failed in another way than the one before; the store
// keeps the last hundred.
struct SyncRun {
  std::string container;
  std::int64_t start = 0;  // milliseconds since 1970
  std::int64_t end = 0;
  std::string counts;   // encoded
  std::string outcome;  // empty: in step

  bool operator==(const SyncRun&) const = default;
};

// What one act notes of all this, in this order. Rows with an id, and books that are there, are
// replaced.
struct SyncRows {
  std::vector<std::int64_t> removedConflicts = {};
  std::vector<std::int64_t> removedCards = {};  // with their conflicts
  std::vector<SyncLogin> logins = {};
  // Of a login without id: that of the same name, which may be of this act.
  struct BookOfLogin {
    SyncBook book;
    std::string login;  // name, where book.login is 0
  };
  std::vector<BookOfLogin> books = {};
  std::vector<SyncCardChange> cards = {};
  std::vector<SyncCardSent> sent = {};
  std::vector<SyncConflict> conflicts = {};
  std::vector<SyncRun> runs = {};

  bool empty() const {
    return removedConflicts.empty() && removedCards.empty() && logins.empty() && books.empty() &&
           cards.empty() && sent.empty() && conflicts.empty() && runs.empty();
  }
};

}  // namespace ox
