#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "ox/base/sqlite/statement.hpp"
#include "ox/platform/store/values/record_entry.hpp"
#include "ox/records/damaged_bytes.hpp"

namespace ox {

// Every statement that is prepared once and kept.
enum class Sql : std::uint8_t {
  DataVersion,
  CustomProperties,
  CustomPropertyType,
  Containers,
  LastAct,
  OldestAct,
  ActByNumber,
  ChangesFrom,
  UidsOfRows,
  RecordsOfRows,
  ContentOfRow,
  FingerprintsOfRows,
  ImageChecksum,
  RecordsAfter,
  RecordsBetweenUids,
  RecordByUid,
  ContentFrom,
  PicturesFrom,
  ParentsOfRow,
  RecordsByUids,
  ValuesOfRows,
  ContentsOfRows,
  RecordsInRows,
  RecordsByCardUids,
  RecordsByFingerprints,
  RecordsByRows,
  AnyRecordOfContainer,
  // deciding
  RecordsOfContainer,
  ParentRows,
  SubgroupRows,
  // writing
  ActByName,
  ContainersAddedTo,
  OriginByRow,
  InsertOrigin,
  InsertAct,
  InsertContainer,
  DeleteContainer,
  InsertRecord,
  DeleteRecords,
  InsertContent,
  UpdateContent,
  UpdateContentOfSameUid,
  UpdateContentAndImage,
  InsertImage,
  ImageOfRow,
  LinksToChildren,
  LinksToParents,
  InsertLink,
  InsertLinks,
  LinksFromTo,
  LinkOfNumber,
  LinkNumber,
  LinkNumbers,
  DeleteLinks,
  InsertChange,
  RecordsToRemove,
  InsertTagDebt,
  TagDebts,
  TagChangesOfAct,
  DeleteTagDebt,
  StoreName,
  InsertCustomProperty,
  // accounts in step with others
  InsertSyncLogin,
  UpdateSyncLogin,
  DeleteSyncLoginOf,
  PutSyncBook,
  InsertSyncCard,
  UpdateSyncCard,
  DeleteSyncCards,
  PutSyncText,
  SetSyncSent,
  InsertSyncConflict,
  UpdateSyncConflict,
  DeleteSyncConflicts,
  ReadOnlyContainers,
  InsertSyncRun,
  DeleteOldSyncRuns,
  Count,
};

std::string_view sqlOf(Sql which);

// How a record's row holds its identifier: the 16 bytes of our own, the text of any other.
class StoredUid {
 public:
  explicit StoredUid(const RecordKey& key);
  // Borrowed by the statement or the list: this object must outlive the step.
  void bindTo(sqlite::Statement& statement, int index) const;
  void addTo(sqlite::KeyList& keys) const;

 private:
  bool asText_;
  std::string bytes_;
};

// Throws DamagedRow for bytes that are no identifier.
RecordKey keyOfColumn(const sqlite::Statement& row, int column);

// A row is not what was written. Which file it stands in adds StoreFile::guarded.
class DamagedRow : public DamagedBytes {
 public:
  using DamagedBytes::DamagedBytes;
};

// Every row tells in a column whether it is sound; throws DamagedRow, which says what it is, when
// it is not.
void requireSound(const sqlite::Statement& row, int column, const char* what);
// The key in a column of a sound row.
RecordKey soundKey(const sqlite::Statement& row, int key, int sound);

// Of a row of id, uid, kind, container, checksum. Throws DamagedRow.
RecordEntry entryOfRow(const sqlite::Statement& row);
// Its kind, damaged or not.
RecordKind kindOfRow(const sqlite::Statement& row);

// Of a row of id, parent, child, checksum.
struct StoredLink {
  std::int64_t number;
  std::int64_t parent;
  std::int64_t child;
  bool isSound;  // else any of them may be another
};
StoredLink linkOfRow(const sqlite::Statement& row);

}  // namespace ox
