#include <gtest/gtest.h>

#include "tests/oxcontacts/program.hpp"
#include "tests/support/store_environment.hpp"

namespace ox::program_tests {
namespace {

using support::temporaryFile;

// Ann and Zoë in the local book, 王小明 in a second one; Friends holds Zoë.
void fillStore() {
  run({"accounts", "add", "iCloud", "--identifier", "A:ABAccount"});
  const auto local = temporaryFile(
      "local.vcf",
      card({"UID:a", "N:Lee;Ann;;;", "FN:Ann Lee", "TEL;TYPE=CELL,pref:+1 555 1"}) +
          card({"UID:z", "N:Berg;Zo\u00EB;;;", "FN:Zo\u00EB Berg",
                "EMAIL;TYPE=WORK,pref:zoe@example.org", "EMAIL;TYPE=HOME:z@home.example",
                "ADR;TYPE=HOME:;;Street 1;Town;;12345;Sverige", "BDAY:1986-03-21",
                "IMPP;X-SERVICE-TYPE=Skype;TYPE=WORK:skype:zoe", "NOTE:two\\nlines"}) +
          card({"UID:g", "FN:Friends", "N:Friends;;;;", "X-ADDRESSBOOKSERVER-KIND:group",
                "X-ADDRESSBOOKSERVER-MEMBER:urn:uuid:z"}));
  ASSERT_EQ(run({"import", local}).exitCode, 0);
  const auto cloud = temporaryFile("cloud.vcf", card({"UID:w", "N:王;小明;;;", "FN:王小明"}));
  ASSERT_EQ(run({"import", cloud, "--into", "A"}).exitCode, 0);
}

std::string namesOf(const Json& persons) {
  std::string names;
  for (const auto& person : persons) {
    names += (names.empty() ? "" : ", ") + person["displayName"].get<std::string>();
  }
  return names;
}

TEST(BooksCommand, ListsTheBooksTheLocalOneFirst) {
  fillStore();
  EXPECT_EQ(runJson({"books"}), Json::parse(R"([
      {"ID":"_local","name":"On My Mac","serverType":0,"canCreateGroup":true,
       "canCreateSubGroup":true,"canOprate":true,"persons":2,"groups":1},
      {"ID":"A","name":"iCloud","serverType":8,"canCreateGroup":true,
       "canCreateSubGroup":true,"canOprate":true,"persons":1,"groups":0}])"));
  const auto bar = run({"--progress", "always", "books"});
  EXPECT_NE(bar.errors.find("100 %"), std::string::npos);
  EXPECT_EQ(run({"books"}).errors, "");
}

TEST(PersonsCommand, ChoosesAndSorts) {
  fillStore();
  struct Row {
    std::vector<std::string> options;
    const char* names;
  };
  const std::vector<Row> rows = {
      {{}, "Ann Lee, Zoë Berg, 王小明"},
      {{"--sort", "pinyin"}, "Ann Lee, 王小明, Zoë Berg"},
      {{"--sort", "name", "--limit", "2"}, "Ann Lee, Zoë Berg"},
      {{"--limit", "0"}, ""},
      {{"--book", "_local"}, "Ann Lee, Zoë Berg"},
      {{"--book", "iCloud"}, "王小明"},
      {{"--group", "Friends"}, "Zoë Berg"},
      {{"--group", "Friends", "--book", "A"}, ""},
      {{"--find", "zoe"}, "Zoë Berg"},
      {{"--find", "XIAO"}, "王小明"},
      {{"--find", "555"}, "Ann Lee"},
      {{"--find", "HOME.example"}, "Zoë Berg"},
      {{"--tag", "nobody has it"}, ""},
  };
  for (const auto& row : rows) {
    auto arguments = row.options;
    arguments.insert(arguments.begin(), "persons");
    EXPECT_EQ(namesOf(runJson(arguments)), row.names) << Json(row.options);
  }
  const auto ann = runJson({"persons", "--limit", "1"})[0];
  EXPECT_EQ(ann, Json({{"ID", ann["ID"]},
                       {"addressBookID", "_local"},
                       {"displayName", "Ann Lee"},
                       {"nameChineesPinyin", "ANN LEE"},
                       {"mainPhone", "+1 555 1"},
                       {"mainEmail", nullptr},
                       {"tags", Json::array()}}));
  EXPECT_EQ(run({"persons", "--book", "Nowhere"}).exitCode, 4);
  EXPECT_EQ(run({"persons", "--group", "Nowhere"}).exitCode, 4);
}

TEST(PersonsCommand, AlignsEveryScript) {
  fillStore();
  const auto output = run({"persons", "--quiet"}).output;
  const auto ids = personIds();
  const auto shortId = [&](const char* name) { return ids.at(name).substr(0, 18) + "\n"; };
  EXPECT_EQ(output,
            "NAME      PHONE     E-MAIL           BOOK       ID\n"
            "Ann Lee   +1 555 1                   On My Mac  " +
                shortId("Ann Lee") + "Zoë Berg            zoe@example.org  On My Mac  " +
                shortId("Zoë Berg") + "王小明                               iCloud     " +
                shortId("王小明"));
}

TEST(ShowCommand, GivesEveryValue) {
  fillStore();
  const auto shown = runJson({"show", "Zo\u00EB Berg"});
  const auto element = [](int type, const char* label, const char* word, Json value, bool main) {
    return Json({{"type", type},
                 {"label", label},
                 {"labelDisplayName", word},
                 {"value", std::move(value)},
                 {"main", main}});
  };
  const Json address = {{"street", "Street 1"}, {"city", "Town"},       {"state", nullptr},
                        {"zip", "12345"},       {"country", "Sverige"}, {"countryCode", nullptr}};
  std::map<std::string, Json> properties;
  for (const auto& property : shown["properties"]) properties[property["name"]] = property;
  EXPECT_EQ(properties["OxProPertyName"]["value"],
            Json({{"first", "Zoë"}, {"middle", nullptr}, {"last", "Berg"}}));
  EXPECT_EQ(properties["OxProPertyEmail"]["values"],
            Json::array({element(7, "_$!<Work>!$_", "Work", "zoe@example.org", true),
                         element(7, "_$!<Home>!$_", "Home", "z@home.example", false)}));
  EXPECT_EQ(properties["OxProPertyAddress"]["values"][0]["value"].dump(), address.dump());
  EXPECT_EQ(properties["OxProPertyBirthday"]["value"], "1986-03-21");
  EXPECT_EQ(properties["OxProPertyNote"]["value"], "two\nlines");
  EXPECT_EQ(properties["OxProPertyInstantMessage"]["values"][0]["value"],
            Json({{"userName", "zoe"}, {"server", "Skype"}}));
  EXPECT_EQ(shown["groups"][0]["displayName"], "Friends");
  EXPECT_EQ(shown["nameChineesPinyin"], "ZOE BERG");

  EXPECT_EQ(runJson({"show", shown["ID"]}), shown);
  EXPECT_EQ(run({"show", "Nobody"}).exitCode, 4);
}

TEST(ShowCommand, WritesANameInItsOwnOrderAndNoneForNobody) {
  fillStore();
  const auto shown = [](const std::string& name) { return run({"show", name}).output; };
  EXPECT_NE(shown("Ann Lee").find("\nName                Ann Lee\n"), std::string::npos)
      << shown("Ann Lee");
  EXPECT_NE(shown("王小明").find("\nName             王小明\n"), std::string::npos)
      << shown("王小明");
  const auto unnamed = runJson({"add-person", "_local", "note=x"});
  const auto output = shown(unnamed["ID"]);
  EXPECT_EQ(output.find("Name"), std::string::npos) << output;
  EXPECT_NE(output.find("Note"), std::string::npos) << output;
}

TEST(ShowCommand, ShowsNoCountryThatTheCardDoesNotHold) {
  const auto file = temporaryFile(
      "ann.vcf", card({"N:Lee;Ann;;;", "FN:Ann Lee", "ADR;TYPE=HOME:;;Street 1;Town;;1;",
                       "item1.ADR;TYPE=WORK:;;Street 2;Town;;2;", "item1.X-ABADR:de"}));
  ASSERT_EQ(run({"import", file}).exitCode, 0);
  const auto table = run({"show", "Ann Lee"}).output;
  EXPECT_NE(table.find("Home   Street 1, Town, 1\n"), std::string::npos) << table;
  EXPECT_NE(table.find("Work   Street 2, Town, 2, de\n"), std::string::npos) << table;
  const auto shown = runJson({"show", "Ann Lee"});
  for (const auto& property : shown["properties"]) {
    if (property["name"] != "OxProPertyAddress") continue;
    EXPECT_EQ(property["values"][0]["value"]["countryCode"], nullptr);
    EXPECT_EQ(property["values"][1]["value"]["countryCode"], "de");
  }
}

TEST(ShowCommand, ShowsLabelsOfOtherProgramsAsWords) {
  const auto file = temporaryFile(
      "ann.vcf", card({"N:Lee;Ann;;;", "FN:Ann Lee", "item1.TEL:1",
                       "item1.X-ABLabel:_$!<AssistantPhone>!$_", "item2.TEL:2",
                       "item2.X-ABLabel:_$!<>!$_", "item3.TEL:3", "item3.X-ABLabel:TaxiDriver"}));
  ASSERT_EQ(run({"import", file}).exitCode, 0);
  std::vector<std::string> labels;
  const auto shown = runJson({"show", "Ann Lee"});
  for (const auto& property : shown["properties"]) {
    if (property["name"] != "OxProPertyPhone") continue;
    for (const auto& value : property["values"]) labels.push_back(value["labelDisplayName"]);
  }
  EXPECT_EQ(labels, (std::vector<std::string>{"Assistant Phone", "_$!<>!$_", "TaxiDriver"}));
  EXPECT_NE(run({"show", "Ann Lee"}).output.find("Assistant Phone"), std::string::npos);
}

TEST(ShowCommand, FindsANameHoweverItsAccentsAreStored) {
  const auto file = temporaryFile(
      "zoe.vcf", card({"N:;Zoe\u0308;;;", "FN:Zoe\u0308"}) + card({"N:;Łée;;;", "FN:Łée"}));
  ASSERT_EQ(run({"import", file}).exitCode, 0);
  run({"accounts", "add", "Bu\u0308ro"});
  EXPECT_EQ(runJson({"show", "Zoë"})["displayName"], "Zoe\u0308");
  EXPECT_EQ(runJson({"show", "Łe\u0301e"})["displayName"], "Łée");
  EXPECT_EQ(runJson({"show", "Zoe"})["displayName"], "Zoe\u0308");
  EXPECT_EQ(runJson({"show", "lee"})["displayName"], "Łée");
  EXPECT_EQ(run({"persons", "--book", "Büro"}).exitCode, 0);
  EXPECT_EQ(run({"accounts", "remove", "Büro"}).exitCode, 0);
}

TEST(ShowCommand, AsksWhichOfSeveralIsMeant) {
  const auto twins = temporaryFile(
      "twins.vcf", card({"UID:1", "N:;Ann;;;", "FN:Ann"}) + card({"UID:2", "N:;Ann;;;", "FN:Ann"}));
  run({"import", twins});
  const auto result = run({"show", "Ann"});
  EXPECT_EQ(result.exitCode, 2);
  for (const auto& person : runJson({"persons"})) {
    const auto shortId = person["ID"].get<std::string>().substr(0, 18);
    EXPECT_NE(result.errors.find("Ann (On My Mac, " + shortId + ")"), std::string::npos);
    EXPECT_EQ(runJson({"show", shortId})["ID"], person["ID"]);
  }
}

TEST(GroupsCommand, ShowsTheTreeOfABook) {
  fillStore();
  const auto groups = runJson({"groups", "--book", "_local"});
  EXPECT_EQ(groups, Json::array({{{"ID", groups[0]["ID"]},
                                  {"displayName", "Friends"},
                                  {"addressBookID", "_local"},
                                  {"persons", 1},
                                  {"includePersons", 1},
                                  {"subGroups", Json::array()}}}));
  EXPECT_EQ(runJson({"groups", "--book", "iCloud"}), Json::array());
  EXPECT_EQ(run({"groups"}).output, "Friends  (1 person, 1 with sub-groups, book On My Mac)\n");
}

}  // namespace
}  // namespace ox::program_tests
