#pragma once

#include <cstdint>
#include <optional>

#include "ox/base/data.hpp"
#include "ox/platform/store/file/store_file.hpp"
#include "ox/platform/store/values/record_entry.hpp"
#include "ox/records/encoded_values.hpp"

namespace ox {

// Writes the rows of records: what they are, their values and their pictures. Borrows the file, in
// which a write transaction is open. Throws sqlite::Error, and PropertyOfTwoTypes where values do
// not fit the types that the store knows.
class RecordWriter {
 public:
  explicit RecordWriter(StoreFile& file) : file_(file) {}

  // False when another record has its identifier.
  bool insertRecord(const RecordEntry& record);

  struct Picture {
    std::int64_t row = 0;
    std::uint64_t checksum = 0;
  };
  Picture insertPicture(const std::string& bytes);

  struct Content {
    std::int64_t record = 0;
    const EncodedValues* values = nullptr;
    std::uint64_t fingerprint = 0;
    std::optional<Picture> picture = std::nullopt;  // missing: none
    bool hasSameUid = false;                        // as the row that is updated
  };
  void insertContent(const Content& content);
  // Writes the row anew, the picture only if it is to be replaced; throws DamagedRow when it is to
  // stay and nobody can tell which it is. A row that a damaged store has lost is made again.
  enum class ReplacePicture : std::uint8_t { No, Yes };
  void updateContent(const Content& content, ReplacePicture picture);

 private:
  enum class Statement : std::uint8_t { Insert, Update, UpdateOfSameUid, UpdateWithPicture };
  static Sql sqlOf(Statement which);
  bool run(Statement which, const Content& content);

  StoreFile& file_;
};

}  // namespace ox
