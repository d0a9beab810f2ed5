#include <gtest/gtest.h>

#include "ox/formats/ldif/directory_source.hpp"
#include "ox/formats/ldif/distinguished_name.hpp"
#include "ox/formats/ldif/ldif_writer.hpp"
#include "tests/formats/card_lines.hpp"
#include "tests/formats/person_text.hpp"

namespace ox::formats_tests {
namespace {

using formats::DirectorySource;
using formats::WrittenCard;

std::string read(std::string_view bytes) {
  vcard::MemorySource source(bytes);
  DirectorySource directory(source);
  return readAll(directory);
}

std::string entryOf(std::initializer_list<std::string> lines) {
  return formats::ldifOf(formats::fieldsOf(WrittenCard(cardOf(lines))));
}

const std::string kClasses =
    "objectClass: top\nobjectClass: person\nobjectClass: organizationalPerson\n"
    "objectClass: inetOrgPerson\nobjectClass: mozillaAbPersonAlpha\n";

TEST(Ldif, WritesAPersonAsAnEntry) {
  EXPECT_EQ(
      entryOf({"N:Lee;Ann;;Dr.;",
               "FN:Dr. Ann Lee",
               "UID:x-ox-uid:a%2C%20b",
               "NICKNAME:Annie",
               "ORG:ACME;Sales",
               "TITLE:Boss",
               "BDAY:19900507",
               "TEL;TYPE=work:1",
               "TEL;TYPE=home:2",
               "TEL;TYPE=cell:3",
               "TEL;TYPE=work;TYPE=fax:4",
               "TEL;TYPE=pager:5",
               "EMAIL:a@x.org",
               "EMAIL:b@x.org",
               "EMAIL:c@x.org",
               "URL:http://x.org",
               "URL;TYPE=home:http://h.org",
               "ADR;TYPE=home:;;1 Main;Town;CA;123;USA",
               "item1.ADR;TYPE=work:7;;2 Main;;;;France",
               "item1.X-ABADR:fr",
               "NOTE:one\\ntwo",
               "PHOTO:data:image/jpeg;base64,/9j/4A=="}),
      "\ndn: uid=a\\,\\ b\n" + kClasses +
          "cn: Dr. Ann Lee\nsn: Lee\ngivenName: Ann\nmozillaNickname: Annie\no: ACME\nou: Sales\n"
          "title: Boss\ndescription:: b25lCnR3bw==\nmail: a@x.org\nmozillaSecondEmail: b@x.org\n"
          "mail: c@x.org\ntelephoneNumber: 1\nhomePhone: 2\nmobile: 3\n"
          "facsimileTelephoneNumber: 4\npager: 5\nlabeledURI: http://x.org\n"
          "mozillaHomeUrl: http://h.org\nmozillaHomeStreet: 1 Main\nmozillaHomeLocalityName: Town\n"
          "mozillaHomeState: CA\nmozillaHomePostalCode: 123\nmozillaHomeCountryName: USA\n"
          "street: 2 Main\npostOfficeBox: 7\nco: France\nc: fr\nbirthyear: 1990\nbirthmonth: 5\n"
          "birthday: 7\njpegPhoto:: /9j/4A==\n");
}

TEST(Ldif, WritesWhatIsNoPlainTextAsBase64) {
  EXPECT_EQ(entryOf({"N:Zoë;;;;", "FN:Zoë", "UID:u"}),
            "\ndn: uid=u\n" + kClasses + "cn:: Wm/Dqw==\nsn:: Wm/Dqw==\n");
  EXPECT_EQ(entryOf({"N:;:x;;;", "FN::x", "NICKNAME:<y", "TITLE:z ", "UID:u"}),
            "\ndn: uid=u\n" + kClasses +
                "cn:: Ong=\nsn:: Ong=\ngivenName:: Ong=\nmozillaNickname:: PHk=\ntitle:: eiA=\n");
}

// A blank parts the URI from its label.
TEST(Ldif, WritesBlanksOfAnAddressOfTheWebAsEscapes) {
  EXPECT_EQ(
      entryOf({"FN;DERIVED=TRUE:?", "item1.URL:http://x/a b", "item1.X-ABLabel:Boat", "UID:u"}),
      "\ndn: uid=u\n" + kClasses + "cn: ?\nsn: ?\nlabeledURI: http://x/a%20b Boat\n");
}

TEST(Ldif, FoldsLongLines) {
  const std::string note(200, 'n');
  const auto entry = entryOf({"FN;DERIVED=TRUE:x", "UID:u", "NOTE:" + note});
  EXPECT_NE(entry.find("\ndescription: " + std::string(63, 'n') + "\n " + std::string(75, 'n') +
                       "\n " + std::string(62, 'n') + "\n"),
            std::string::npos)
      << entry;
}

TEST(Ldif, WritesGroups) {
  const auto group = [](std::initializer_list<std::string> lines) {
    return formats::ldifOf(formats::groupFieldsOf(WrittenCard(cardOf(lines))));
  };
  EXPECT_EQ(group({"FN:Friends", "KIND:group", "UID:urn:uuid:g", "MEMBER:urn:uuid:a",
                   "MEMBER:x-ox-uid:b%20c"}),
            "\ndn: uid=g\nobjectClass: top\nobjectClass: groupOfNames\ncn: Friends\n"
            "member: uid=a\nmember: uid=b\\ c\n");
  EXPECT_EQ(group({"FN:Nobody", "KIND:group", "UID:urn:uuid:g"}),
            "\ndn: uid=g\nobjectClass: top\nobjectClass: groupOfNames\ncn: Nobody\nmember:\n");
}

TEST(Ldif, WritesYearsWithFourDigitsAsDatesAreRead) {
  const auto entry = entryOf({"FN:Ann", "UID:u", "BDAY:09990102"});
  EXPECT_NE(entry.find("birthyear: 0999\nbirthmonth: 1\nbirthday: 2\n"), std::string::npos)
      << entry;
  EXPECT_EQ(read(entry), "2: N:;Ann;;; | FN:Ann | BDAY:09990102 | UID;VALUE=text:u\n");
}

TEST(Ldif, ReadsEntriesOfOthers) {
  EXPECT_EQ(
      read("version: 1\n# a comment\n#  folded\n  over lines\n\n"
           "dn: cn=Ann Lee , ou=People,dc=x\nobjectClass: inetOrgPerson\nobjectclass: top\n"
           "cn: Ann Lee\nsn;lang-en: Lee\ngivenName: Ann\nmail: a@x.org\n"
           "mozillaSecondEmail: b@x.org\ntelephoneNumber: 1\nhomePhone: 2\ncellPhone: 3\n"
           "fax: 4\npager: 5\nstreet: 1 Main\nmozillaWorkStreet2: Floor 2\nl: Town\nst: CA\n"
           "postalCode: 123\nc: USA\nmozillaHomeLocalityName: Home\nou: Sales\no: ACME\n"
           "title: Boss\ndescription: one\ndescription:: dHdv\nlabeledURI: http://x.org Boat\n"
           "birthmonth: 5\nbirthday: 7\nnsAIMid: annlee\nuid: alee\nuserPassword: secret\n"
           "custom1: long \n er\nmodifyTimestamp: 2020\n"),
      "6? attribute uid: not understood, kept as lines in the note\n"
      "6? attribute custom1: not understood, kept as lines in the note\n"
      "6? attribute userpassword: left out\n"
      "6: N:Lee;Ann;;; | FN:Ann Lee | ORG:ACME;Sales | TITLE:Boss | BDAY:--0507 | "
      "TEL;TYPE=work:1 | TEL;TYPE=home:2 | TEL;TYPE=cell:3 | TEL;TYPE=work;TYPE=fax:4 | "
      "TEL;TYPE=pager:5 | EMAIL:a@x.org | EMAIL:b@x.org | item1.URL:http://x.org | "
      "item1.X-ABLabel:Boat | IMPP;X-SERVICE-TYPE=AIM:aim:annlee | "
      "ADR;TYPE=work:;;1 Main\\nFloor 2;Town;CA;123;USA | ADR;TYPE=home:;;;Home;;; | "
      "NOTE:one\\ntwo\\nuid: alee\\ncustom1: long er | "
      "UID:ldap:///cn%3Dann%20lee%2Cou%3Dpeople%2Cdc%3Dx\n");
}

TEST(Ldif, ReadsGroupsWhoseMembersAreNamedInAnySpelling) {
  EXPECT_EQ(read("dn: CN=Friends,dc=x\r\nobjectClass: groupOfNames\r\ncn: Friends\r\n"
                 "member: cn=Ann Lee,OU=People, dc=X\r\nmember:\r\nmember: uid=a\\,b\r\n"),
            "1: FN:Friends | KIND:group | UID:ldap:///cn%3Dfriends%2Cdc%3Dx | "
            "MEMBER:ldap:///cn%3Dann%20lee%2Cou%3Dpeople%2Cdc%3Dx | MEMBER:urn:uuid:a,b\n");
}

TEST(Ldif, LeavesOutMembersWhoseNamesAreControlCharacters) {
  EXPECT_EQ(read("dn: CN=Friends\nobjectClass: groupOfNames\ncn: Friends\nmember: uid=\x01\x02\n"
                 "member: uid=u\x01 1\n"),
            "1: FN:Friends | KIND:group | UID:ldap:///cn%3Dfriends | MEMBER:x-ox-uid:u%201\n");
}

TEST(Ldif, ReadsOldEncodingsAndPostalAddresses) {
  EXPECT_EQ(read("dn: uid=u\nsn: M\xFCller\ngivenName: J\xF6rg\npostalAddress: 1 Main$Town\n"),
            "1: N:Müller;Jörg;;; | FN:Jörg Müller | ADR;TYPE=work:;;1 Main\\nTown;;;; | "
            "UID;VALUE=text:u\n");
}

TEST(Ldif, RefusesRecordsThatAreNoEntries) {
  EXPECT_EQ(read("version: 1\n\ndn: uid=a\nchangetype: modify\nreplace: cn\ncn: x\n-\n\n"
                 "dn: uid=b\ncn: Bob\nno attribute\n\ndn: uid=c\njpegPhoto:: *\n\n"
                 "cn: Nobody\n\ndn: uid=d\ncn: Ann\ndn: uid=e\n\ndn: uid=f\ncn: Eve\n"
                 "jpegPhoto:< file:///photo\n"),
            "3# tells of a change, and no entry\n"
            "9# no attribute (line 11)\n"
            "13# no base64 (line 14)\n"
            "16# no dn in front\n"
            "18# a second dn: a blank line is missing before it\n"
            "22: N:;Eve;;; | FN:Eve | UID;VALUE=text:f\n"
            "  22! jpegPhoto refers to a file, which is not read\n");
}

TEST(Ldif, RefusesWhatDoesNotBeginAsLdif) {
  for (const auto* bytes :
       {"", "# a comment\n\n", "First Name,Last Name\nAnn,Lee\n", "BEGIN:VCARD\nEND:VCARD\n"}) {
    EXPECT_THROW(read(bytes), formats::FormatError) << bytes;
  }
  EXPECT_EQ(read("version: 1\n"), "");
}

TEST(Ldif, IsReadBackAsItWas) {
  for (const auto& card : {
           cardOf({"N:Lee;Ann;;;", "FN:Ann Lee", "UID:u", "EMAIL:a@x.org", "EMAIL:b@x.org",
                   "EMAIL:c@x.org", "TEL;TYPE=work:1", "TEL;TYPE=home:2", "TEL;TYPE=cell:3",
                   "NOTE:one\\ntwo ", "BDAY:--0517", "item1.URL:http://x.org",
                   "item1.X-ABLabel:Boat", "ADR;TYPE=home:;;1 Main\\nFloor 2;Town;CA;123;USA",
                   "item2.ADR;TYPE=work:7;;2 Main;Paris;;;France", "item2.X-ABADR:fr"}),
           cardOf({"FN:ACME", "ORG:ACME", "UID:u"}),
           cardOf({"FN;DERIVED=TRUE:a@x.org", "EMAIL:a@x.org", "UID:u"}),
           cardOf({"FN;DERIVED=TRUE:Annie", "NICKNAME:Annie", "UID:u"}),
           cardOf({"N:;Madonna;;;", "FN:Madonna", "UID:u"}),
           cardOf({"N:Lee;;;;", "FN:Lee", "UID:u"}),
           cardOf({"N:王;小明;;;", "FN:王小明", "UID:u"}),
       }) {
    const auto fields = formats::fieldsOf(WrittenCard(card));
    const auto entry = formats::ldifOf(fields);
    EXPECT_EQ(read(std::string(formats::kLdifHeader) + entry),
              "3: " + linesOf(formats::cardOf(fields, 0)) + "\n");
  }
}

TEST(DistinguishedName, StandsForItsUid) {
  for (const std::string uid :
       {"u", "a,b", "a b", "urn:uuid:", "#x", "a=b+c", "q\"<>;\\", "http://x.org/u", "ü"}) {
    EXPECT_EQ(formats::uidOfName(formats::nameOfUid(uid)), uid);
    EXPECT_TRUE(formats::isNameOfUid(formats::nameOfUid(uid)));
  }
  EXPECT_EQ(formats::uidOfName("UID=a\\2Cb"), "a,b");
  EXPECT_EQ(formats::uidOfName("uid=a,dc=x"), "ldap:///uid%3Da%2Cdc%3Dx");
  EXPECT_EQ(formats::uidOfName(" "), "");
}

}  // namespace
}  // namespace ox::formats_tests
