#include <filesystem>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "ox/base/base64.hpp"
#include "ox/images/image_codec.hpp"
#include "tests/oxcontacts/on_a_terminal.hpp"
#include "tests/oxcontacts/program.hpp"
#include "tests/support/store_environment.hpp"

namespace ox::program_tests {
namespace {

using support::fileBytes;
using support::temporaryFile;
using support::temporaryPath;

std::string page(std::vector<std::string> words = {}) {
  words.insert(words.begin(), "page");
  const auto result = run(words);
  EXPECT_EQ(result.exitCode, 0) << result.errors;
  return result.output;
}

// What stands between the two tags of the data.
std::string dataText(const std::string& html) {
  const std::string front = R"(<script type="application/json" id="data">)";
  const auto from = html.find(front) + front.size();
  return html.substr(from, html.find("</script>", from) - from);
}

Json dataOf(const std::string& html) {
  return Json::parse(dataText(html));
}

TEST(PageCommand, GivesEveryValueWithItsLabelAndLink) {
  run({"add-person", "_local", "name=Zoë Lee", "phone:mobile=+46 70 1", "phone+:Boat=08 (0) 22",
       "email:home=a b+c@x.example", "company=Maps AB", "birthday=--12-03", "note=Two\nlines",
       "urls=www.x.example/?a=1"});
  run({"tag", "Zoë Lee", "--add", "sailing"});
  run({"add-person", "_local", "name=王小明", "address.city=Łódź"});
  run({"add-group", "_local", "Club"});
  run({"add-group", "_local", "Crew", "--under", "Club"});
  run({"group-add", "Crew", "Zoë Lee"});
  auto data = dataOf(page());
  EXPECT_TRUE(data["books"][0]["picture"].get<std::string>().starts_with("data:image/png;base64,"));
  data["books"][0].erase("picture");
  EXPECT_EQ(data["books"], Json::parse(R"([{"name":"On My Mac","groups":[0]}])"));
  EXPECT_EQ(data["groups"], Json::parse(R"([{"name":"Club","groups":[1],"persons":[]},
                                            {"name":"Crew","groups":[],"persons":[0]}])"));
  EXPECT_EQ(data["persons"].size(), 2U);
  EXPECT_EQ(data["persons"][0], Json::parse(R"({
      "name":"Zoë Lee","second":"Maps AB","isCompany":true,"birthday":"--12-03",
      "tags":["sailing"],
      "find":"Azoe lee\nAzoelee\nAzl\nDmaps ab\nS--12-03\nGtwo lines\nH+46701\nH08022\nEa b+c@x.example\nOwww.x.example/?a=1\n",
      "fields":[
        {"name":"Phone","values":[
          {"label":"Mobile","main":true,"text":"+46 70 1","link":"tel:+46701"},
          {"label":"Boat","text":"08 (0) 22","link":"tel:08022"}]},
        {"name":"Email","values":[
          {"label":"Home","main":true,"text":"a b+c@x.example","link":"mailto:a%20b%2Bc@x.example"}]},
        {"name":"Company","values":[{"text":"Maps AB"}]},
        {"name":"Birthday","values":[{"date":"--12-03"}]},
        {"name":"URL","values":[
          {"main":true,"text":"www.x.example/?a=1","link":"https://www.x.example/?a=1"}]},
        {"name":"Note","values":[{"text":"Two\nlines"}]}],
      "book":0,"letter":"Z"})"))
      << data["persons"][0].dump();
  EXPECT_EQ(data["persons"][1]["latin"], "WANG XIAO MING");
}

TEST(PageCommand, LinksAddressesToAMapWhereThatIsAskedFor) {
  run({"add-person", "_local", "name=Ann", "address.street=Main St 3", "address.city=Bern"});
  const auto addressIn = [](const std::string& html) {
    return dataOf(html)["persons"][0]["fields"][0]["values"][0].dump();
  };
  EXPECT_EQ(addressIn(page()), R"({"main":true,"text":"Main St 3, Bern"})");
  EXPECT_EQ(addressIn(page({"--maps"})),
            R"({"main":true,"text":"Main St 3, Bern",)"
            R"("map":"https://www.openstreetmap.org/search?query=Main%20St%203%2C%20Bern"})");
}

TEST(PageCommand, LetsNoContactOutOfItsData) {
  const std::string name = "</script><script>alert(1)</script><!--";
  run({"add-person", "_local", "name=" + name, "note=" + name, "urls=javascript:alert(1)",
       "urls+=data:text/html,x"});
  const auto html = page();
  EXPECT_EQ(dataText(html).find('<'), std::string::npos);
  EXPECT_EQ(html.find("<script>alert"), std::string::npos);
  const auto person = dataOf(html)["persons"][0];
  EXPECT_EQ(person["name"], name);
  EXPECT_EQ(dataText(html).find("\"link\""), std::string::npos);
}

// What is dialled otherwise than by its digits has no link.
TEST(PageCommand, LinksNumbersThatAreDialledAsTheyStand) {
  for (const auto& [number, link] :
       {std::pair<const char*, const char*>{"+49 (0)30 123-45/67", "tel:+49301234567"},
        {"0046 70 1", "tel:+46701"},
        {"+49 30 1234567 ext. 12", ""},
        {"+1 800 FLOWERS", ""},
        {"*21#", ""},
        {"+46 70 1,,123#", ""}}) {
    run({"add-person", "_local", "name=Ann", std::string("phone=") + number});
    const auto value = dataOf(page())["persons"][0]["fields"][0]["values"][0];
    EXPECT_EQ(value.value("link", ""), link) << number;
    run({"remove-person", "Ann"});
  }
}

// But for what contacts hold.
TEST(PageCommand, NamesNothingThatCouldBeFetched) {
  makeStore();
  const auto html = page();
  EXPECT_EQ(html.find("http:"), std::string::npos);
  EXPECT_EQ(html.find("https:"), std::string::npos);
  for (const auto* attribute : {"src=\"", "href=\"", "src='", "href='"}) {
    EXPECT_EQ(html.find(attribute), std::string::npos) << attribute;
  }
  EXPECT_EQ(html.find("@import"), std::string::npos);
  EXPECT_EQ(html.find("url("), std::string::npos);
  EXPECT_NE(html.find(R"(content="default-src 'none'; style-src 'unsafe-inline'; )"
                      R"(script-src 'unsafe-inline'; img-src data:; )"),
            std::string::npos);
  EXPECT_EQ(html.find('@' + std::string("data@")), std::string::npos);
}

TEST(PageCommand, MakesPicturesSmall) {
  run({"add-person", "_local", "name=Ann"});
  Pixels pixels;
  for (int i = 0; i < 600 * 400; ++i) pixels.insert(pixels.end(), {200, 40, 40, 255});
  const auto png = images::encodePng(Image(600, 400, pixels));
  const auto file = temporaryFile("ann.png", std::string(png->begin(), png->end()));
  ASSERT_EQ(run({"photo", "Ann", "--set", file.string()}).exitCode, 0);
  const auto picture = dataOf(page())["persons"][0]["picture"].get<std::string>();
  const std::string front = "data:image/jpeg;base64,";
  ASSERT_TRUE(picture.starts_with(front));
  const auto bytes = bytesOfBase64(picture.substr(front.size()));
  ASSERT_TRUE(bytes);
  EXPECT_EQ(images::imageSize(*bytes), (images::ImageSize{112, 112}));
}

TEST(PageCommand, ShowsOneBookAlone) {
  run({"accounts", "add", "Work"});
  run({"add-person", "_local", "name=Ann"});
  run({"add-group", "_local", "Friends"});
  run({"add-person", "Work", "name=Ben"});
  run({"add-group", "Work", "Makers"});
  const auto namesIn = [](const Json& list) {
    std::string names;
    for (const auto& each : list) names += each["name"].get<std::string>() + ";";
    return names;
  };
  const auto all = dataOf(page());
  EXPECT_EQ(namesIn(all["books"]) + namesIn(all["groups"]) + namesIn(all["persons"]),
            "On My Mac;Work;Friends;Makers;Ann;Ben;");
  EXPECT_EQ(all["persons"][1]["book"], 1);
  const auto work = dataOf(page({"--book", "Work"}));
  EXPECT_EQ(namesIn(work["books"]) + namesIn(work["groups"]) + namesIn(work["persons"]),
            "Work;Makers;Ben;");
  EXPECT_EQ(work["persons"][0]["book"], 0);
  EXPECT_EQ(run({"page", "--book", "Nowhere"}).exitCode, 4);
}

TEST(PageCommand, WritesAFileWholeAndForItsUserAlone) {
  run({"add-person", "_local", "name=Ann"});
  const auto file = temporaryPath("page.html");
  const auto written = run({"page", "-o", file});
  EXPECT_EQ(written.exitCode, 0);
  EXPECT_EQ(written.output, "");
  EXPECT_EQ(written.errors, "oxcontacts: wrote a page of 1 person to " + file.string() + "\n");
  EXPECT_EQ(fileBytes(file), page());
  struct stat status {};
  ASSERT_EQ(::stat(file.c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777U, 0600U);
  // A folder that takes no file leaves what was there, and nothing beside it.
  const auto missing = temporaryPath("nowhere") / "page.html";
  EXPECT_EQ(run({"page", "-o", missing}).exitCode, 1);
  EXPECT_FALSE(std::filesystem::exists(missing.parent_path()));
  EXPECT_EQ(run({"page", "-o", file, "--open"}).exitCode, 2);
}

TEST(PageCommand, IsNothingForATerminal) {
  run({"add-person", "_local", "name=Ann"});
  const auto result = runOnATerminal({"page"}, {1, 2});
  EXPECT_EQ(result.exitCode, 2);
  EXPECT_EQ(result.output,
            "oxcontacts: a page is nothing to read on a terminal; -o FILE writes it to a file, "
            "--open shows it in a browser\n");
}

TEST(PageCommand, MakesNoStore) {
  const auto store = temporaryPath("never.db");
  const auto file = temporaryPath("page.html");
  const auto result = run({"--store", store, "page", "-o", file});
  EXPECT_EQ(result.exitCode, 1);
  EXPECT_EQ(result.errors, "oxcontacts: there is no contact store at " + store.string() +
                               "; `import`, `accounts add` and `add-person` make one\n");
  EXPECT_FALSE(std::filesystem::exists(store));
  EXPECT_FALSE(std::filesystem::exists(file));
}

// A browser of the test's own: it says which file it was given, with its mode.
TEST(PageCommand, OpensAPrivateFile) {
  run({"add-person", "_local", "name=Ann"});
  const auto folder = temporaryPath("bin");
  std::filesystem::create_directories(folder);
  const auto browser = temporaryFile("bin/xdg-open", "#!/bin/sh\nstat -c '%a %n' \"$1\"\n");
  std::filesystem::permissions(browser, std::filesystem::perms::owner_all);
  const auto runtime = temporaryPath("runtime");
  std::filesystem::create_directories(runtime);
  const auto front = "XDG_RUNTIME_DIR=" + runtime.string() + " PATH=" + folder.string();
  const auto opened = runShell(front + ":$PATH \"$OX\" page --open");
  EXPECT_EQ(opened.exitCode, 0) << opened.errors;
  ASSERT_TRUE(opened.output.starts_with("600 " + runtime.string() + "/oxcontacts-"))
      << opened.output;
  ASSERT_TRUE(opened.output.ends_with(".html\n"));
  const auto file = opened.output.substr(4, opened.output.size() - 5);
  EXPECT_EQ(fileBytes(file), page());
  EXPECT_EQ(runShell(front + ":$PATH \"$OX\" page --book Nowhere --open").exitCode, 4);
  const auto without = runShell(front + "/none \"$OX\" page --open");
  EXPECT_EQ(without.exitCode, 1);
  EXPECT_NE(without.errors.find("oxcontacts: xdg-open could not open the page, which is " +
                                runtime.string() + "/oxcontacts-"),
            std::string::npos)
      << without.errors;
  const auto pages = std::distance(std::filesystem::directory_iterator(runtime), {});
  EXPECT_EQ(pages, 2) << "what could not be written leaves nothing";
}

}  // namespace
}  // namespace ox::program_tests
