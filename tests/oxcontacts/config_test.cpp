// The configuration file: what it sets, what comes before it, and what is wrong with one.
#include <cstdlib>
#include <filesystem>
#include <gtest/gtest.h>

#include "tests/oxcontacts/program.hpp"
#include "tests/support/store_environment.hpp"

namespace ox::program_tests {
namespace {

using support::temporaryFile;
using support::temporaryPath;

// Where the program looks unless it is told otherwise.
std::string writeUsualFile(const std::string& yaml) {
  const auto folder = temporaryPath("config") / "oxcontacts";
  std::filesystem::create_directories(folder);
  return temporaryFile("config/oxcontacts/config.yaml", yaml).string();
}

// "file PATH:2 = VALUE" of a key.
std::string shown(const std::vector<std::string>& words, const std::string& key) {
  auto arguments = words;
  arguments.emplace_back("config");
  const auto config = runJson(arguments);
  if (!config.is_object()) return config.dump();
  for (const auto& setting : config["settings"]) {
    if (setting["key"] != key) continue;
    return std::string(setting["from"]) +
           (setting["where"].is_null() ? "" : " " + std::string(setting["where"])) + " = " +
           (setting["value"].is_null() ? "nothing" : std::string(setting["value"]));
  }
  return "no key";
}

std::string namesOf(const std::vector<std::string>& words) {
  std::string names;
  for (const auto& person : runJson(words)) {
    names += (names.empty() ? "" : ", ") + std::string(person["displayName"]);
  }
  return names;
}

void fillStore() {
  run({"accounts", "add", "Work"});
  run({"add-person", "_local", "name=Ann Young", "phone=1"});
  run({"add-person", "_local", "name=Zoe Berg"});
  run({"add-person", "Work", "name=Per Holm"});
}

TEST(Config, NeedsNoFile) {
  fillStore();
  EXPECT_EQ(shown({}, "sort"), "built-in = name");
  EXPECT_EQ(shown({}, "book"), "built-in = nothing");
  EXPECT_EQ(shown({}, "editor"), "built-in = vi");
  EXPECT_EQ(namesOf({"persons"}), "Ann Young, Per Holm, Zoe Berg");
  const auto path = (temporaryPath("config") / "oxcontacts/config.yaml").string();
  EXPECT_EQ(run({"config"}).errors, "oxcontacts: there is no " + path + "\n");
  ::setenv("OX_CONTACTS_CONFIG", temporaryPath("none.yaml").c_str(), 1);
  EXPECT_EQ(run({"persons"}).exitCode, 0);
  // One that is named by an option is meant to be there.
  const auto result = run({"--config", "none.yaml", "persons"});
  EXPECT_EQ(result.exitCode, 2);
  EXPECT_EQ(result.errors, "oxcontacts: none.yaml: does not exist\n");
}

TEST(Config, ComesBehindOptionAndEnvironment) {
  const auto file = writeUsualFile(
      "# mine\nstore: other.db\ncolor: always\neditor: nano -w\nsort: family\nprogress: never\n");
  const auto other = (temporaryPath("config") / "oxcontacts/other.db").string();
  const auto own = support::StoreEnvironment::instance().contactStore().string();
  EXPECT_EQ(shown({}, "store"), "environment OX_CONTACT_STORE = " + own);
  EXPECT_EQ(shown({"--store", "x.db"}, "store"), "option --store = x.db");
  ::unsetenv("OX_CONTACT_STORE");
  EXPECT_EQ(shown({}, "store"), "file " + file + ":2 = " + other);
  EXPECT_EQ(shown({}, "color"), "file " + file + ":3 = always");
  EXPECT_EQ(shown({"--color", "auto"}, "color"), "option --color = auto");
  ::setenv("NO_COLOR", "1", 1);
  EXPECT_EQ(shown({}, "color"), "environment NO_COLOR = never");
  EXPECT_EQ(shown({}, "progress"), "file " + file + ":6 = never");
  ::unsetenv("VISUAL");
  ::unsetenv("EDITOR");
  EXPECT_EQ(shown({}, "editor"), "file " + file + ":4 = nano -w");
  ::setenv("EDITOR", "ed", 1);
  EXPECT_EQ(shown({}, "editor"), "environment EDITOR = ed");
  ::setenv("VISUAL", "vim", 1);
  EXPECT_EQ(shown({}, "editor"), "environment VISUAL = vim");
  EXPECT_EQ(shown({}, "sort"), "file " + file + ":5 = family");
}

TEST(Config, SetsTheStore) {
  ::unsetenv("OX_CONTACT_STORE");
  ::unsetenv("OX_TAG_STORE");
  const auto store = temporaryPath("config/oxcontacts/mine.db");
  writeUsualFile("store: mine.db\n");
  EXPECT_EQ(run({"add-person", "_local", "name=Ann"}).exitCode, 0);
  EXPECT_TRUE(std::filesystem::exists(store));
  EXPECT_EQ(namesOf({"persons"}), "Ann");
  EXPECT_EQ(run({"complete", "--", "show", "a"}).output, "Ann\n");
  const auto home = temporaryPath("home/of.db");
  const auto file = temporaryFile("home.yaml", "store: ~/of.db\n").string();
  EXPECT_EQ(run({"--config", file, "add-person", "_local", "name=Bob"}).exitCode, 0);
  EXPECT_TRUE(std::filesystem::exists(home));
}

TEST(Config, SetsWhatListsShow) {
  fillStore();
  writeUsualFile("sort: family\ncolumns: [name, phone]\n");
  EXPECT_EQ(namesOf({"persons"}), "Zoe Berg, Per Holm, Ann Young");
  EXPECT_EQ(namesOf({"persons", "--sort", "name"}), "Ann Young, Per Holm, Zoe Berg");
  EXPECT_EQ(run({"find", "young"}).output, "NAME       PHONE\nAnn Young  1\n");
  EXPECT_EQ(run({"find", "young", "--columns", "name"}).output, "NAME\nAnn Young\n");
}

TEST(Config, SetsTheBookOfListsAndOfNewPersons) {
  fillStore();
  writeUsualFile("book: Work\n");
  EXPECT_EQ(namesOf({"persons"}), "Per Holm");
  EXPECT_EQ(namesOf({"persons", "--book", "_local"}), "Ann Young, Zoe Berg");
  EXPECT_EQ(namesOf({"persons", "--book", "*"}), "Ann Young, Per Holm, Zoe Berg");
  EXPECT_EQ(run({"find", "young"}).exitCode, 4);
  EXPECT_EQ(run({"add-person", "name=Ida Lund", "note=new"}).exitCode, 0);
  EXPECT_EQ(namesOf({"persons"}), "Ida Lund, Per Holm");
  EXPECT_EQ(run({"add-person", "_local", "name=Eva Dahl"}).exitCode, 0);
  EXPECT_EQ(namesOf({"persons", "--book", "_local"}), "Ann Young, Eva Dahl, Zoe Berg");
  // Who is named is found wherever she is, and an export is whole.
  EXPECT_EQ(run({"show", "Ann Young"}).exitCode, 0);
  EXPECT_NE(run({"export"}).output.find("FN:Ann Young"), std::string::npos);
}

// A group that is named is looked for everywhere, and so are its members.
TEST(Config, TakesNobodyOutOfAGroupThatIsNamed) {
  fillStore();
  run({"add-group", "_local", "Family"});
  run({"group-add", "Family", "Ann Young"});
  writeUsualFile("book: Work\n");
  EXPECT_EQ(namesOf({"persons", "--group", "Family"}), "Ann Young");
  EXPECT_EQ(namesOf({"persons", "--group", "Family", "--book", "Work"}), "");
}

TEST(Config, SaysThatItsBookNarrowsAListOrIsNone) {
  fillStore();
  const auto file = writeUsualFile("\nbook: Work\n");
  EXPECT_EQ(run({"find", "young"}).errors,
            "oxcontacts: nobody matches \"young\" in the book Work (" + file +
                ":2); --book '*' looks in all\n");
  writeUsualFile("book: Gone\n");
  const auto wrong = "oxcontacts: " + file + ":1: there is no book \"Gone\"\n";
  for (const std::vector<std::string>& words :
       {std::vector<std::string>{"persons"}, {"groups"}, {"phones"}, {"add-person", "name=A"}}) {
    const auto result = run(words);
    EXPECT_EQ(result.exitCode, 4) << words[0];
    EXPECT_EQ(result.errors, wrong);
  }
  EXPECT_EQ(run({"persons", "--book", "*"}).exitCode, 0);
}

TEST(Config, OfAllBooksIsAsNone) {
  fillStore();
  writeUsualFile("book: \"*\"\n");
  EXPECT_EQ(namesOf({"persons"}), "Ann Young, Per Holm, Zoe Berg");
  EXPECT_EQ(run({"add-person", "name=Zed"}).exitCode, 4);
  const auto whole = run({"export"}).output;
  EXPECT_EQ(run({"export", "--book", "*"}).output, whole);
  EXPECT_EQ(run({"page", "--book", "*"}).output, run({"page"}).output);
  EXPECT_EQ(run({"--book", "*", "show", "Per"}).exitCode, 0);
}

TEST(Config, IsQuietWhereThatIsAskedFor) {
  fillStore();
  writeUsualFile("progress: always\n");
  EXPECT_NE(run({"page"}).errors.find("looking for books"), std::string::npos);
  EXPECT_EQ(run({"--quiet", "page"}).errors, "");
}

TEST(Config, SetsTheEditor) {
  fillStore();
  writeUsualFile("editor: sed -i s/Young/Old/\n");
  EXPECT_EQ(run({"edit", "Ann Young"}).exitCode, 0);
  EXPECT_EQ(run({"show", "Ann Old"}).exitCode, 0);
}

TEST(Config, ThatIsWrongIsAUsageErrorWithFileAndLine) {
  fillStore();
  struct Row {
    const char* yaml;
    const char* error;
  };
  for (const auto& [yaml, error] : {
           Row{"sort: name\nsrot: name\n",
               "2: there is no key \"srot\"; there are store, book, "
               "columns, sort, editor, color, progress"},
           Row{"\nsort: size\n", "2: sort: \"size\" is none of name, family, pinyin, store"},
           Row{"color: yes\n", "1: color: \"yes\" is none of auto, always, never"},
           Row{"sort: [name]\n", "1: sort: a text is expected here"},
           Row{"book: {a: b}\n", "1: book: a text is expected here"},
           Row{"columns: {a: b}\n", "1: columns: a text or a list of texts is expected here"},
           Row{"columns: [[a]]\n", "1: columns: one name is expected here"},
           Row{"book: \"\"\n", "1: book: must not be empty"},
           Row{"sort: name\nsort: family\n", "2: \"sort\" stands here a second time"},
           Row{"just words\n", "1: keys and values are expected here, as in \"sort: family\""},
           Row{"sort: name\n---\nsort: family\n", "3: one document is all there may be"},
           Row{"columns: name,shoe\n", "1: there is no column \"shoe\""},
       }) {
    const auto file = writeUsualFile(yaml);
    const auto result = run({"persons"});
    EXPECT_EQ(result.exitCode, 2) << yaml;
    EXPECT_EQ(result.output, "") << yaml;
    EXPECT_TRUE(result.errors.starts_with("oxcontacts: " + file + ":" + error)) << result.errors;
  }
  const auto file = writeUsualFile("sort: name\ncolumns: [name\n");
  const auto result = run({"persons"});
  EXPECT_EQ(result.exitCode, 2);
  EXPECT_TRUE(result.errors.starts_with("oxcontacts: " + file + ":")) << result.errors;
  // Help is there all the same.
  EXPECT_EQ(run({"help", "config"}).exitCode, 0);
  EXPECT_EQ(run({"complete", "--", "per"}).output, "persons\n");
  const auto folder = run({"--config", temporaryPath("config").string(), "persons"});
  EXPECT_EQ(folder.exitCode, 2);
  EXPECT_EQ(folder.errors,
            "oxcontacts: " + temporaryPath("config").string() + ": is a directory\n");
}

TEST(Config, MayBeEmpty) {
  fillStore();
  for (const auto* yaml : {"", "# nothing\n"}) {
    writeUsualFile(yaml);
    EXPECT_EQ(run({"persons"}).exitCode, 0);
    EXPECT_EQ(shown({}, "sort"), "built-in = name");
  }
}

TEST(Config, IsChosenByOptionThenByVariable) {
  writeUsualFile("sort: family\n");
  const auto variable = temporaryFile("variable.yaml", "sort: pinyin\n").string();
  const auto option = temporaryFile("option.yaml", "sort: store\n").string();
  ::setenv("OX_CONTACTS_CONFIG", variable.c_str(), 1);
  EXPECT_EQ(shown({}, "sort"), "file " + variable + ":1 = pinyin");
  EXPECT_EQ(shown({"--config", option}, "sort"), "file " + option + ":1 = store");
}

}  // namespace
}  // namespace ox::program_tests
