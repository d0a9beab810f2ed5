#include "ox/platform/store/writing/record_writer.hpp"

#include <string>

#include "ox/base/checksum.hpp"

namespace ox {

bool RecordWriter::insertRecord(const RecordEntry& record) {
  const StoredUid uid(record.key);
  auto& insert = file_.statement(Sql::InsertRecord);
  insert.bind(1, record.row);
  uid.bindTo(insert, 2);
  insert.bind(3, static_cast<std::int64_t>(record.kind)).bind(4, record.container).run();
  return file_.connection().changes() != 0;
}

RecordWriter::Picture RecordWriter::insertPicture(const std::string& bytes) {
  const auto checksum = checksum64(bytes);
  file_.statement(Sql::InsertImage)
      .bind(1, static_cast<std::int64_t>(checksum))
      .bindBlob(2, bytes)
      .run();
  return {file_.connection().lastRowId(), checksum};
}

void RecordWriter::insertContent(const Content& content) {
  run(Statement::Insert, content);
}

void RecordWriter::updateContent(const Content& content, ReplacePicture picture) {
  const auto update = picture == ReplacePicture::Yes ? Statement::UpdateWithPicture
                      : content.hasSameUid           ? Statement::UpdateOfSameUid
                                                     : Statement::Update;
  if (run(update, content) || run(Statement::Insert, content)) return;
  throw DamagedRow("row " + std::to_string(content.record) + " of the stored values is damaged");
}

Sql RecordWriter::sqlOf(Statement which) {
  switch (which) {
    case Statement::Insert:
      return Sql::InsertContent;
    case Statement::Update:
      return Sql::UpdateContent;
    case Statement::UpdateOfSameUid:
      return Sql::UpdateContentOfSameUid;
    case Statement::UpdateWithPicture:
      break;
  }
  return Sql::UpdateContentAndImage;
}

// False when there was no row to update. The statements have their columns in one order.
bool RecordWriter::run(Statement which, const Content& content) {
  const auto& values = *content.values;
  file_.writeCustomProperties(values.custom);
  auto& statement = file_.statement(sqlOf(which));
  statement.bind(1, content.record)
      .bindText(2, values.cardUid)
      .bind(3, static_cast<std::int64_t>(content.fingerprint))
      .bindBlob(5, values.bytes);
  if (which == Statement::Insert || which == Statement::UpdateWithPicture) {
    if (content.picture) {
      statement.bind(4, content.picture->row);
    } else {
      statement.bindNull(4);
    }
  }
  statement.run();
  return file_.connection().changes() != 0;
}

}  // namespace ox
