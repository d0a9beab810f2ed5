#include <gtest/gtest.h>

#include "card_text.hpp"

namespace ox::vcard {
namespace {

TEST(CardLines, AreUnfoldedAsTheirVersionFolds) {
  expectRows({
      {"3.0", "NOTE:ab\n cd\n\tef\n  gh\n", "Note=abcdef gh\n"},
      {"2.1", "NOTE:ab\n cd\n", "Note=ab cd\n"},
      {"4.0", "NO\n TE;X-A\n =1\n :ab\n", "Note=ab\nkept=;15#0;X-A=1\n"},
      {"3.0", "NOTE:J\xC3\n \xBCrg\n", "Note=Jürg\n"},
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
       "JobTitle=x\nrepair 3: comment passed over: # hello\n"
       "repair 5: no content line, passed over: no colon here\n"},
      {"3.0", "NOTE:" + std::string(70, 'a') + "\nbcd;e\nTITLE:x\n",
       "JobTitle=x\nNote=" + std::string(70, 'a') +
           "bcd;e\nrepair 4: line without a name, joined to the line before it\n"},
  });
}

}  // namespace
}  // namespace ox::vcard
