#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "ox/base/export.hpp"
#include "ox/platform/store/values/record_keys.hpp"
#include "ox/vcard/card_version.hpp"

namespace ox::vcard {

// Takes one whole card, borrowed for the call; false stops the export.
using CardSink = std::function<bool(std::string_view card)>;

// What becomes of what cannot be read: it ends the export, or is left out and told.
enum class Unreadable : std::uint8_t { Fail, LeaveOut };

// What cannot be read is missing in the cards: a whole record, which then has no card and is named
// by no group, or a part of it.
struct MissingPart {
  enum class What : std::uint8_t { Record, Picture, Members };
  RecordKey record;
  What what = What::Record;
  std::string reason;
};

struct ExportReport {
  std::uint64_t persons = 0;  // cards that the sink took
  std::uint64_t groups = 0;
  std::uint64_t gone = 0;            // records that are not there (any more)
  bool stopped = false;              // by the sink
  std::vector<MissingPart> missing;  // what was left out
};

// Gives the sink the cards of those persons, then of those groups, as they are stored, in the given
// order; unsaved changes do not count. Tags go out as CATEGORIES, and as the card wrote them where
// they are the same. Every card has a UID: that of the card it came from, else
// uidOfRecord, so that groups can name their members and an import into the same container
// recognises the record. A group names those of its members and sub-groups that are exported with
// it. Memory is bounded by a few of the largest records beside the two lists. Other threads write
// cards while this one reads the store and calls the sink. Throws what the sink throws and, unless
// what cannot be read is left out, StoreError; cards of the persons shortly before one that cannot
// be read may not be given then.
OX_EXPORT ExportReport exportCards(const RecordKeys& persons, const RecordKeys& groups,
                                   CardVersion version, const CardSink& sink,
                                   Unreadable unreadable = Unreadable::Fail);

}  // namespace ox::vcard
