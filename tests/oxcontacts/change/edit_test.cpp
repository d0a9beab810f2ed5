#include <gtest/gtest.h>
#include <sys/syscall.h>

#include "ox/base/sqlite/connection.hpp"
#include "tests/oxcontacts/program.hpp"
#include "tests/support/store_environment.hpp"

namespace ox::program_tests {
namespace {

// "Work 1*, Boat 2" of a property with several values, the main one with a star; a single value as
// it stands.
std::string valuesOf(const Json& person, const std::string& name) {
  if (!person.is_object()) return person.dump();
  for (const auto& property : person["properties"]) {
    if (property["name"] != name) continue;
    if (property.contains("value")) return property["value"].dump();
    std::string text;
    for (const auto& entry : property["values"]) {
      const auto& word = entry["labelDisplayName"];
      text +=
          (text.empty() ? "" : ", ") + (word.is_null() ? "" : word.get<std::string>() + " ") +
          (entry["value"].is_string() ? entry["value"].get<std::string>() : entry["value"].dump()) +
          (entry["main"] == true ? "*" : "");
    }
    return text;
  }
  return "nothing";
}

std::string idOf(const Json& json) {
  return json.is_object() ? json["ID"].get<std::string>() : json.dump();
}

TEST(AddPersonCommand, MakesAPersonThatTheNextProcessSees) {
  const auto made =
      runJson({"add-person", "_local", "name=Ann Lee", "phone=+1 555", "phone+:Boat=+1 77",
               "email:home=a@b", "address.city=Oslo", "birthday=--05-17", "company=Acme"});
  const auto ann = runJson({"show", idOf(made)});
  EXPECT_EQ(ann, made);
  EXPECT_EQ(ann["displayName"], "Ann Lee");
  EXPECT_EQ(ann["addressBookID"], "_local");
  EXPECT_EQ(valuesOf(ann, "OxProPertyPhone"), "+1 555*, Boat +1 77");
  EXPECT_EQ(valuesOf(ann, "OxProPertyEmail"), "Home a@b*");
  EXPECT_EQ(valuesOf(ann, "OxProPertyBirthday"), "\"--05-17\"");
}

TEST(AddPersonCommand, RefusesAPersonWithoutAnyValue) {
  for (const auto& words : std::vector<std::vector<std::string>>{
           {"add-person", "On My Mac"}, {"add-person", "On My Mac", "phone=", "name.first="}}) {
    const auto result = run(words);
    EXPECT_EQ(result.exitCode, 2);
    EXPECT_EQ(result.errors,
              "oxcontacts: a person has a value at least; write name=\"Ann Lee\", say\n");
  }
  EXPECT_EQ(runJson({"persons"}).size(), 0U);
}

TEST(AddPersonCommand, TakesTheBookOfAnAccountWithoutRecords) {
  run({"accounts", "add", "iCloud", "--identifier", "A:ABAccount"});
  EXPECT_EQ(runJson({"add-person", "iCloud", "name=Ann"})["addressBookID"], "A");
  EXPECT_EQ(runJson({"books"}).size(), 2U);
}

TEST(SetCommand, ChangesWhatItNamesAndNothingElse) {
  const auto id = idOf(runJson({"add-person", "_local", "name=Ann Lee", "phone:home=1",
                                "phone+:work=2", "phone+:Boat=3", "note=old"}));
  struct Row {
    std::vector<std::string> assignments;
    const char* property;
    const char* values;
  };
  const std::vector<Row> rows = {
      {{"phone:WORK=22"}, "OxProPertyPhone", "Home 1*, Work 22, Boat 3"},
      {{"phone:home=11"}, "OxProPertyPhone", "Home 11*, Work 22, Boat 3"},
      {{"phone+=4"}, "OxProPertyPhone", "Home 11*, Work 22, Boat 3, 4"},
      {{"phone:home="}, "OxProPertyPhone", "Work 22*, Boat 3, 4"},
      {{"phone:pager="}, "OxProPertyPhone", "Work 22*, Boat 3, 4"},
      {{"phone:boat=", "phone+:Boat=5"}, "OxProPertyPhone", "Work 22*, 4, Boat 5"},
      {{"phone=6"}, "OxProPertyPhone", "6*"},
      {{"phone="}, "OxProPertyPhone", "nothing"},
      {{"name.middle=M"}, "OxProPertyName", R"({"first":"Ann","middle":"M","last":"Lee"})"},
      {{"name.last="}, "OxProPertyName", R"({"first":"Ann","middle":"M","last":null})"},
      {{"name=Zo\u00EB"},
       "OxProPertyName",
       "{\"first\":\"Zo\u00EB\",\"middle\":null,\"last\":null}"},
      {{"note="}, "OxProPertyNote", "nothing"},
      {{"address.city=Oslo", "address.zip=0150", "address.city:work=Bergen", "address.zip="},
       "OxProPertyAddress",
       R"({"street":null,"city":"Oslo","state":null,"zip":null,"country":null,"countryCode":null}*,)"
       R"( Work {"street":null,"city":"Bergen","state":null,"zip":null,"country":null,)"
       R"("countryCode":null})"},
      {{"address.city=", "address.city:work="}, "OxProPertyAddress", "nothing"},
  };
  for (const auto& row : rows) {
    auto command = row.assignments;
    command.insert(command.begin(), {"set", id});
    const auto told = runJson(command);
    EXPECT_EQ(valuesOf(told, row.property), row.values) << Json(row.assignments);
    EXPECT_EQ(runJson({"show", id}), told);
  }
}

TEST(SetCommand, ChangesNothingWhenOneAssignmentIsWrong) {
  const auto id = idOf(runJson({"add-person", "_local", "name=Ann", "note=old"}));
  const auto wrong = run({"set", id, "note=new", "fax=1"});
  EXPECT_EQ(wrong.exitCode, 2);
  EXPECT_NE(wrong.errors.find("there is no property \"fax\"; there are name, "), std::string::npos);
  EXPECT_EQ(run({"set", id}).exitCode, 2);
  EXPECT_EQ(run({"set", "Nobody", "note=x"}).exitCode, 4);
  EXPECT_EQ(run({"add-person", "Nowhere", "name=x"}).exitCode, 4);
  EXPECT_EQ(valuesOf(runJson({"show", id}), "OxProPertyNote"), "\"old\"");
  EXPECT_EQ(runJson({"persons"}).size(), 1U);
}

TEST(SetCommand, IsBusyWhenTheStoreStaysLocked) {
  const auto id = idOf(runJson({"add-person", "_local", "name=Ann"}));
  sqlite::Connection other(support::StoreEnvironment::instance().contactStore().string(),
                           sqlite::Connection::Mode::ReadWrite);
  const sqlite::Transaction writing(other);
  const auto result = run({"set", id, "note=x"});
  EXPECT_EQ(result.exitCode, 5) << result.errors;
  EXPECT_NE(result.errors.find("nothing was saved"), std::string::npos) << result.errors;
}

// Waits until the process sleeps between two tries to get the store's lock.
bool waitsForLock(pid_t process) {
  return waitsIn(process, {SYS_clock_nanosleep, SYS_nanosleep});
}

TEST(SetCommand, NamesAnEditThatARemovalElsewhereHasOvertaken) {
  const auto id = idOf(runJson({"add-person", "_local", "name=Ann"}));
  sqlite::Connection other(support::StoreEnvironment::instance().contactStore().string(),
                           sqlite::Connection::Mode::ReadWrite);
  other.execute("PRAGMA foreign_keys=ON");
  sqlite::Transaction writing(other);
  support::RunningProcess program(programCommand({"set", id, "note=x"}));
  ASSERT_TRUE(waitsForLock(program.id()));
  other.execute("DELETE FROM record");
  writing.commit();
  const auto result = program.wait();
  EXPECT_EQ(result.exitCode, 3) << result.errors;
  EXPECT_NE(result.errors.find(id), std::string::npos) << result.errors;
  EXPECT_EQ(runJson({"persons"}), Json::array());
}

TEST(RemovePersonCommand, RemovesThemWithTheirTags) {
  const auto ann = idOf(runJson({"add-person", "_local", "name=Ann"}));
  const auto ben = idOf(runJson({"add-person", "_local", "name=Ben"}));
  run({"tag", ann, "--add", "sailing"});
  EXPECT_EQ(run({"remove-person", ann, "Nobody"}).exitCode, 4);
  EXPECT_EQ(runJson({"persons"}).size(), 2U);
  const auto removed = runJson({"remove-person", ann, ann});
  ASSERT_EQ(removed.size(), 1U) << removed;
  EXPECT_EQ(removed[0]["ID"], ann);
  EXPECT_EQ(removed[0]["tags"], Json::array({"sailing"}));
  EXPECT_EQ(personIds(), (std::map<std::string, std::string>{{"Ben", ben}}));
  sqlite::Connection tags(support::StoreEnvironment::instance().tagStore().string(),
                          sqlite::Connection::Mode::ReadOnly);
  EXPECT_EQ(tags.queryInteger("SELECT count(*) FROM tag"), 0);
}

std::int64_t lastAct() {
  return sqlite::Connection(support::StoreEnvironment::instance().contactStore().string(),
                            sqlite::Connection::Mode::ReadOnly)
      .queryInteger("SELECT max(number) FROM act");
}

TEST(TagCommand, IsOneActAsIsARemovalWithItsTags) {
  run({"accounts", "add", "iCloud", "--identifier", "A:ABAccount"});
  for (const auto* book : {"_local", "iCloud"}) {
    run({"add-person", book, std::string("name=Ann ") + book});
    run({"tag", std::string("Ann ") + book, "--add", "r"});
  }
  const std::vector<std::vector<std::string>> commands = {
      {"tag", "Ann _local", "--add", "p", "--add", "q", "--remove", "r"},
      {"remove-person", "Ann _local"},
      {"accounts", "remove", "iCloud", "--force"},
  };
  for (const auto& command : commands) {
    const auto before = lastAct();
    EXPECT_EQ(run(command).exitCode, 0) << Json(command);
    EXPECT_EQ(lastAct(), before + 1) << Json(command);
  }
  sqlite::Connection tags(support::StoreEnvironment::instance().tagStore().string(),
                          sqlite::Connection::Mode::ReadOnly);
  EXPECT_EQ(tags.queryInteger("SELECT count(*) FROM tag"), 0);
}

TEST(TagCommand, IsTakenBackInTheTagFileToo) {
  run({"add-person", "_local", "name=Ann"});
  run({"tag", "Ann", "--add", "p", "--add", "q"});
  run({"tag", "Ann", "--remove", "p", "--add", "r"});
  sqlite::Connection tags(support::StoreEnvironment::instance().tagStore().string(),
                          sqlite::Connection::Mode::ReadOnly);
  const auto written = [&] {
    return tags.queryText("SELECT group_concat(tag) FROM (SELECT tag FROM tag ORDER BY position)");
  };
  EXPECT_EQ(written(), "q,r");
  EXPECT_EQ(run({"undo"}).exitCode, 0);
  EXPECT_EQ(written().value_or("").size(), 3U) << written().value_or("");
  EXPECT_EQ(run({"redo"}).exitCode, 0);
  EXPECT_EQ(written(), "q,r");
}

TEST(TagCommand, AddsAndRemovesAtOnce) {
  run({"add-person", "_local", "name=Ann"});
  EXPECT_EQ(runJson({"tag", "Ann", "--add", "a", "--add", "b", "--add", "a"}),
            Json::array({"a", "b"}));
  EXPECT_EQ(runJson({"tag", "Ann", "--remove", "a", "--add", "c"}), Json::array({"b", "c"}));
  EXPECT_EQ(run({"tag", "Ann"}).output, "b\nc\n");
  EXPECT_EQ(runJson({"persons", "--tag", "c"}).size(), 1U);
  EXPECT_EQ(run({"tag", "Ann", "--add", ""}).exitCode, 2);
  const auto both = run({"tag", "Ann", "--add", "x", "--add", "b", "--remove", "b"});
  EXPECT_EQ(both.exitCode, 2);
  EXPECT_EQ(both.errors, "oxcontacts: \"b\" cannot be both added and removed\n");
  EXPECT_EQ(run({"tag", "Ann"}).output, "b\nc\n");
  EXPECT_EQ(run({"tag", "Nobody"}).exitCode, 4);
}

TEST(CopyCommand, MakesPersonsOfTheOtherBook) {
  run({"accounts", "add", "iCloud", "--identifier", "A:ABAccount"});
  const auto ann = idOf(runJson({"add-person", "_local", "name=Ann", "phone:home=1"}));
  run({"tag", ann, "--add", "sailing"});
  for (int i = 1; i <= 2; ++i) {  // into a book without records, then into one that has some
    const auto copies = runJson({"copy", ann, "--to", "iCloud"});
    ASSERT_EQ(copies.size(), 1U) << copies;
    EXPECT_EQ(copies[0]["addressBookID"], "A");
    const auto copy = runJson({"show", idOf(copies[0])});
    EXPECT_EQ(valuesOf(copy, "OxProPertyPhone"), "Home 1*");
    EXPECT_EQ(copy["tags"], Json::array({"sailing"}));
  }
  EXPECT_EQ(runJson({"persons"}).size(), 3U);
  EXPECT_EQ(run({"copy", ann, "--to", "Nowhere"}).exitCode, 4);
  EXPECT_EQ(run({"copy", ann}).exitCode, 2);
}

}  // namespace
}  // namespace ox::program_tests
