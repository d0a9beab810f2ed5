#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "ox/base/hash_set.hpp"
#include "ox/platform/store/container_source.hpp"
#include "ox/transfer/category_groups.hpp"
#include "ox/transfer/importer.hpp"
#include "ox/transfer/person_card.hpp"
#include "ox/transfer/person_tags.hpp"
#include "ox/vcard/read/card.hpp"

namespace ox::vcard {

// True when one of the versions has the same card for both, whatever their UIDs: an export leaves
// out what is not true any more, and writes some unmodelled lines in another form. A group's
// members are taken for its own. Categories, where there are any, are those of the stored record;
// a card that says none is compared without.
bool isOurCardOf(const Card& card, const PropertyBag& properties, const Data& image,
                 const std::optional<Tags>& categories = std::nullopt);

// Writes the person cards of an import, a batch at a time, and counts them once they are committed.
// The store is asked about many cards at once: cards wait until enough have come together, and are
// then decided upon in their order. Borrows what it is given for its whole life. Throws what the
// store throws.
class PersonImport {
 public:
  static constexpr std::size_t kBatchCards = 5000;
  static constexpr std::size_t kMostBatchCards = 25'000;
  static constexpr std::size_t kBatchBytes = 64U << 20U;

  PersonImport(ContainerSource& source, std::string container, const ImportOptions& options,
               ImportReport& report);

  // Takes from the card what it keeps; the name of the file is one of those of the report.
  void add(const std::string& file, PersonCard&& card);
  // True when enough has come together for a commit.
  bool isFull() const;
  // Of the persons that are committed or were there, by the categories that their cards say.
  const CategoryMembers& categoryMembers() const { return categoryMembers_; }
  // Also what others have added meanwhile is not added again, and what they removed is.
  void commit();

 private:
  struct Origin {
    const std::string* file;
    std::size_t line;
  };
  // A card that nothing was decided about yet, or whose match was none any more when it was to be
  // written.
  struct Waiting {
    const std::string* file;
    PersonCard card;
  };
  // The stored record that a card is about; no key when there is none.
  struct Stored {
    RecordKey key;
    bool sameContent = false;
  };

  // Every card changes a page here and there in each index, so that a batch of few cards writes
  // nearly as many pages as one of many: the larger the book, the more cards.
  std::size_t batchCards() const;
  void decideWaiting();
  std::vector<Stored> storedMatches();
  void compareContents(std::vector<Stored>& stored);
  std::optional<Tags> comparedCategories(const PersonCard& card, const RecordKey& key,
                                         const PropertyBag& values);
  void decide(Waiting&& waiting, const Stored& stored);
  bool isSameAsStored(const PersonCard& card, const Stored& stored) const;
  // The addition of this batch that the card is about; the end without one.
  std::size_t additionOf(const PersonCard& card) const;
  bool storeMayHold(const PersonCard& card) const;
  void noteAdded(std::uint64_t hash);
  void append(Waiting&& waiting);
  void replaceAddition(std::size_t addition, Waiting&& waiting);
  void replaceStored(const RecordKey& key, Waiting&& waiting);
  void noteTags(const RecordKey& person, const PersonCard& card, Tags removed);
  void noteMember(const PersonCard& card, const RecordKey& person);
  bool execute();
  // Writes the batch and begins another; what was left out is not counted.
  std::vector<Waiting> writeBatch();
  std::vector<Waiting> takeLeftOut();

  ContainerSource& source_;
  std::string container_;
  const ImportOptions& options_;
  ImportReport& report_;

  std::vector<Waiting> waiting_;
  std::size_t waitingBytes_ = 0;
  SaveRequest batch_;
  std::vector<Origin> additionOrigins_;
  std::vector<Origin> replacementOrigins_;
  struct TagEdit {
    Tags removed;
    Tags added;
  };
  std::unordered_map<RecordKey, TagEdit> tagEdits_;  // of this batch
  std::unordered_map<RecordKey, Tags> newMembers_;   // of this batch: the categories of each
  CategoryMembers categoryMembers_;
  ImportReport counted_;  // of this batch
  std::size_t batchBytes_ = 0;
  std::unordered_map<std::string, std::size_t> batchByUid_;
  std::unordered_multimap<std::uint64_t, std::size_t> batchByContent_;
  std::unordered_map<RecordKey, std::size_t> batchReplaced_;  // by place among the replacements
  PersonTags tags_;
  StoreMoment moment_;  // from before the cards of the batch were looked for
  std::size_t most_;    // records that the store may hold
  // When the container was empty and nobody else has written, everything in it came from here:
  // hashes of the UIDs and contents that were added, so that a new card asks the store nothing.
  bool startedEmpty_;
  HashSet addedHashes_;
};

}  // namespace ox::vcard
