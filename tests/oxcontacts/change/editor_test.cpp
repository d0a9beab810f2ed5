// edit: a person in somebody's editor, which is a script here.
#include <filesystem>
#include <gtest/gtest.h>

#include "oxcontacts/context.hpp"
#include "oxcontacts/edit/assignment.hpp"
#include "oxcontacts/edit/person_yaml.hpp"
#include "tests/oxcontacts/on_a_terminal.hpp"
#include "tests/oxcontacts/program.hpp"
#include "tests/support/store_environment.hpp"

namespace ox::program_tests {
namespace {

using support::temporaryFile;
using support::temporaryPath;

void fillStore() {
  const auto file = temporaryFile(
      "cards.vcf",
      card({"UID:1", "N:Lee;Ann;;;", "FN:Ann Lee", "TEL;TYPE=CELL,pref:+1 555 1",
            "TEL;TYPE=HOME;X-KEPT=yes:+1 555 2", "item1.ADR;TYPE=HOME:;;Street 1;Town;;1;Norge",
            "item1.X-ABADR:no", "NOTE:two\\nlines", "ORG:Acme", "X-FOO:bar"}));
  ASSERT_EQ(run({"import", file}).exitCode, 0);
}

// Edits with sed, as somebody would by hand.
ProcessResult edit(const std::string& sed, const std::string& person = "Ann Lee") {
  const auto script = temporaryFile("script.sed", sed);
  return runShell("export TMPDIR=" + temporaryPath(".").string() + " EDITOR=\"sed -i -f " +
                  script.string() + "\" VISUAL=; $OX edit '" + person + "'");
}

std::string cardOfAnn() {
  auto text = run({"export", "Ann Lee"}).output;
  std::erase(text, '\r');
  return text;
}

bool holds(const std::string& text, const std::string& part) {
  return text.find(part) != std::string::npos;
}

TEST(EditCommand, ChangesWhatWasEditedAndNothingElse) {
  fillStore();
  const auto before = cardOfAnn();
  const auto result = edit("s/+1 555 1/+1 555 9/\ns/^nickname:/nickname: Annie/\n");
  EXPECT_EQ(result.exitCode, 0) << result.errors;
  EXPECT_TRUE(result.errors.starts_with("oxcontacts: changed Ann Lee (")) << result.errors;
  auto expected = before;
  expected.replace(expected.find("+1 555 1\n"), 8, "+1 555 9");
  const auto after = cardOfAnn();
  EXPECT_TRUE(holds(after, "NICKNAME:Annie\n")) << after;
  auto withoutNickname = after;
  withoutNickname.erase(withoutNickname.find("NICKNAME:Annie\n"), 15);
  EXPECT_EQ(withoutNickname, expected);
  EXPECT_EQ(run({"undo"}).exitCode, 0);
  EXPECT_EQ(cardOfAnn(), before);
}

TEST(EditCommand, AddsTakesAwayAndMovesEntries) {
  fillStore();
  ASSERT_EQ(edit("/Mobile: +1 555 1/{\ns/.*/  - Boat: 0815\\n  - \"\": 4711/\n}\n").exitCode, 0);
  const auto text = cardOfAnn();
  EXPECT_TRUE(holds(text, "item1.TEL;TYPE=pref:0815\nitem1.X-ABLabel:Boat\nTEL:4711\n")) << text;
  EXPECT_TRUE(holds(text, "TEL;TYPE=HOME;X-KEPT=yes:+1 555 2\n")) << text;
  EXPECT_FALSE(holds(text, "+1 555 1")) << text;
}

TEST(EditCommand, KeepsWhatAnAddressHoldsBesideItsFields) {
  fillStore();
  ASSERT_EQ(edit("s/street: .*/street: Street 2/\n").exitCode, 0);
  EXPECT_TRUE(
      holds(cardOfAnn(), "item1.ADR;TYPE=HOME:;;Street 2;Town;;1;Norge\nitem1.X-ABADR:no\n"))
      << cardOfAnn();
  ASSERT_EQ(edit("s/country: .*/country: Sverige/\n").exitCode, 0);
  EXPECT_FALSE(holds(cardOfAnn(), "X-ABADR")) << cardOfAnn();
  ASSERT_EQ(edit("/^address:/,/country:/d\n").exitCode, 0);
  EXPECT_FALSE(holds(cardOfAnn(), "ADR")) << cardOfAnn();
}

TEST(EditCommand, TakesTheTextOfAnEnvelopeFromAnAddressThatIsAnother) {
  const auto file =
      temporaryFile("label.vcf", card({"N:Lee;Ann;;;", "FN:Ann Lee", "ADR;TYPE=HOME:;;S 1;Oslo;;1;",
                                       "LABEL;TYPE=HOME:To Ann\\nS 1"}));
  ASSERT_EQ(run({"import", file}).exitCode, 0);
  ASSERT_EQ(edit("s/^nickname:/nickname: Annie/").exitCode, 0);
  EXPECT_TRUE(holds(cardOfAnn(), "LABEL;TYPE=HOME:To Ann\\nS 1\n")) << cardOfAnn();
  ASSERT_EQ(edit("s/city: .*/city: Bergen/").exitCode, 0);
  EXPECT_FALSE(holds(cardOfAnn(), "LABEL")) << cardOfAnn();
  ASSERT_EQ(run({"undo"}).exitCode, 0);
  ASSERT_EQ(run({"set", "Ann Lee", "address.zip=2"}).exitCode, 0);
  EXPECT_FALSE(holds(cardOfAnn(), "LABEL")) << cardOfAnn();
}

TEST(EditCommand, ChangesNothingWithoutAnEdit) {
  fillStore();
  const auto before = cardOfAnn();
  for (const auto* sed : {"", "1,$d\n", "s/^company: Acme/company:   \"Acme\"/\n"}) {
    const auto result = edit(sed);
    EXPECT_EQ(result.exitCode, 0) << result.errors;
    EXPECT_EQ(result.errors, "oxcontacts: nothing was changed\n") << sed;
    EXPECT_EQ(cardOfAnn(), before) << sed;
  }
}

TEST(EditCommand, TakesCommentsAloneForNothing) {
  fillStore();
  const auto before = cardOfAnn();
  EXPECT_EQ(edit("/^[^#]/d").errors, "oxcontacts: nothing was changed\n");
  EXPECT_EQ(edit("s/^/# /").errors, "oxcontacts: nothing was changed\n");
  EXPECT_EQ(cardOfAnn(), before);
}

TEST(EditCommand, TellsWhatOfAnotherProgramItReplaces) {
  fillStore();
  const auto editBeside = [](const std::string& other, const std::string& sed) {
    const auto script =
        temporaryFile("editor.sh", std::string("#!/bin/sh\n") + OX_PROGRAM + " set 'Ann Lee' " +
                                       other + "\nsed -i '" + sed + "' \"$1\"\n");
    return runShell("EDITOR=\"sh " + script.string() + "\" VISUAL= $OX edit 'Ann Lee'").errors;
  };
  const auto single = editBeside("company=Theirs", "s/^company:.*/company: Mine/");
  EXPECT_TRUE(holds(single,
                    "another program had written company \"Theirs\" meanwhile, which yours "
                    "replaces\n"))
      << single;
  EXPECT_TRUE(holds(cardOfAnn(), "ORG:Mine\n"));
  const auto gone = editBeside("phone:mobile=", "s/Mobile: .*/Mobile: 999/");
  EXPECT_TRUE(holds(cardOfAnn(), "TEL;TYPE=CELL:999\n") ||
              holds(cardOfAnn(), "TEL;TYPE=CELL;TYPE=pref:999\n"))
      << cardOfAnn();
}

TEST(EditCommand, KeepsTheTextOfSomebodyWhoIsRemovedMeanwhile) {
  fillStore();
  const auto script = temporaryFile("editor.sh", std::string("#!/bin/sh\n") + OX_PROGRAM +
                                                     " remove-person 'Ann Lee'\n" +
                                                     "sed -i 's/^company:.*/company: Mine/' $1\n");
  const auto result = runShell("EDITOR=\"sh " + script.string() + "\" VISUAL= $OX edit 'Ann Lee'");
  EXPECT_EQ(result.exitCode, 4);
  EXPECT_TRUE(holds(result.errors, " was removed meanwhile; your text is kept in "))
      << result.errors;
}

TEST(EditCommand, LeavesAnAccountThatIsKnownByItsUrlAlone) {
  const auto file = temporaryFile(
      "urls.vcf", card({"N:Lee;Ann;;;", "FN:Ann Lee", "X-SOCIALPROFILE:https://a.example/1",
                        "X-SOCIALPROFILE:https://a.example/2",
                        "X-SOCIALPROFILE;TYPE=twitter;"
                        "X-USER=ann:https://t.example/ann"}));
  ASSERT_EQ(run({"import", file}).exitCode, 0);
  ASSERT_EQ(edit("/twitter:ann/d").exitCode, 0);
  EXPECT_TRUE(holds(cardOfAnn(), "https://a.example/1\n")) << cardOfAnn();
  EXPECT_TRUE(holds(cardOfAnn(), "https://a.example/2\n")) << cardOfAnn();
  EXPECT_FALSE(holds(cardOfAnn(), "t.example")) << cardOfAnn();
}

TEST(EditCommand, KeepsARefusedText) {
  fillStore();
  struct Row {
    const char* sed;
    const char* reason;
  };
  for (const auto& row :
       std::vector<Row>{{"s/^birthday:/birthday: tomorrow/", "\"tomorrow\" is no date"},
                        {"s/^note:/notes:/", "there is no property \"notes\""},
                        {"s/street:/road:/",
                         "there is no part \"road\"; there are street, city, state, zip, "
                         "country"},
                        {"s/^phone:/phone: 1/", "line 10: "},
                        {"s/^email:/email: 1/", "a list is expected here"},
                        {"s/^company:/company: [/", "line "},
                        {"$a\\\nnote: again", "\"note\" stands here a second time"},
                        {"s/^company:/---\\ncompany:/", "a line of --- or ... ends the person"}}) {
    const auto before = cardOfAnn();
    const auto result = edit(row.sed);
    EXPECT_EQ(result.exitCode, 2) << row.sed;
    EXPECT_TRUE(holds(result.errors, row.reason)) << result.errors;
    const auto at = result.errors.find("your text is kept in ");
    ASSERT_NE(at, std::string::npos) << result.errors;
    auto kept = result.errors.substr(at + 21);
    kept.pop_back();
    EXPECT_TRUE(std::filesystem::exists(kept)) << kept;
    EXPECT_EQ(std::filesystem::status(kept).permissions(),
              std::filesystem::perms::owner_read | std::filesystem::perms::owner_write);
    EXPECT_EQ(cardOfAnn(), before);
  }
  const auto failed = runShell("EDITOR=false VISUAL= $OX edit 'Ann Lee'");
  EXPECT_EQ(failed.exitCode, 1);
  EXPECT_EQ(failed.errors, "oxcontacts: the editor ended with an error; nothing was changed\n");
}

TEST(EditCommand, LeavesWhatAnotherProgramDidMeanwhile) {
  fillStore();
  const auto script = temporaryFile(
      "editor.sh", std::string("#!/bin/sh\n") + OX_PROGRAM +
                       " set 'Ann Lee' jobtitle=Boss phone+:work=777\n"
                       "sed -i 's/+1 555 1/+1 555 9/; s/^nickname:/nickname: Annie/' \"$1\"\n");
  const auto result = runShell("EDITOR=\"sh " + script.string() + "\" VISUAL= $OX edit 'Ann Lee'");
  EXPECT_EQ(result.exitCode, 0) << result.errors;
  const auto text = cardOfAnn();
  EXPECT_TRUE(holds(text, "TITLE:Boss\n")) << text;
  EXPECT_TRUE(holds(text, "NICKNAME:Annie\n")) << text;
  EXPECT_TRUE(holds(text, ":+1 555 9\n")) << text;
  EXPECT_TRUE(holds(text, "TEL;TYPE=WORK:777\n")) << text;
}

TEST(PersonText, IsReadBackAsItWasWritten) {
  using program::PersonText;
  for (const std::string text : {"plain",
                                 "null",
                                 "~",
                                 "true",
                                 "1.0",
                                 "- x",
                                 "# no",
                                 "a: b",
                                 "a #b",
                                 " blank ",
                                 "'",
                                 "\"",
                                 "\\",
                                 "two\nlines",
                                 "\nleading",
                                 "trailing\n",
                                 "  indented\nlines",
                                 "a\n\n  b\n#c\n- d",
                                 "tab\there",
                                 "\x01",
                                 "[x]",
                                 "{y}",
                                 "&a",
                                 "*a",
                                 "!t",
                                 "%d",
                                 "@x",
                                 "`x`",
                                 "王小明",
                                 "a\u2028b",
                                 "\uFEFFx",
                                 "x:",
                                 "?",
                                 "|",
                                 ">",
                                 "é\nü",
                                 "key: value\nother: value",
                                 "---",
                                 "...",
                                 "\r\n",
                                 "\u0085"}) {
    PersonText written;
    for (const auto& property : program::assignableProperties()) {
      const auto name = program::shortNameOf(*property);
      if (name == "note" || name == "company") {
        written.push_back({property, {{0, "", {{"", text}}}}});
      } else if (name == "phone") {
        written.push_back({property, {{0, text, {{"", text}}}, {0, "", {{"", text}}}}});
      } else if (name == "address") {
        written.push_back({property, {{0, text, {{"street", text}, {"zip", text}}}}});
      }
    }
    ASSERT_EQ(written.size(), 4U);
    const auto yaml = program::yamlOf(written);
    const auto read = program::readYaml(yaml);
    ASSERT_EQ(read.size(), written.size()) << yaml;
    for (std::size_t i = 0; i < read.size(); ++i) {
      EXPECT_EQ(read[i].property, written[i].property);
      ASSERT_EQ(read[i].entries.size(), written[i].entries.size()) << yaml;
      for (std::size_t k = 0; k < read[i].entries.size(); ++k) {
        EXPECT_EQ(read[i].entries[k].label, written[i].entries[k].label) << yaml;
        EXPECT_EQ(read[i].entries[k].parts, written[i].entries[k].parts) << yaml;
      }
    }
  }
}

TEST(EditCommand, AsksOnATerminalForAnotherTry) {
  fillStore();
  const auto script =
      temporaryFile("editor.sh",
                    "if grep -q tomorrow \"$1\"; then sed -i 's/tomorrow/1990-05-17/' \"$1\"; else "
                    "sed -i 's/^birthday:/birthday: tomorrow/' \"$1\"; fi\n");
  ::setenv("EDITOR", ("sh " + script.string()).c_str(), 1);
  ::unsetenv("VISUAL");
  const auto result =
      runOnATerminal({"edit", "Ann Lee"}, {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}, "y\n");
  EXPECT_EQ(result.exitCode, 0) << result.output;
  EXPECT_TRUE(holds(result.output, "Edit it again? [Y/n]")) << result.output;
  EXPECT_TRUE(holds(cardOfAnn(), "BDAY:1990-05-17\n"));
}

}  // namespace
}  // namespace ox::program_tests
