#pragma once

#include <array>
#include <string_view>

// How commands are used, for their man pages.

namespace ox::program {

struct ManExample {
  std::string_view command;  // whose page it is on
  std::string_view what;
  std::string_view line;  // without the program's name
};

inline constexpr std::array kManExamples = {
    ManExample{"persons", "Everybody with the tag golf, as a table of these columns:",
               "persons --tag golf --columns name,birthday,phones"},
    ManExample{"find",
               "Who lives in Oslo and is called Ann, or something like it:", "find ann city:oslo"},
    ManExample{"show", "A person as she was at the end of a day:", "show ann --at 2026-12-31"},
    ManExample{"birthdays", "What comes round in the next month:", "birthdays --days 31"},
    ManExample{"phones", "The telephone numbers of a group:", "phones --group Family"},
    ManExample{"addresses", "The postal addresses of whoever is called Lee:", "addresses lee"},
    ManExample{"mail", "What a mail program asks for:", "mail --bare ann"},
    ManExample{"groups", "The groups of one book:", R"(groups --book "On My Mac")"},
    ManExample{"books", "The books, for a program:", "books --json"},
    ManExample{"accounts",
               "A new account, and one that goes with everything in it:", "accounts add Work"},
    ManExample{"accounts", "", "accounts remove Work --force"},
    ManExample{
        "accounts", "Accounts of a server, and one of a folder of vCards:",
        R"(accounts add Team --url dav.example.org --user ann --password-command "pass dav")"},
    ManExample{"accounts", "", "accounts add Khard --folder ~/.contacts"},
    ManExample{"config",
               "What counts with another configuration file:", "config --config other.yaml"},
    ManExample{"duplicates",
               "Who may be one person, in one book:", R"(duplicates --book "On My Mac")"},
    ManExample{"edit", "A person in the editor:", R"(edit "Ann Lee")"},
    ManExample{"add-person", "A new person:",
               R"(add-person "On My Mac" name="Ann Lee" phone:home="+47 22 12 34 56")"},
    ManExample{"set", "One more number under a label, and no note:",
               R"(set "Ann Lee" phone+:Boat="+47 1" note=)"},
    ManExample{"remove-person", "A person is removed, and is back:", R"(remove-person "Ann Lee")"},
    ManExample{"remove-person", "", "undo"},
    ManExample{"merge", "What a merge would do:", R"(merge "Ann Lee" "Ann M. Lee" --dry-run)"},
    ManExample{"move", "A person goes into another book:", R"(move "Ann Lee" --to Work)"},
    ManExample{"copy", "A person is in another book as well:", R"(copy "Ann Lee" --to Work)"},
    ManExample{"tag", "One tag more and one less:", R"(tag "Ann Lee" --add golf --remove work)"},
    ManExample{"photo", "A picture from a file:", R"(photo "Ann Lee" --set ann.jpg)"},
    ManExample{"add-group", "A group in a group:", R"(add-group "On My Mac" Kids --under Family)"},
    ManExample{"rename-group", "Another name for a group:", "rename-group Kids Children"},
    ManExample{"remove-group",
               "A group goes, and those below it stay:", "remove-group Family --alone"},
    ManExample{"group-add", "Two persons become members:", R"(group-add Family "Ann Lee" Bob)"},
    ManExample{"group-remove", "A person leaves a group and those below it:",
               "group-remove Family Bob --recursive"},
    ManExample{"import",
               "What would be read of a file, and then its cards:", "import --dry-run cards.vcf"},
    ManExample{"import", "", "import cards.vcf --into Work --report report.json"},
    ManExample{"export", "Everything as vCards 4.0, and one person for a table:",
               "export --format vcard4 -o all.vcf"},
    ManExample{"export", "", R"(export "Ann Lee" --format csv)"},
    ManExample{"page", "Everybody on a page for a browser:", "page -o contacts.html"},
    ManExample{"qr", "A card for a telephone's camera:", R"(qr "Ann Lee")"},
    ManExample{"sync", "What a run would do, and then the run:", "sync --dry-run"},
    ManExample{"sync", "", "sync"},
    ManExample{"sync",
               "What both sides made another of, and ours is to stand:", "sync --conflicts"},
    ManExample{"sync", "", R"(sync --resolve "Ann Lee" mine)"},
    ManExample{"undo", "The last command is taken back, then the one of that number:", "undo"},
    ManExample{"undo", "", "undo 12"},
    ManExample{"redo", "And what was taken back is done again:", "redo"},
    ManExample{"log", "What was done to one person:", R"(log "Ann Lee")"},
    ManExample{"trash", "The last ten that were removed:", "trash --limit 10"},
    ManExample{"forget", "A person is erased for good:", R"(forget "Ann Lee")"},
    ManExample{"backup", "One book, and the whole store:", R"(backup "On My Mac" mine.book)"},
    ManExample{"backup", "", "backup --all store.db"},
    ManExample{"restore", "A book as it was:", R"(restore "On My Mac" mine.book)"},
    ManExample{"copies", "The copies that are kept, and the store as one of them:", "copies"},
    ManExample{"copies", "", "copies restore 20261231T235959.000Z-restore"},
    ManExample{"check", "What can be mended is mended:", "check --repair"},
    ManExample{"recover", "A new store of what a damaged one still holds:",
               "recover damaged.db -o recovered.db"},
    ManExample{"help", "What a command below another one takes:", "help accounts add"},
    ManExample{"completion", "For the shell's own start file:", "completion fish"},
};

}  // namespace ox::program
