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
  const bool mayLackIndexes = missing == MissingIndexes::Allow || version < kSchemaVersion;
  for (const auto& difference : differencesOf(form.schema, schemaOfVersion(version))) {
    if (difference.isMissingIndex() && mayLackIndexes) continue;
    fail(StoreError::Kind::Corrupt, path,
         sentenceOf(difference) + (difference.isMissingIndex()
                                       ? "; `check --repair` makes it anew"
                                       : "; `recover` reads what the store holds"));
  }
  return static_cast<int>(version);
}

sqlite::Schema missingIndexesOf(sqlite::Connection& database) {
  const auto form = sqlite::formOf(database);
  sqlite::Schema missing;
  for (const auto& difference : differencesOf(form.schema, schemaOfVersion(form.version))) {
    if (difference.isMissingIndex()) missing.push_back(difference.thing);
  }
  return missing;
}

}  // namespace ox
