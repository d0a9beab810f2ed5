#include <gtest/gtest.h>

#include "card_text.hpp"

namespace ox::vcard {
namespace {

TEST(CardLines, AreUnfoldedAsTheirVersionFolds) {
  expectRows({
      {"3.0", "NOTE:ab\n cd\n\tef\n  gh\n", "Note=abcdef gh\n"},
      {"2.1", "NOTE:ab\n cd\n", "Note=ab cd\n"},
      {"2.1", "NOTE:ab \n  cd\n\t\n ef\n", "Note=ab cd ef\n"},
      {"2.1", "NOTE:\n ab\n cd\n", "Note=ab cd\n"},
      {"4.0", "NO\n TE;X-A\n =1\n :ab\n", "Note=ab\nkept=;15#0;X-A=1\n"},
      {"3.0", "NOTE:J\xC3\n \xBCrg\n", "Note=Jürg\n"},
  });
}

// Programs that fold where the line is full, as 3.0 does, write 2.1 in their heads nevertheless.
TEST(CardLines, FoldOf21WithinATokenLosesItsBlank) {
  const std::string full(74, 'a');
  expectRows({
      {"2.1", "EMAIL:john@exam\n ple.com\n", "Email[-]=john@example.com\n"},
      {"2.1", "item1.EMAIL;INTERNET;HO\n ME:john@exam\n\tple.\n com\n",
       "Email[_$!<Home>!$_]=john@example.com\n"},
      {"2.1", "URL:http://example.org/\n  a\n", "URLs[-]=http://example.org/a\n"},
      {"2.1", "UID:1234-\n 5678\n", "UID=1234-5678\n"},
      {"2.1", "TEL;HO\n ME:1\n", "Phone[_$!<Home>!$_]=1\n"},
      {"2.1", "NOTE:write to john@example.com\n or call\n",
       "Note=write to john@example.com or call\n"},
      // All full lines are of one length.
      {"2.1",
       "NOTE:" + std::string(70, 'a') + "\n " + full + "\n  b" + std::string(72, 'c') + "\n d\n",
       "Note=" + std::string(70, 'a') + full + " b" + std::string(72, 'c') + "d\n"},
      {"2.1",
       "NOTE:" + std::string(69, 'a') + "\n " + full + "\n b" + std::string(71, 'c') + "\n d\n",
       "Note=" + std::string(69, 'a') + " " + full + " b" + std::string(71, 'c') + " d\n"},
  });
}

TEST(CardLines, ValuesRunOverLinesThatNameNoProperty) {
  const std::string told = ": line without a name, joined to the line before it\n";
  expectRows({
      {"3.0", "NOTE:one\ntwo\n\nthree at 10:30\nTEL:1\n",
       "Note=one\ntwo\n\nthree at 10:30\nPhone[-]=1\nrepair 4" + told + "repair 6" + told},
      {"2.1", "ADR;HOME:;;1 Main St\nApt 5;Town;;123;Land\nTEL:1\n",
       "Phone[-]=1\nAddress[_$!<Home>!$_]={Street=1 Main St\nApt "
       "5,City=Town,ZIP=123,Country=Land}\n"
       "repair 4" +
           told},
      {"3.0", "NOTE:\none\n\ntwo;\n# no\n",
       "Note=one\n\ntwo;\nrepair 4" + told + "repair 6" + told +
           "repair 7: comment passed over: # no\n"},
      {"3.0", "EMAIL:john@exam\nple.com\n", "Email[-]=john@example.com\nrepair 4" + told},
      {"2.1", "NOTE;QUOTED-PRINTABLE:a=0D=0A\nb=\nc\nd\n",
       "Note=a\nbc\nd\nrepair 4" + told + "repair 6" + told},
      {"3.0", "X-OWN:a\nb\n", "kept=X-OWN:a\\nb\nrepair 4" + told},
      {"3.0", "UID:1\nno line\nTITLE:x\n",
       "JobTitle=x\nUID=1\nrepair 4: no content line, passed over: no line\n"},
      {"3.0", "NOTE:a\nb\n c\nTITLE:x\n", "JobTitle=x\nNote=a\nbc\nrepair 4" + told},
  });
}

// Its head may be as long as a formatted address is.
TEST(CardLines, LinesWithALongFoldedHeadStartWhereTheyStart) {
  std::string address = "ADR;LABEL=\"";
  for (int i = 0; i < 60; ++i) address += std::string(70, 'a') + "\n ";
  address += "\":;;b;;;;\n";
  const std::string label(4200, 'a');
  expectRows(
      {{"4.0", "NOTE:x\n" + address, "Note=x\nAddress[-]={Street=b,Label=" + label + "}\n"}});
}

TEST(CardLines, BlanksAroundComponentsGo) {
  expectRows({
      {"3.0", "N: Lee ; Ann;\tB ;;\n", "First=Ann\nMiddle=B\nLast=Lee\n"},
      {"2.1", "ORG:Firm ; North ; South\n", "Organization=Firm\nDepartment=North;South\n"},
      {"4.0", "ADR:;; 1 Way; Town ;; 9 ;\n", "Address[-]={Street=1 Way,City=Town,ZIP=9}\n"},
      {"3.0", "N: ; ;;;\nTITLE: x\n", "JobTitle= x\n"},
  });
}

TEST(CardLines, QuotedPrintableGoesOnAfterSoftBreaks) {
  expectRows({
      {"2.1", "NOTE;ENCODING=QUOTED-PRINTABLE:a=3Db=\nc=0D=0Ad\n", "Note=a=bc\nd\n"},
      {"2.1", "NOTE;QUOTED-PRINTABLE;CHARSET=UTF-8:=C3=\n=BC=\n\nTITLE:x\n",
       "JobTitle=x\nNote=ü\n"},
      {"2.1", "N;ENCODING=QUOTED-PRINTABLE:=41=5C=3B;B\n", "First=B\nLast=A;\n"},
      {"2.1", "NOTE;ENCODING=QUOTED-PRINTABLE:=\n indented\n", "Note= indented\n"},
      {"2.1", "NOTE;ENCODING=QUOTED-PRINTABLE:bad =ZZ and =4\n", "Note=bad =ZZ and =4\n"},
      {"2.1", "NOTE;ENCODING=QUOTED-PRINTABLE:left open=\n", "Note=left open\n"},
      {"2.1", "NOTE:no escape =41=\n", "Note=no escape =41=\n"},
  });
}

TEST(CardLines, Base64EndsInEveryWayThatProgramsEndIt) {
  expectRows({
      {"2.1", "PHOTO;ENCODING=BASE64:AQID\n BAUG\n\nTITLE:x\n", "JobTitle=x\nphoto=6 bytes\n"},
      {"2.1", "PHOTO;ENCODING=BASE64:\n    AQID\n    BAUG\nTITLE:x\n",
       "JobTitle=x\nphoto=6 bytes\n"},
      {"2.1", "PHOTO;BASE64:AQID\nBAUG\nBw==\nTITLE:x\n", "JobTitle=x\nphoto=7 bytes\n"},
      {"2.1", "PHOTO;BASE64:\nAQID\nBAUG\n\nTITLE:x\n", "JobTitle=x\nphoto=6 bytes\n"},
      {"3.0", "PHOTO;ENCODING=B:AQ\n ID\n BAUG\nTITLE:x\n", "JobTitle=x\nphoto=6 bytes\n"},
      {"3.0", "PHOTO;BASE64;ENCODING=b;TYPE=JPEG:AQID\n", "kept=;0#0:image/jpeg\nphoto=3 bytes\n"},
      {"3.0", "KEY;ENCODING=b:AQ\n  ID\n", "kept=KEY;ENCODING=b:AQID\n"},
  });
}

TEST(CardLines, ParametersMayBeQuotedBareOrEscaped) {
  expectRows({
      {"3.0", "TEL;TYPE=\"HOME\";X-A=\"b:c;d\":1\n",
       "Phone[_$!<Home>!$_]=1\nkept=;16#1;X-A=\"b:c;d\"\n"},
      {"3.0", "tel;Type=home:1\n", "Phone[_$!<Home>!$_]=1\n"},
      {"4.0", "X-SOCIALPROFILE;X-USER=\"a^nb^^c^'d\";TYPE=t:u\n",
       "SocialProfile[-]={serviceName=t,username=a\nb^c\"d,url=u}\n"},
      {"3.0", "TEL;X-A=5\":1\n", "Phone[-]=1\nkept=;16#1;X-A=5\"\n"},
  });
}

TEST(CardLines, StrayLinesAreNamedAndPassedOver) {
  expectRows({
      {"2.1", "# hello\nTITLE:x\nno colon here\n\n",
       "JobTitle=x\nno colon here\nrepair 3: comment passed over: # hello\n"
       "repair 5: line without a name, joined to the line before it\n"},
      {"2.1", "no colon here\nTITLE:x\n",
       "JobTitle=x\nrepair 3: no content line, passed over: no colon here\n"},
      {"3.0", "NOTE:" + std::string(70, 'a') + "\nbcd;e\nTITLE:x\n",
       "JobTitle=x\nNote=" + std::string(70, 'a') +
           "bcd;e\nrepair 4: line without a name, joined to the line before it\n"},
  });
}

}  // namespace
}  // namespace ox::vcard
