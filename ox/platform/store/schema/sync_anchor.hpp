#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>

#include "ox/base/sqlite/connection.hpp"
#include "ox/platform/store/values/store_moment.hpp"

namespace ox {

// An act that is known to have reached the disk: of the store of that name, noted at that time.
struct SyncedAct {
  std::array<std::uint8_t, 16> store{};
  StoreMoment moment;
  std::int64_t at = 0;  // in milliseconds since 1970

  bool operator==(const SyncedAct&) const = default;
};

// The file "<store>-synced", which remembers beside a log how far the store had come on the disk: a
// log whose end is lost reads like one that never went further, and nothing in store or log tells
// the difference. It is written after the act has reached the disk and is not synced itself, so it
// may be behind the store, torn or missing, and never ahead of it. It goes when the log does, since
// the store has everything then and a copy may be put in its place. Used by one thread at a time;
// processes need no lock, each of them writes what is true.
class SyncAnchor {
 public:
  // Beside the file itself, through every link that led to it.
  explicit SyncAnchor(const sqlite::Connection& store);

  // Missing where there is none that can be believed. Throws std::system_error where the disk does
  // not give it.
  std::optional<SyncedAct> read() const;
  // Done as far as it goes: what is not noted is not missed by anybody.
  void write(const SyncedAct& act) const noexcept;
  // To be called when the store was closed that had every act which was noted before, the last one
  // of them if any: where the log is gone the note goes too, and one that others have put there
  // since, for the log that they wrote to was gone as well.
  void settle(const std::optional<SyncedAct>& noted) const noexcept;
  // Returns when the note is gone and would be after a power cut. Throws std::system_error.
  void remove() const;
  // Of a store that nobody has open, or that is not there.
  static void removeOf(const std::string& store);

 private:
  explicit SyncAnchor(const std::string& store);

  std::string store_;
  std::string path_;
  std::string log_;
};

}  // namespace ox
