#pragma once

#include <cstddef>
#include <cstdint>
#include <exception>
#include <future>
#include <variant>
#include <vector>

#include "ox/transfer/person_card.hpp"
#include "ox/vcard/read/reader.hpp"
#include "ox/vcard/source/byte_source.hpp"

namespace ox::vcard {

// A person's card, a group's, or why it is none.
struct CardRead {
  std::variant<PersonCard, Card, Refusal> result;
  std::uint64_t bytesRead = 0;  // of the file so far
};

// Of what a reader gave; the file was read so far. Throws std::runtime_error as personCard does.
CardRead cardRead(CardResult&& result, CategoriesAs categoriesAs, std::uint64_t bytesRead);

// The cards of one file in their order. While the caller deals with a batch of them, the next one
// is read and encoded on another thread; one at most, so that memory stays bounded by it and by the
// largest card. The first batches are small, for nobody is busy yet. What a pipe has given must not
// wait for what it has not: there everything happens on the caller's thread, as in small files.
// Used by one thread at a time.
class CardsAhead {
 public:
  // The source is borrowed for the life of this.
  CardsAhead(FileSource& source, CategoriesAs categoriesAs, CharsetHints hints = {});

  // The next card, to be changed or moved from, until the next call; null at the end. Throws
  // SourceError, after the cards before it were given, when the source cannot be read further.
  CardRead* next();

  // Of the file, when the card given last was read.
  std::uint64_t bytesRead() const { return bytesRead_; }
  // For what the reader knows once next() has given the end.
  const Reader& reader() const { return reader_; }

 private:
  struct Batch {
    std::vector<CardRead> cards;
    bool isLast = false;
    std::exception_ptr failure;  // behind the cards
  };

  Batch readBatch();

  Reader reader_;
  const CategoriesAs categoriesAs_;
  const bool isFile_;
  std::size_t most_;  // cards in the next batch
  Batch batch_;
  std::size_t given_ = 0;  // of the batch
  std::uint64_t bytesRead_ = 0;
  std::future<Batch> ahead_;  // last: whoever reads is waited for before anything else goes
};

}  // namespace ox::vcard
