#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

struct sqlite3;

namespace ox::sqlite {

// Keys that one statement is asked about all at once. A statement reads them like a table, in their
// order: `FROM keys(?1) AS k` gives k.key and, as k.rowid, its place from 0. Every connection knows
// the table. Texts and blobs are borrowed.
class KeyList {
 public:
  void add(std::int64_t number) { keys_.push_back({Type::Number, number, {}}); }
  void addText(std::string_view text) { keys_.push_back({Type::Text, 0, text}); }
  void addBlob(std::string_view bytes) { keys_.push_back({Type::Blob, 0, bytes}); }
  void reserve(std::size_t count) { keys_.reserve(count); }
  std::size_t size() const { return keys_.size(); }
  bool empty() const { return keys_.empty(); }

  enum class Type : std::uint8_t { Number, Text, Blob };
  struct Key {
    Type type;
    std::int64_t number;
    std::string_view bytes;
  };
  const Key& operator[](std::size_t place) const { return keys_[place]; }

 private:
  std::vector<Key> keys_;
};

// For the connection alone: makes the table known. The result is SQLite's.
int registerKeyLists(sqlite3* database);

// What SQLite calls the pointer by which a statement is given a list.
inline constexpr const char* kKeyListPointer = "ox key list";

}  // namespace ox::sqlite
