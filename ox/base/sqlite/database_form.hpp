#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "ox/base/sqlite/connection.hpp"

namespace ox::sqlite {

// One thing in the schema of a database: a table, an index, a view or a trigger, with the statement
// that made it, its words parted by single spaces; without one for an index that SQLite has made by
// itself.
struct SchemaThing {
  std::string type;
  std::string name;
  std::string table;  // that it belongs to
  std::string words;
  bool operator==(const SchemaThing&) const = default;
};
using Schema = std::vector<SchemaThing>;  // in the order of these members

// What a database file says of itself, all of one moment. Reading it reads nothing else of the
// file and runs nothing that stands in it.
struct DatabaseForm {
  std::int64_t applicationId = 0;
  std::int64_t version = 0;
  Schema schema;
  bool isEmpty() const { return applicationId == 0 && version == 0 && schema.empty(); }
};
DatabaseForm formOf(Connection& file);

// The schema that these statements of ours make, and what SQLite adds to it. Those that make
// neither a table nor an index are passed over. They keep to a plain form: no semicolon but at
// their ends, names without quotes, constraints of the key and of uniqueness at the column, but for
// the key of a table WITHOUT ROWID.
Schema schemaMadeBy(std::string_view statements);

// How a schema differs from the one that is wanted.
struct SchemaDifference {
  enum class Kind : std::uint8_t { Foreign, Altered, Missing };
  Kind kind;
  SchemaThing thing;  // as it is wanted where it is missing, else as it is
  // Whether it can be made anew from what the tables hold.
  bool isMissingIndex() const {
    return kind == Kind::Missing && thing.type == "index" && !thing.words.empty();
  }
};
// What is done with a file that lacks an index. Nothing is lost with it, but a row may be put in
// twice, and everything takes its time.
enum class MissingIndexes : std::uint8_t { Refuse, Allow };

std::vector<SchemaDifference> differencesOf(const Schema& schema, const Schema& wanted);
// The first difference for which a file is refused; missing when there is none.
std::optional<SchemaDifference> obstacleIn(const Schema& schema, const Schema& wanted,
                                           MissingIndexes missing);
// The indexes that a file lacks and that can be made anew.
Schema missingIndexesIn(const Schema& schema, const Schema& wanted);
// What is wrong with a file that differs so: "the trigger \"full\" does not belong there".
std::string sentenceOf(const SchemaDifference& difference);

}  // namespace ox::sqlite
