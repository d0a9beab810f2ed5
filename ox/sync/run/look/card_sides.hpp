#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "ox/platform/store/values/sync_rows.hpp"
#include "ox/sync/cards/card_content.hpp"
#include "ox/sync/remote/remote_book.hpp"
#include "ox/sync/run/look/local_book.hpp"

namespace ox::sync {

// What is known of both sides of one card when a run has looked.
struct CardSides {
  enum class There : std::uint8_t { Same, Read, Gone, Unreadable };

  SyncCard card;  // as the store has it; id 0: nothing is known of it yet
  There there = There::Same;
  FetchedCard theirs;                // of Read and Unreadable
  std::optional<ReadCard> read;      // of Read: what the text says
  std::optional<LocalContent> ours;  // missing: there is no record
  // The two have not met: they are brought together without bases.
  bool isFirstMeeting = false;
  // Another card stands where this one stood; it is gone.
  bool isVacated = false;
  // Where it was known before; empty: where it is.
  std::string formerPath;
  // A row of the store that is in the way of this one and stands for nothing; 0: none.
  std::int64_t rowInTheWay = 0;
};

// In the place of the fingerprint of what was refused: a text there that nobody could read.
inline constexpr std::uint64_t kUnreadable = 0;

// Likewise: it was a deletion.
inline constexpr std::uint64_t kDeletionRefused = 1;

// Likewise: it may be taken the next time, as it is.
inline constexpr std::uint64_t kTriedAgain = 2;

// One that nobody could read when it was listed, and that has no record for that reason.
inline bool hasNeverHadRecord(const SyncCard& card) {
  return card.record.isNone() && card.fingerprint == 0 && card.intent == SyncCard::Intent::None;
}

}  // namespace ox::sync
