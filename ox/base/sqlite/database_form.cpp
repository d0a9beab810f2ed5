#include "ox/base/sqlite/database_form.hpp"

#include <algorithm>
#include <tuple>
#include <utility>

#include "ox/base/sqlite/error.hpp"

namespace ox::sqlite {
namespace {

bool isSpace(char c) {
  return c == ' ' || c == '\n' || c == '\t' || c == '\r';
}

std::string singleSpaced(std::string_view text) {
  std::string words;
  for (const char c : text) {
    if (!isSpace(c)) {
      words += c;
    } else if (!words.empty() && words.back() != ' ') {
      words += ' ';
    }
  }
  if (words.ends_with(' ')) words.pop_back();
  return words;
}

// What stands behind that word, up to the next space or bracket; empty where the word is not there.
std::string nameBehind(const std::string& words, std::string_view word) {
  const auto at = words.find(word);
  if (at == std::string::npos) return {};
  const auto start = at + word.size();
  return words.substr(start, words.find_first_of(" (", start) - start);
}

std::size_t countOf(const std::string& words, std::string_view wanted) {
  std::size_t count = 0;
  for (auto at = words.find(wanted); at != std::string::npos; at = words.find(wanted, at + 1)) {
    ++count;
  }
  return count;
}

// Each column that is unique, or the key of its table without being the number of the row, has an
// index.
std::size_t automaticIndexes(const std::string& words) {
  if (words.ends_with("WITHOUT ROWID")) return 0;
  return countOf(words, " UNIQUE") + countOf(words, " PRIMARY KEY") -
         countOf(words, " INTEGER PRIMARY KEY");
}

void addTable(Schema& schema, std::string words) {
  const auto name = nameBehind(words, "CREATE TABLE ");
  for (std::size_t i = 1; i <= automaticIndexes(words); ++i) {
    schema.push_back({"index", "sqlite_autoindex_" + name + "_" + std::to_string(i), name, ""});
  }
  SchemaThing sequence{"table", "sqlite_sequence", "sqlite_sequence",
                       "CREATE TABLE sqlite_sequence(name,seq)"};
  const bool isCounted = words.find(" AUTOINCREMENT") != std::string::npos;
  if (isCounted && std::ranges::find(schema, sequence) == schema.end()) {
    schema.push_back(std::move(sequence));
  }
  schema.push_back({"table", name, name, std::move(words)});
}

void putInOrder(Schema& schema) {
  std::ranges::sort(schema, {}, [](const SchemaThing& thing) {
    return std::tie(thing.type, thing.name, thing.table, thing.words);
  });
}

bool isSameThing(const SchemaThing& one, const SchemaThing& other) {
  return one.type == other.type && one.name == other.name;
}

const SchemaThing* sameThingIn(const Schema& schema, const SchemaThing& thing) {
  const auto found =
      std::ranges::find_if(schema, [&](const auto& each) { return isSameThing(each, thing); });
  return found == schema.end() ? nullptr : &*found;
}

}  // namespace

// The name sqlite_master, for a table of the file may take that of sqlite_schema.
DatabaseForm formOf(Connection& file) try {
  const Snapshot moment(file);
  DatabaseForm form;
  form.applicationId = file.queryInteger("PRAGMA application_id");
  form.version = file.queryInteger("PRAGMA user_version");
  auto rows = file.prepare("SELECT type, name, tbl_name, sql FROM main.sqlite_master");
  while (rows.step()) {
    form.schema.push_back({std::string(rows.text(0)), std::string(rows.text(1)),
                           std::string(rows.text(2)), singleSpaced(rows.text(3))});
  }
  putInOrder(form.schema);
  return form;
} catch (const Error&) {
  file.keepLog();  // who cannot say what the file is leaves it as it is
  throw;
}

Schema schemaMadeBy(std::string_view statements) {
  Schema schema;
  while (!statements.empty()) {
    const auto end = std::min(statements.find(';'), statements.size());
    auto words = singleSpaced(statements.substr(0, end));
    statements.remove_prefix(std::min(end + 1, statements.size()));
    if (words.starts_with("CREATE TABLE ")) {
      addTable(schema, std::move(words));
    } else if (const auto index = nameBehind(words, " INDEX "); words.starts_with("CREATE ")) {
      const auto table = nameBehind(words, " ON ");
      schema.push_back({"index", index, table, std::move(words)});
    }
  }
  putInOrder(schema);
  return schema;
}

std::vector<SchemaDifference> differencesOf(const Schema& schema, const Schema& wanted) {
  using Kind = SchemaDifference::Kind;
  std::vector<SchemaDifference> differences;
  if (schema == wanted) return differences;
  for (std::size_t i = 0; i < schema.size(); ++i) {
    const auto* ours = sameThingIn(wanted, schema[i]);
    const bool isTwice = i > 0 && isSameThing(schema[i - 1], schema[i]);
    if (ours == nullptr || isTwice) {
      differences.push_back({Kind::Foreign, schema[i]});
    } else if (*ours != schema[i]) {
      differences.push_back({Kind::Altered, schema[i]});
    }
  }
  for (const auto& thing : wanted) {
    if (sameThingIn(schema, thing) == nullptr) differences.push_back({Kind::Missing, thing});
  }
  return differences;
}

std::optional<SchemaDifference> obstacleIn(const Schema& schema, const Schema& wanted,
                                           MissingIndexes missing) {
  for (auto& difference : differencesOf(schema, wanted)) {
    if (missing == MissingIndexes::Refuse || !difference.isMissingIndex()) {
      return std::move(difference);
    }
  }
  return std::nullopt;
}

Schema missingIndexesIn(const Schema& schema, const Schema& wanted) {
  Schema missing;
  for (auto& difference : differencesOf(schema, wanted)) {
    if (difference.isMissingIndex()) missing.push_back(std::move(difference.thing));
  }
  return missing;
}

std::string sentenceOf(const SchemaDifference& difference) {
  const auto& [kind, thing] = difference;
  const auto name = "the " + thing.type + " \"" + thing.name + "\" ";
  switch (kind) {
    case SchemaDifference::Kind::Foreign:
      return name + "does not belong there";
    case SchemaDifference::Kind::Altered:
      return name + "is not made as it should be";
    case SchemaDifference::Kind::Missing:
      break;
  }
  return name + "is missing";
}

}  // namespace ox::sqlite
