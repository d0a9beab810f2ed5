#include "ox/platform/store/schema/store_form.hpp"

#include "ox/platform/store/schema/earlier_tables.hpp"
#include "ox/platform/store/schema/tables.hpp"
#include "ox/platform/store/values/store_error.hpp"

namespace ox {
namespace {

[[noreturn]] void fail(StoreError::Kind kind, const std::string& path, const std::string& reason) {
  throw StoreError(kind, path + ": " + reason, path);
}

sqlite::Schema schemaOfVersion(std::int64_t version) {
  if (version == 1) return sqlite::schemaMadeBy(kTablesOfVersion1);
  if (version == 2) return sqlite::schemaMadeBy(kTablesOfVersion2);
  if (version == 3) return sqlite::schemaMadeBy(tablesOfVersion3());
  return sqlite::schemaMadeBy(emptyTables());
}

}  // namespace

int versionOf(sqlite::Connection& database, const std::string& path, MissingIndexes missing) {
  const auto form = sqlite::formOf(database);
  if (form.isEmpty()) return 0;
  const auto version = form.version;
  if (form.applicationId != kStoreApplicationId) {
    fail(StoreError::Kind::NotAStore, path, "is a database of another program");
  }
  if (version > kSchemaVersion) {
    fail(StoreError::Kind::NewerSchema, path,
         "was written by a newer version (schema " + std::to_string(version) +
             ", this version knows " + std::to_string(kSchemaVersion) + ")");
  }
  if (version < 1) fail(StoreError::Kind::Corrupt, path, "the number of its version is damaged");
  if (version < kSchemaVersion) missing = MissingIndexes::Allow;  // a migration makes them
  if (const auto obstacle = obstacleIn(form.schema, schemaOfVersion(version), missing)) {
    fail(StoreError::Kind::Corrupt, path,
         sentenceOf(*obstacle) + (obstacle->isMissingIndex()
                                      ? "; `check --repair` makes it anew"
                                      : "; `recover` reads what the store holds"));
  }
  return static_cast<int>(version);
}

sqlite::Schema missingIndexesOf(sqlite::Connection& database) {
  const auto form = sqlite::formOf(database);
  return missingIndexesIn(form.schema, schemaOfVersion(form.version));
}

}  // namespace ox
