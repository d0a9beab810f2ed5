#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "ox/platform/store/container_source.hpp"
#include "ox/transfer/importer.hpp"
#include "ox/vcard/read/card.hpp"

namespace ox::vcard {

// True when one of the versions has the same card for both, whatever their UIDs: an export leaves
// out what is not true any more, and writes some unmodelled lines in another form. A group's
// members are taken for its own.
bool isOurCardOf(const Card& card, const PropertyBag& properties, const Data& image);

// Writes the person cards of an import, a batch at a time, and counts them once they are committed.
// Borrows what it is given for its whole life. Throws what the store throws.
class PersonImport {
 public:
  static constexpr std::size_t kBatchCards = 5000;
  static constexpr std::size_t kBatchBytes = 64U << 20U;

  PersonImport(ContainerSource& source, std::string container, const ImportOptions& options,
               ImportReport& report);

  // The fingerprint is that of the card's content. Takes from the card what it keeps; the name of
  // the file is borrowed until the card is committed.
  void add(const std::string& file, Card&& card, std::uint64_t fingerprint);
  // True when enough has come together for a commit.
  bool isFull() const;
  // Also what others have added meanwhile is not added again, and what they removed is.
  void commit();

 private:
  struct Origin {
    const std::string* file;
    std::size_t line;
  };
  // A card whose match was none any more when it was to be written.
  struct LeftOut {
    Origin origin;
    PropertyBag properties;
    Data photo;
    std::uint64_t fingerprint;
  };
  // What a card is equal to already; null members when that record is of this batch.
  struct Match {
    RecordKey key;
    std::size_t addition = 0;  // in the batch, when it is not stored yet
    bool stored = false;
    bool sameContent = false;
  };

  std::optional<Match> matchByUid(const Card& card, std::string_view uid,
                                  std::uint64_t fingerprint);
  bool isExported(const Card& card, const RecordKey& key);
  std::optional<Match> matchByContent(const Card& card, std::uint64_t fingerprint);
  bool storeMayHold(std::uint64_t hash) const;
  void append(const Origin& origin, Card&& card, std::string_view uid, std::uint64_t fingerprint);
  void replace(const Match& match, const Origin& origin, Card&& card, std::uint64_t fingerprint);
  // Writes the batch and begins another; what was left out is not counted.
  std::vector<LeftOut> writeBatch();
  std::vector<LeftOut> takeLeftOut();

  ContainerSource& source_;
  std::string container_;
  const ImportOptions& options_;
  ImportReport& report_;

  SaveRequest batch_;
  std::vector<Origin> additionOrigins_;
  std::vector<Origin> replacementOrigins_;
  ImportReport counted_;  // of this batch
  std::size_t batchBytes_ = 0;
  std::unordered_map<std::string, std::size_t> batchByUid_;
  std::unordered_multimap<std::uint64_t, std::size_t> batchByContent_;
  std::unordered_set<RecordKey> batchReplaced_;
  StoreMoment moment_;  // from before the cards of the batch were looked for
  // When the container was empty and nobody else has written, everything in it came from here:
  // hashes of the UIDs and contents that were added, so that a new card asks the store nothing.
  bool startedEmpty_;
  std::unordered_set<std::uint64_t> addedHashes_;
};

}  // namespace ox::vcard
