#pragma once

#include <cstdint>
#include <deque>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "ox/base/record_key.hpp"
#include "ox/platform/store/values/spill_file.hpp"
#include "ox/platform/store/values/sync_rows.hpp"
#include "ox/records/encoded_values.hpp"
#include "ox/sync/cards/card_merge.hpp"
#include "ox/sync/remote/remote_book.hpp"

namespace ox::sync {

// What is going to be agreed. Its long parts wait elsewhere than in memory.
class TextsAside {
 public:
  TextsAside(SyncCard::Texts texts, SpillFile& file)
      : text_(texts.text, file),
        agreed_(texts.agreed, file),
        tags_(std::move(texts.tags)),
        members_(std::move(texts.members)),
        sent_(std::move(texts.sent)) {}
  SyncCard::Texts get() const { return {text_.get(), agreed_.get(), tags_, members_, sent_}; }
  void setMembers(std::string members) { members_ = std::move(members); }
  void setSent(std::string sent) { sent_ = std::move(sent); }

 private:
  BytesAside text_;
  BytesAside agreed_;
  std::string tags_;
  std::string members_;
  std::string sent_;
};

// What the record of a card is to become.
struct RecordChange {
  EncodedValues values;                // of an addition, but for their bytes
  std::optional<BytesAside> bytes;     // those
  PropertyBag properties;              // of a change
  std::optional<SpillableData> photo;  // missing: there is none
  bool keepsPhoto = false;             // of a change: whatever stands there
  std::vector<std::string> tagsBefore;
  std::vector<std::string> tags;
};

// What is sent, and what the record says once it has arrived.
struct SentCard {
  SpillableData text;
  std::size_t size = 0;                     // of the text
  std::shared_ptr<const CardContent> here;  // without picture
  SpillableData photo;
  std::uint64_t fingerprint = 0;  // of the record
  std::uint64_t beside = 0;
};

// What the record says then, with its picture.
CardContent contentOf(const SentCard& sent);

// What a run is going to do about one card: decided before anything is done, and all that is needed
// to do it.
struct CardStep {
  enum class Here : std::uint8_t { Nothing, Add, Change, Delete };
  enum class There : std::uint8_t { Nothing, Create, Update, Delete };

  Here here = Here::Nothing;
  There there = There::Nothing;
  std::string name;  // for people
  std::string note;  // what the user should know once it is done

  // The card's row as it is to be where nothing is sent, or what is sent does not arrive: what is
  // agreed then differs from what the record says, and a later run sends it.
  SyncCard card;
  std::optional<TextsAside> texts;  // missing: they stay
  bool writesRow = false;
  bool isNoted = false;  // as about to be created, by an earlier run
  bool removesRow = false;
  bool isUnreadable = false;      // there; the row says why
  bool isBroughtBack = false;     // deleted here, changed there
  bool isSentAgain = false;       // deleted there, changed here
  bool settlesConflicts = false;  // whatever was open of the card
  // Rows that stand for nothing any more, or for this card at another place: they go first.
  std::vector<std::int64_t> rowsInTheWay;
  std::string formerPath;  // where the card was, if it was elsewhere

  RecordKey record;
  std::optional<std::uint64_t> expected;  // what it must still say; of Change and Delete
  std::optional<RecordChange> change;     // of Add and Change
  // Of a group: the UIDs of the members that it had and is to have, and those that are agreed.
  std::vector<std::string> membersBefore;
  std::optional<std::vector<std::string>> members;
  std::vector<std::string> agreedMembers;

  std::optional<SentCard> sent;  // of Create and Update
  // It is created under this one, since its own is that of another card; the record takes it over
  // once it has arrived. Empty: its own.
  std::string newUid;
  std::string etag;  // of Update and Delete: what the card there must still have
  std::vector<ValueConflict> conflicts;

  std::optional<Pushed> pushed;         // what became of it; missing: nothing was sent
  std::optional<FetchedCard> readBack;  // what stands there since, its text apart
  std::optional<SpillableData> textReadBack;
  bool isPutOff = false;  // its record was changed meanwhile: nothing is done here
};

// The row that the step writes, which is that one.
inline SyncCardChange changeOf(SyncCard row, const CardStep& step) {
  SyncCardChange change{std::move(row), std::nullopt, {}};
  if (step.texts) change.readTexts = [texts = *step.texts] { return texts.get(); };
  return change;
}

// Those of a run, each of which stays where it is.
using CardSteps = std::deque<CardStep>;

}  // namespace ox::sync
