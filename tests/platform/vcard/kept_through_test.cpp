#include <gtest/gtest.h>

#include "platform/records/property_keys.hpp"
#include "written_card.hpp"

// What a card says beside the values that a record holds, through the store and out again.

namespace ox::vcard {
namespace {

TEST(CardThrough, UrisOfAccountsGoOutAsTheyCame) {
  std::vector<ThroughRow> rows;
  for (const std::string line :
       {"IMPP:sip:alice@x\n", "IMPP:irc://irc.x.example/alice,isnick\n", "IMPP:matrix:u/a:x\n",
        "IMPP:https://x.example/a?b=c&d=%C3%A9\n", "IMPP:sip:a%20b@x\n",
        "IMPP;X-SERVICE-TYPE=Jabber:xmpp:bob@x?message\n",
        "IMPP;X-SERVICE-TYPE=AIM:aim:goim?screenname=x\n", "IMPP;X-SERVICE-TYPE=Skype:x-apple:a\n",
        "IMPP;X-SERVICE-TYPE=Own:own:me\n", "IMPP;X-SERVICE-TYPE=Jabber:XMPP:bob@x\n"}) {
    rows.push_back({"3.0", line, line, line});
    rows.push_back({"4.0", line, line, line});
  }
  rows.push_back({"4.0", "IMPP;TYPE=home:xmpp:a/b\n",
                  "IMPP;TYPE=HOME;X-SERVICE-TYPE=Jabber:xmpp:a/b\n",
                  "IMPP;TYPE=home;X-SERVICE-TYPE=Jabber:xmpp:a/b\n"});
  expectThrough(rows);
}

TEST(CardThrough, AnAccountThatChangedIsSpeltAnew) {
  auto bag = propertiesOf("4.0", "FN:?\nIMPP:xmpp:bob@x?message\nIMPP:xmpp:ann@x?message\n");
  auto values = *std::get<MultiValuePtr>(*bag.find(property_id::kInstantMessage));
  Dictionary account = *values.entries[1].value.dictionary();
  account.set(kABInstantMessageUsernameKey, "cy@x?");
  values.entries[1].value = account;
  bag.set(property_id::kInstantMessage, std::make_shared<const MultiValue>(values));
  const auto lines = linesOf(bag, {.version = CardVersion::V40});
  EXPECT_NE(lines.find("IMPP;X-SERVICE-TYPE=Jabber:xmpp:bob@x?message\n"
                       "IMPP;X-SERVICE-TYPE=Jabber:xmpp:cy@x%3F\n"),
            lines.npos)
      << lines;
}

TEST(CardThrough, NotesOfSeveralLanguagesStayApart) {
  const std::string two = "NOTE;LANGUAGE=en:hello\nNOTE;LANGUAGE=de:hallo\n";
  const std::string plain = "NOTE;LANGUAGE=en:a\nNOTE:b\n";
  expectThrough({
      {"3.0", two, two, two},
      {"4.0", plain, plain, plain},
      {"3.0", "NOTE;LANGUAGE=en:a\nNOTE;LANGUAGE=en:b\n", "NOTE;LANGUAGE=en:a\\nb\n",
       "NOTE;LANGUAGE=en:a\\nb\n"},
  });
}

TEST(CardThrough, RelationsAreSaidInTheWordsOfTheVersion) {
  expectThrough({
      {"4.0", "RELATED;TYPE=colleague;VALUE=text:Di\n", "X-ABRELATEDNAMES;TYPE=colleague:Di\n",
       "RELATED;VALUE=text;TYPE=colleague:Di\n"},
      {"4.0", "RELATED;TYPE=colleague,friend;VALUE=text:Di\n",
       "item1.X-ABRELATEDNAMES;TYPE=colleague;TYPE=friend:Di\nitem1.X-ABLabel:_$!<Friend>!$_\n",
       "RELATED;VALUE=text;TYPE=colleague;TYPE=friend:Di\n"},
      {"4.0", "RELATED;VALUE=text:http://x\n", "X-ABRELATEDNAMES:http://x\n",
       "RELATED;VALUE=text:http://x\n"},
      {"4.0", "RELATED;TYPE=friend;VALUE=uri:mailto:x@y\n",
       "RELATED;TYPE=friend;VALUE=uri:mailto:x@y\n", "RELATED;TYPE=friend;VALUE=uri:mailto:x@y\n"},
      {"3.0", "X-ABRELATEDNAMES;TYPE=friend:Di\n", "X-ABRELATEDNAMES;TYPE=friend:Di\n",
       "X-ABRELATEDNAMES;TYPE=friend:Di\n"},
  });
}

}  // namespace
}  // namespace ox::vcard
