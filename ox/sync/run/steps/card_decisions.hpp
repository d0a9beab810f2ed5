#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <string_view>

#include "ox/platform/store/values/spill_file.hpp"
#include "ox/platform/store/values/sync_rows.hpp"
#include "ox/sync/run/look/card_sides.hpp"
#include "ox/sync/run/look/local_book.hpp"
#include "ox/sync/run/steps/card_step.hpp"

namespace ox::sync {

// What holds for every card of a run.
struct RunRules {
  bool pushes = true;                                    // and the book takes it
  bool setsBack = false;                                 // what was changed here is what is there
  vcard::CardVersion version = vcard::CardVersion::V30;  // of new cards
  bool writesGroupsAs4 = false;                          // since the book has some of version 4.0
  bool hasListedAll = false;                             // what is not known is nowhere in the book
  std::uint64_t mostBytes = 0;                           // of a card; 0: not known
  std::string revision;                                  // see EditOptions
};

// Decides about one card after the other; does nothing. Borrows what it is given for its whole
// life. Throws StoreError.
class CardDecisions {
 public:
  CardDecisions(LocalBook& book, const RemoteBook& remote, SpillFile& spill, const RunRules& rules)
      : book_(book), remote_(remote), spill_(spill), rules_(rules) {}

  // Missing when there is nothing to do.
  std::optional<CardStep> decide(CardSides sides);
  // A record that no card stands for, to be created at that href.
  CardStep create(const RecordKey& record, RecordKind kind, const LocalContent& ours,
                  std::string href, std::string path, std::string uid);
  // A record goes that no card stands for.
  static CardStep withdraw(CardSides sides);
  // For people: as the record says it, or as it said before it was deleted.
  static std::string nameOf(const CardSides& sides);

 private:
  struct Bases;

  std::optional<CardStep> decided(CardSides sides);
  std::optional<CardStep> withoutChangeThere(CardSides& sides);
  std::optional<CardStep> goneThere(CardSides& sides);
  std::optional<CardStep> readThere(CardSides& sides);
  CardStep unreadable(CardSides& sides, std::string reason);
  bool saysTheSameAsBefore(const SyncCard& card, const CardContent& theirs) const;
  std::optional<CardStep> deletedHere(CardSides& sides, const std::string& name);
  CardStep added(CardSides& sides);
  CardStep brought(CardSides& sides);
  std::string freshText(RecordKind kind, const CardContent& content, std::string_view uid) const;
  Bases basesOf(const CardSides& sides, const SyncCard::Texts& texts);
  void send(CardStep& step, CardStep::There how, std::string text, const CardContent& here,
            std::uint64_t fingerprint, std::uint64_t beside);
  bool isRefusedAsItIs(const SyncCard& card, const LocalContent& ours) const;
  bool hasOpenConflict(const SyncCard& card);

  LocalBook& book_;
  const RemoteBook& remote_;
  SpillFile& spill_;
  const RunRules& rules_;
  std::optional<std::set<std::string>> conflicts_;  // paths with open ones; missing: not asked yet
};

// For people: the name, else the company, else the UID.
std::string nameOfContent(const CardContent& content);

}  // namespace ox::sync
