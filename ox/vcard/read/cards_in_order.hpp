#pragma once

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

#include "ox/vcard/read/chunk_source.hpp"

namespace ox::vcard {

// The chunks of a source in their order, with their cards made. The caller and a thread for each
// further processor do the same: cut off the next chunk, one of them at a time, and make its cards.
// There are no threads before the second chunk, none where none can be had, and none once this is
// gone. Bounded is how many chunks there are beyond what the caller has, and their bytes.
class CardsInOrder {
 public:
  // The source is borrowed, and nobody else takes chunks of it.
  explicit CardsInOrder(ChunkSource& source) : source_(source) {}
  ~CardsInOrder();
  CardsInOrder(const CardsInOrder&) = delete;
  CardsInOrder& operator=(const CardsInOrder&) = delete;

  // The next chunk; not to be asked beyond the last one. Takes one back that is not needed any
  // more. A card is not made that has to wait for others, or whose making failed.
  std::unique_ptr<CardChunk> next(std::unique_ptr<CardChunk> spent, CardMaker& maker);

 private:
  struct Place {
    std::unique_ptr<CardChunk> chunk;
    bool isMade = false;
  };

  void startThreads();
  void work();
  bool makeOne(CardMaker& maker);
  Place* takePlace();
  bool hasRoom() const;
  bool isFrontMade() const { return !line_.empty() && line_.front().isMade; }

  std::mutex cutting_;  // before mutex_, for the source
  ChunkSource& source_;

  std::mutex mutex_;  // for all that follows
  std::condition_variable changed_;
  std::deque<Place> line_;  // in the order of the source
  std::vector<std::unique_ptr<CardChunk>> spare_;
  std::size_t bytesInLine_ = 0;
  bool isAllCut_ = false;
  bool isStopped_ = false;

  bool hasGiven_ = false;  // a chunk; used by the caller alone
  std::vector<std::jthread> threads_;
};

}  // namespace ox::vcard
