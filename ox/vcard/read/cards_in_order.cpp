#include "ox/vcard/read/cards_in_order.hpp"

#include <algorithm>
#include <cassert>
#include <exception>
#include <new>
#include <utility>

#include "ox/base/failures.hpp"

namespace ox::vcard {
namespace {

constexpr std::size_t kMostThreads =
    8;  // cutting is a sixth of the work, and done by one at a time
constexpr std::size_t kChunksAhead = 2;  // of each thread
constexpr std::size_t kBytesAhead = 4U << 20U;
constexpr std::size_t kSpareBytes = 1U << 20U;  // that a chunk may hold to be used again

std::size_t processors() {
  return std::clamp<std::size_t>(std::thread::hardware_concurrency(), 1, kMostThreads);
}

// What fails is made again by whoever wants the card, and fails there.
void makeCards(CardChunk& chunk, CardMaker& maker) {
  for (std::size_t i = 0; i < chunk.count; ++i) {
    auto& card = chunk.cards[i];
    try {
      card.made = maker.make(card.raw, chunk.trustBytes, CardMaker::Before::Unknown);
    } catch (...) {
      card.made.reset();
    }
  }
}

}  // namespace

CardsInOrder::~CardsInOrder() {
  {
    const std::lock_guard lock(mutex_);
    isStopped_ = true;
  }
  changed_.notify_all();
  threads_.clear();
}

bool CardsInOrder::hasRoom() const {
  return line_.size() < kChunksAhead * processors() && bytesInLine_ < kBytesAhead;
}

// The place of the next chunk, after which nothing is thrown until it is made; null where there is
// no more, or no room. Whoever asks is the one who cuts.
CardsInOrder::Place* CardsInOrder::takePlace() {
  const std::lock_guard lock(mutex_);
  if (isAllCut_ || isStopped_ || !hasRoom()) return nullptr;
  std::unique_ptr<CardChunk> chunk;
  if (!spare_.empty()) {
    chunk = std::move(spare_.back());
    spare_.pop_back();
  } else {
    chunk = std::make_unique<CardChunk>();
  }
  line_.push_back({std::move(chunk)});
  return &line_.back();
}

// False when there was nothing to do.
bool CardsInOrder::makeOne(CardMaker& maker) {
  Place* place = nullptr;
  CardChunk* chunk = nullptr;
  {
    const std::lock_guard cutting(cutting_);
    place = takePlace();
    if (place == nullptr) return false;
    chunk = place->chunk.get();
    source_.takeSome(*chunk);
    const std::lock_guard lock(mutex_);
    bytesInLine_ += chunk->bytes.size();
    isAllCut_ = chunk->isLast || chunk->failure;
  }
  makeCards(*chunk, maker);
  {
    const std::lock_guard lock(mutex_);
    place->isMade = true;
  }
  changed_.notify_all();
  return true;
}

void CardsInOrder::work() {
  CardMaker maker(source_.evidence());
  while (true) {
    {
      std::unique_lock lock(mutex_);
      changed_.wait(lock, [this] { return isStopped_ || isAllCut_ || hasRoom(); });
      if (isStopped_ || isAllCut_) return;
    }
    makeOne(maker);
  }
}

// Where there can be none, the next chunk asks again.
void CardsInOrder::startThreads() {
  const auto others = processors() - 1;
  threads_.reserve(others);
  try {
    for (std::size_t i = 0; i < others; ++i) {
      threads_.emplace_back(failures::watched([this] {
        try {
          work();
        } catch (const std::bad_alloc&) {
          // What it had not begun is left to the others.
        }
      }));
    }
  } catch (const std::exception&) {
    // Those that there are, and the caller, do the work.
  }
}

std::unique_ptr<CardChunk> CardsInOrder::next(std::unique_ptr<CardChunk> spent, CardMaker& maker) {
  if (hasGiven_ && threads_.empty()) startThreads();
  hasGiven_ = true;
  std::unique_lock lock(mutex_);
  // One that a large card has made large goes.
  if (spent && spent->bytes.size() <= kSpareBytes) spare_.push_back(std::move(spent));
  while (!isFrontMade()) {
    assert(!(line_.empty() && isAllCut_) && "there is another chunk");
    lock.unlock();
    const bool hasMade = makeOne(maker);
    lock.lock();
    if (!hasMade) changed_.wait(lock, [this] { return isFrontMade(); });
  }
  auto chunk = std::move(line_.front().chunk);
  line_.pop_front();
  bytesInLine_ -= chunk->bytes.size();
  lock.unlock();
  changed_.notify_all();
  return chunk;
}

}  // namespace ox::vcard
