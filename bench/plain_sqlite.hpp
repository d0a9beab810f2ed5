#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

// The floor under everything that the store does: the same rows through SQLite's own calls, with
// nothing above them. Everything here throws std::runtime_error when SQLite refuses.
namespace ox::bench::plain {

// A store's rows, ready to be written again.
struct Rows {
  struct Record {
    std::int64_t id;
    std::string uid;
    std::int64_t kind, container;
    std::string cardUid;
    std::int64_t fingerprint;
    std::string properties;
    std::int64_t imageChecksum;
    std::string image;  // empty without one
  };

  std::vector<std::string> schema;
  std::vector<Record> records;
};

Rows readRows(const std::string& path);

// Makes a file with that schema and writes the rows: prepared statements, a thousand records a
// transaction, the pragmas of the store, a synced checkpoint at the end.
void writeRows(const Rows& rows, const std::string& path);

// Finds the row of every record by its card's UID and reads its properties; the bytes read.
std::size_t findByCardUid(const Rows& rows, const std::string& path);

// Reads id, uid, kind and container of every record into memory; how many there are.
std::size_t listRecords(const std::string& path);

// Reads the properties of every record; the bytes read.
std::size_t readProperties(const std::string& path);

// Reads one record's properties that many times through one prepared statement; the bytes read.
std::size_t readOneAgain(const std::string& path, std::size_t times);

}  // namespace ox::bench::plain
