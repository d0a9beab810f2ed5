#include "ox/base/sqlite/database_form.hpp"

#include <gtest/gtest.h>

namespace ox::sqlite {
namespace {

constexpr const char* kStatements = R"(
CREATE TABLE parent(
  id INTEGER PRIMARY KEY AUTOINCREMENT,
  name TEXT NOT NULL UNIQUE);
INSERT INTO parent(name) VALUES('CREATE');
CREATE TABLE child (id INTEGER PRIMARY KEY, a UNIQUE, b UNIQUE);
CREATE TABLE counted(id INTEGER PRIMARY KEY AUTOINCREMENT);
CREATE TABLE named(
  name TEXT PRIMARY KEY,
  type INTEGER NOT NULL);
CREATE TABLE keyed (
  one TEXT NOT NULL,
  two TEXT NOT NULL,
  PRIMARY KEY (one, two)
) WITHOUT ROWID;
CREATE INDEX child_of ON child(a) WHERE a IS NOT NULL;
CREATE UNIQUE INDEX keyed_two ON keyed (two, one);
PRAGMA application_id = 7;
PRAGMA user_version = 2;
)";

Connection made() {
  Connection file(":memory:", Connection::Mode::ReadWriteCreate);
  file.execute(kStatements);
  return file;
}

std::string told(const std::vector<SchemaDifference>& differences) {
  std::string text;
  for (const auto& each : differences) text += sentenceOf(each) + "\n";
  return text;
}

TEST(DatabaseForm, IsWhatTheStatementsMake) {
  auto file = made();
  const auto form = formOf(file);
  EXPECT_EQ(form.applicationId, 7);
  EXPECT_EQ(form.version, 2);
  EXPECT_FALSE(form.isEmpty());
  EXPECT_EQ(form.schema.size(), 12U);
  EXPECT_TRUE(form.schema == schemaMadeBy(kStatements))
      << told(differencesOf(form.schema, schemaMadeBy(kStatements)));
}

TEST(DatabaseForm, OfAnEmptyFileIsEmpty) {
  Connection file(":memory:", Connection::Mode::ReadWriteCreate);
  EXPECT_TRUE(formOf(file).isEmpty());
}

TEST(DatabaseForm, ComparesWordsAndNoSpaces) {
  Connection file(":memory:", Connection::Mode::ReadWriteCreate);
  file.execute("CREATE TABLE t (a,\n\t b)");
  EXPECT_TRUE(formOf(file).schema == schemaMadeBy("CREATE TABLE t (a, b);"));
  EXPECT_EQ(told(differencesOf(formOf(file).schema, schemaMadeBy("CREATE TABLE t (a, c);"))),
            "the table \"t\" is not made as it should be\n");
}

TEST(DatabaseForm, TellsHowItDiffers) {
  auto file = made();
  file.execute(
      "CREATE TRIGGER full BEFORE INSERT ON child BEGIN SELECT 1; END;"
      "CREATE VIEW seen AS SELECT 1;"
      "ALTER TABLE child ADD COLUMN c; DROP INDEX keyed_two; DROP TABLE counted");
  const auto differences = differencesOf(formOf(file).schema, schemaMadeBy(kStatements));
  EXPECT_EQ(told(differences),
            "the table \"child\" is not made as it should be\n"
            "the trigger \"full\" does not belong there\n"
            "the view \"seen\" does not belong there\n"
            "the index \"keyed_two\" is missing\n"
            "the table \"counted\" is missing\n");
  std::string missing;
  for (const auto& each : differences) {
    if (each.isMissingIndex()) missing += each.thing.words + "\n";
  }
  EXPECT_EQ(missing, "CREATE UNIQUE INDEX keyed_two ON keyed (two, one)\n");
}

// A view may stand in the way of what is read of the file otherwise.
TEST(DatabaseForm, IsReadPastThingsThatBearTheNamesOfItsParts) {
  auto file = made();
  file.execute(
      "CREATE VIEW pragma_user_version AS SELECT 3 AS user_version;"
      "CREATE VIEW pragma_application_id AS SELECT 8 AS application_id");
  const auto form = formOf(file);
  EXPECT_EQ(form.version, 2);
  EXPECT_EQ(form.applicationId, 7);
  EXPECT_EQ(form.schema.size(), 14U);
}

}  // namespace
}  // namespace ox::sqlite
