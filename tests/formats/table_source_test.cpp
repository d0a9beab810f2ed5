#include "ox/formats/table/table_source.hpp"

#include <gtest/gtest.h>

#include "tests/formats/person_text.hpp"

namespace ox::formats_tests {
namespace {

using formats::TableSource;

std::string read(std::string_view bytes) {
  vcard::MemorySource source(bytes);
  TableSource table(source);
  return readAll(table);
}

std::string failureOf(std::string_view bytes) {
  try {
    return "no failure: " + read(bytes);
  } catch (const formats::FormatError& error) {
    return error.what();
  }
}

// What becomes of the columns, with "; " between them.
std::string columnsOf(std::string_view header) {
  vcard::MemorySource source(header);
  TableSource table(source);
  const auto& columns = table.columns();
  std::string text;
  for (const auto& column : columns.all()) {
    text += (text.empty() ? "" : "; ") + columns.whatBecomesOf(column);
  }
  return text;
}

TEST(TableSource, ReadsGooglesOlderTable) {
  EXPECT_EQ(
      read("Name,Given Name,Additional Name,Family Name,Given Name Yomi,Name Prefix,Birthday,Notes,"
           "Group Membership,E-mail 1 - Type,E-mail 1 - Value,E-mail 2 - Type,E-mail 2 - Value,"
           "Phone 1 - Type,Phone 1 - Value,Address 1 - Type,Address 1 - Formatted,"
           "Address 1 - Street,Address 1 - City,Address 1 - PO Box,Address 1 - Region,"
           "Address 1 - Postal Code,Address 1 - Country,Address 1 - Extended Address,"
           "Organization 1 - Type,Organization 1 - Name,Organization 1 - Title,"
           "Relation 1 - Type,Relation 1 - Value,Website 1 - Type,Website 1 - Value,"
           "IM 1 - Type,IM 1 - Service,IM 1 - Value,Event 1 - Type,Event 1 - Value\n"
           "Dr. Ann Lee,Ann,,Lee,Anne,Dr.,--05-17,\"one\ntwo\",* myContacts ::: Friends ::: * "
           "starred,* Home,a@x.org ::: b@x.org,Boat,c@x.org,Mobile,+1 1,Work,\"1 Main\nTown\","
           "1 Main,Town,7,CA,123,USA,,,ACME,Boss,Spouse,Bob,Profile,http://x.org,Other,Skype,ann,"
           "Anniversary,2000-01-02\n"),
      "2: N:Lee;Ann;;Dr.; | FN:Dr. Ann Lee | X-PHONETIC-FIRST-NAME:Anne | ORG:ACME | TITLE:Boss | "
      "BDAY:--0517 | TEL;TYPE=cell:+1 1 | EMAIL;TYPE=home;PREF=1:a@x.org | "
      "EMAIL;TYPE=home:b@x.org | item1.EMAIL:c@x.org | item1.X-ABLabel:Boat | "
      "item2.URL:http://x.org | item2.X-ABLabel:Profile | "
      "item3.IMPP;X-SERVICE-TYPE=Skype:skype:ann | item3.X-ABLabel:_$!<Other>!$_ | "
      "ADR;TYPE=work:7;;1 Main;Town;CA;123;USA | RELATED;VALUE=text;TYPE=spouse:Bob | "
      "ANNIVERSARY:20000102 | NOTE:one\\ntwo | CATEGORIES:Friends,starred\n");
}

TEST(TableSource, ReadsGooglesNewerTable) {
  EXPECT_EQ(read("First Name,Last Name,Phonetic Last Name,Name Suffix,Nickname,File As,"
                 "Organization Name,Organization Title,Organization Department,Birthday,Notes,"
                 "Labels,E-mail 1 - Label,E-mail 1 - Value,Phone 1 - Label,Phone 1 - Value,"
                 "Address 1 - Label,Address 1 - Formatted,Address 1 - Street,"
                 "Custom Field 1 - Label,Custom Field 1 - Value\n"
                 "Ann,Lee,Li,MD,Annie,,ACME,Boss,Sales,1990-05-17,,* myContacts,* Work,a@x.org,"
                 "Work Fax,1 ::: 2,Home,\"1 Main\nTown\",,Shoe,42\n"),
            "2? column \"Custom Field 1 - Label\": not understood, kept as lines in the note\n"
            "2? column \"Custom Field 1 - Value\": not understood, kept as lines in the note\n"
            "2: N:Lee;Ann;;;MD | FN:Ann Lee MD | NICKNAME:Annie | X-PHONETIC-LAST-NAME:Li | "
            "ORG:ACME;Sales | TITLE:Boss | BDAY:19900517 | TEL;TYPE=work;TYPE=fax:1 | "
            "TEL;TYPE=work;TYPE=fax:2 | EMAIL;TYPE=work;PREF=1:a@x.org | "
            "ADR;TYPE=home:;;1 Main\\nTown;;;; | "
            "NOTE:Custom Field 1 - Label: Shoe\\nCustom Field 1 - Value: 42\n");
}

TEST(TableSource, ReadsOutlooksTable) {
  EXPECT_EQ(
      read("\"Title\";\"First Name\";\"Middle Name\";\"Last Name\";\"Company\";\"Job Title\";"
           "\"Business Street\";\"Business Street 2\";\"Business City\";"
           "\"Business Country/Region\";\"Home City\";\"Business Phone\";\"Business Phone 2\";"
           "\"Home Fax\";\"Car Phone\";\"Anniversary\";\"Birthday\";\"Categories\";"
           "\"E-mail Address\";\"E-mail Type\";\"E-mail 2 Address\";\"Manager's Name\";\"Hobby\";"
           "\"Priority\";\"Web Page\"\r\n"
           "\"Dr.\";\"Ann\";\"\";\"Lee\";\"ACME\";\"Boss\";\"1 Main\";\"Floor 2\";\"Town\";"
           "\"USA\";\"Home\";\"1\";\"2\";\"3\";\"4\";\"0/0/00\";\"17.5.1990\";\"red;blue\";"
           "\"a@x.org\";\"SMTP\";\"b@x.org\";\"Eve\";\"Chess\";\"Normal\";\"http://x.org\"\r\n"),
      "2? column \"E-mail Type\": says nothing of a person, left out\n"
      "2? column \"Hobby\": not understood, kept as lines in the note\n"
      "2? column \"Priority\": says nothing of a person, left out\n"
      "2: N:Lee;Ann;;Dr.; | FN:Dr. Ann Lee | ORG:ACME | TITLE:Boss | BDAY:19900517 | "
      "TEL;TYPE=work:1 | TEL;TYPE=work:2 | TEL;TYPE=home;TYPE=fax:3 | item1.TEL:4 | "
      "item1.X-ABLabel:Car | EMAIL:a@x.org | EMAIL:b@x.org | URL:http://x.org | "
      "ADR;TYPE=work:;;1 Main\\nFloor 2;Town;;;USA | ADR;TYPE=home:;;;Home;;; | "
      "item2.RELATED;VALUE=text:Eve | item2.X-ABLabel:_$!<Manager>!$_ | NOTE:Hobby: Chess | "
      "CATEGORIES:red,blue\n");
}

TEST(TableSource, ReadsWhatPeopleNameTheirColumns) {
  EXPECT_EQ(read("Name\tE-Mail\tMOBILE\tTitle\nAnn Lee\ta@x.org\t1\tBoss\n"),
            "2: N:Lee;Ann;;; | FN:Ann Lee | TITLE:Boss | TEL;TYPE=cell:1 | EMAIL:a@x.org\n");
}

TEST(TableSource, TakesALineBreakForNoUid) {
  EXPECT_EQ(read("Full Name,UID\nAnn,\"\r\"\n"), "2: N:;Ann;;; | FN:Ann\n");
}

TEST(TableSource, TakesNoControlCharactersForPartsOfALabel) {
  EXPECT_EQ(read("Full Name,Email 1 - Label,Email 1 - Value,Email 2 - Label,Email 2 - Value\n"
                 "Ann,\x13 Home,a@x.org,*\x17 Work\x01 ,b@x.org\n"),
            "2: N:;Ann;;; | FN:Ann | EMAIL;TYPE=home:a@x.org | EMAIL;TYPE=work;PREF=1:b@x.org\n");
}

TEST(TableSource, TellsWhatBecomesOfColumns) {
  EXPECT_EQ(columnsOf("First Name,Title,Job Title,Phone 1 - Label,Phone 1 - Value,Home Street,"
                      "Business Fax,Message 2 - User,Tags,Priority,Shoe size\n"),
            "first name; prefix; job title; phone label; phone; address street (Home); "
            "phone (Work Fax); message user; tags; left out; unknown, a line in the note");
}

TEST(TableSource, TellsOfRowsThatAreNotAsWideAsTheTable) {
  EXPECT_EQ(read("First Name,Last Name,Note\nAnn\nBob,Lee,hello,more,and more\nEve,Lee,\n"),
            "2: N:;Ann;;; | FN:Ann\n"
            "  2! 1 cell in a table of 3 columns\n"
            "3: N:Lee;Bob;;; | FN:Bob Lee | NOTE:hello\\nmore\\nand more\n"
            "  3! 5 cells in a table of 3 columns, the last ones are in the note\n"
            "4: N:Lee;Eve;;; | FN:Eve Lee\n");
}

TEST(TableSource, AccountsForEveryRow) {
  EXPECT_EQ(read("First Name,Priority,Birthday\n\n,Normal,\nAnn,,someday\n\"Bob\" B,,\n"
                 "Eve,,\"1990\n"),
            "3? column \"Priority\": says nothing of a person, left out\n"
            "3# tells nothing of a person\n"
            "4: N:;Ann;;; | FN:Ann | NOTE:Birthday: someday\n"
            "  4! Birthday is no readable date, kept in the note\n"
            "5: N:;Bob B;;; | FN:Bob B\n"
            "  5! text behind a closing quote\n"
            "6# the file ends within a quoted cell, which begins in this row\n");
}

TEST(TableSource, RefusesWhatIsNoTable) {
  EXPECT_EQ(failureOf(""), "is empty");
  EXPECT_EQ(failureOf("\n \n"), "is empty");
  EXPECT_EQ(failureOf("Ann,Lee,a@x.org\nBob,Lee,b@x.org\n"),
            "has no first line that names columns of contacts");
  EXPECT_EQ(failureOf("Priority,Notes\nNormal,x\n"),
            "has no first line that names columns of contacts");
  EXPECT_EQ(failureOf(std::string_view("\x89PNG\r\n\x1a\n\0\0\0\rIHDR", 16)),
            "is no table of text");
  EXPECT_EQ(failureOf("\"First Name,Last Name\nAnn,Lee\n"), "is no table of text");
}

}  // namespace
}  // namespace ox::formats_tests
