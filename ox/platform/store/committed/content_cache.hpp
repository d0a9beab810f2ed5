#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <span>

#include "ox/base/data.hpp"
#include "ox/platform/store/committed/generation_cache.hpp"
#include "ox/platform/store/committed/known_values.hpp"
#include "ox/platform/store/file/store_file.hpp"
#include "ox/platform/store/values/record_entry.hpp"
#include "ox/records/property_bag.hpp"

namespace ox {

// Values and pictures of committed records: what was read lately, in bounded caches, and how far
// beyond what is asked for the file is read. Whoever walks the records in their order is given
// more with each question, 64 KiB first and at last a megabyte. Used by one thread at a time;
// throws what the file throws.
class ContentCache {
 public:
  // The key of the record in a row, or null where nobody has listed it: whose values those are that
  // are read beyond what is asked for.
  using KeyOfRow = std::function<const RecordKey*(std::int64_t)>;
  ContentCache(StoreFile& file, KeyOfRow keyOfRow);

  // Values are null when they are not in memory.
  KnownContent known(const RecordKey& key);
  // Whether the records beyond the one that is asked for may be wanted next.
  enum class Ahead { No, WhenWalking };
  // Values are null when the row has none. Throws DamagedRecord.
  KnownContent read(const RecordEntry& entry, Ahead ahead);
  // Reads what is not in memory of these, as far as the caches hold it; damage is left to whoever
  // asks for the record.
  void readAll(std::span<const RecordEntry> entries);
  // Null without one. Throws ImageReadError.
  Data picture(const RecordEntry& entry, Ahead ahead);

  void forget(const RecordKey& key);
  // Hands over what is known of values, and forgets everything.
  GenerationCache<RecordKey, KnownContent> release();

 private:
  // One who may be walking: where the last question ended, and how much the next one asks for.
  struct Walk {
    std::int64_t lastRow = INT64_MIN / 2;
    std::size_t bytes = 0;

    // How many bytes to read from that row on.
    std::size_t step(std::int64_t row, std::int64_t gap, Ahead ahead);
  };

  KnownContent keep(const RecordKey& key, const sqlite::Statement& row);
  void keepPicture(const RecordKey& key, const Data& picture);

  StoreFile& file_;
  KeyOfRow keyOfRow_;
  Walk values_;
  Walk pictures_;
  GenerationCache<RecordKey, KnownContent> contents_;
  GenerationCache<RecordKey, Data> pictureBytes_;
};

}  // namespace ox
