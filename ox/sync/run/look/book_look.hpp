#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "ox/platform/store/values/sync_rows.hpp"
#include "ox/sync/remote/remote_book.hpp"
#include "ox/sync/run/look/card_sides.hpp"
#include "ox/sync/run/look/local_book.hpp"

namespace ox::sync {

// A look at both sides of a book: which cards differ from what was agreed. Only reads. Borrows what
// it is given for its whole life. Throws StoreError, and RemoteError.
class BookLook {
 public:
  BookLook(LocalBook& local, RemoteBook& remote) : local_(local), remote_(remote) {}

  // What changed here since both agreed.
  void lookHere();
  bool foundNothingHere() const { return changedHere_.empty() && withoutCard_.empty(); }
  // Of those that a card stands for: edits and deletions, in the order of their cards. Tags are no
  // edit.
  std::vector<CardSides> changesHere();
  // What changed there since that token; everything that is there when it is asked for, or when
  // what comes cannot be true. Sent: hrefs of what this side has sent since the token, one a line.
  // Cards that nobody could read are left alone until they change, but with everything they are
  // asked for again; those of what was changed here are known, or fetched as they are.
  enum class Ask : std::uint8_t { News, Everything };
  enum class ChangesHere : std::uint8_t { Known, Fetched };
  void lookThere(const std::string& token, std::string_view sent, Ask ask, ChangesHere changes);

  const Listing& listing() const { return listing_; }
  // Cards that the book had when both last agreed.
  std::size_t knownCards();
  // Both sides hold contacts and have never met.
  bool isFirstMeeting();
  // The listing holds nothing, though there were cards.
  bool isSuddenlyEmpty();
  // That card is not listed any more, and nobody has said that it was deleted since the last
  // listing: the book may have been put back to an old copy.
  bool isDoubtful(const std::string& path) const { return doubtful_.contains(path); }

  // Gives the sides of every card that differs on either side, in three parts: those that have to
  // be fetched, as they come; then the others, and groups that are known after all persons; and at
  // last records that no card stands for.
  void giveFetched(const std::function<void(CardSides)>& sink,
                   const std::function<void(std::size_t done, std::size_t all)>& progress);
  // Members of these UIDs were deleted here and are coming back.
  void giveOthers(const std::function<void(CardSides)>& sink,
                  const std::unordered_set<std::string>& broughtBack);
  // Those that no card that was fetched was about.
  std::vector<RecordWithoutCard> newHere() const;

  // Sides without change there, of a card as it is now.
  CardSides sidesOf(const SyncCardNow& card);

 private:
  // What is to be fetched, with what is known of it.
  struct ToFetch {
    ListedCard listed;
    SyncCardNow known;
    bool isIntent = false;
  };

  void takeOver();
  void askForUnread();
  void noteListed(const ListedCard& listed, const SyncCardNow* known);
  void noteGone(const SyncCardNow& known);
  void addGone(const SyncCardNow& known);
  void lookAtWholeListing();
  void lookAtNews();
  bool isNoNews(std::string_view sent) const;
  std::vector<SyncCardNow> cardsWithOtherTags();
  bool isEdit(const SyncCardNow& card);
  bool isNoCard(RecordKind kind);
  void addUnlinked(CardSides& sides);
  void keepMembers(CardSides& sides, const std::unordered_set<std::string>& broughtBack);
  void fetch(const std::vector<std::string>& paths,
             const std::function<void(const std::string& path, FetchedCard)>& take);
  void takeKnown(const std::string& path, CardSides fetched,
                 const std::function<void(CardSides)>& sink);
  void takeUnknown(const std::string& path, CardSides fetched,
                   const std::function<void(CardSides)>& sink);
  // The card of the store that a text at another place is about, or a record that no card stands
  // for.
  bool recogniseMoved(CardSides& sides);
  bool recogniseCreated(CardSides& sides);
  void placeAnew(CardSides& sides, const SyncCardNow& known);
  void recogniseRecord(CardSides& sides);

  LocalBook& local_;
  RemoteBook& remote_;
  Listing listing_;
  Ask ask_ = Ask::News;
  std::unordered_map<std::string, SyncCardNow> changedHere_;  // by path
  std::vector<RecordWithoutCard> withoutCard_;
  std::unordered_map<RecordKey, const RecordWithoutCard*> withoutCardByKey_;
  std::unordered_multimap<std::uint64_t, const RecordWithoutCard*> withoutCardByContent_;
  std::unordered_set<RecordKey> recognised_;
  std::unordered_map<std::string, ToFetch> toFetch_;  // by path
  std::vector<std::string> fetchOrder_;
  std::unordered_map<std::string, SyncCardNow> gone_;       // by path
  std::unordered_map<std::string, std::string> goneByUid_;  // comparable UID to path
  // By path: cards in whose place another one stands now.
  std::unordered_set<std::string> vacated_;
  std::unordered_set<std::string> doubtful_;  // by path
  std::vector<CardSides> groups_;
};

}  // namespace ox::sync
