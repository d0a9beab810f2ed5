#include "ox/OxMacAddressBookSDK/persons/joined_values.hpp"

#include <gtest/gtest.h>

namespace ox {
namespace {

using Entries = std::vector<std::pair<const char*, const char*>>;  // label, value

PropertyValue entries(const Entries& list, std::size_t primary = 0) {
  auto value = std::make_shared<MultiValue>();
  for (const auto& [label, text] : list) {
    const auto identifier = value->add(Object(text), Text(label));
    if (--primary == 0) value->primary = identifier;
  }
  return MultiValuePtr(value);
}

PropertyBag bag(std::vector<std::pair<PropertyId, PropertyValue>> values) {
  PropertyBag bag;
  for (auto& [property, value] : values) bag.set(property, std::move(value));
  return bag;
}

std::string textIn(const PropertyBag& values, PropertyId property) {
  const auto* text = values.text(property);
  return text != nullptr ? *text : "(none)";
}

std::string entriesIn(const PropertyBag& values, PropertyId property) {
  const auto* held = std::get_if<MultiValuePtr>(&values.value(property));
  std::string text;
  if (held == nullptr || !*held) return text;
  for (const auto& entry : (*held)->entries) {
    text += (text.empty() ? "" : ", ") + entry.label.value_or("") + " " +
            entry.value.toText().value_or("");
    if ((*held)->primary == entry.identifier) text += "*";
  }
  return text;
}

namespace id = property_id;

TEST(JoinedValues, FillInTheNameUnlessAPartContradicts) {
  const auto joined = joinedValues(bag({{id::kFirst, Object("Ann")}}),
                                   bag({{id::kFirst, Object("Ann")}, {id::kLast, Object("Lee")}}));
  EXPECT_EQ(textIn(joined.values, id::kLast), "Lee");
  EXPECT_EQ(textIn(joined.values, id::kNote), "(none)");

  const auto other = joinedValues(bag({{id::kFirst, Object("Ann")}}),
                                  bag({{id::kFirst, Object("Anna")}, {id::kLast, Object("Lee")}}));
  EXPECT_EQ(textIn(other.values, id::kLast), "(none)");
  EXPECT_EQ(textIn(other.values, id::kNote), "Name: Anna Lee");
  ASSERT_EQ(other.added.size(), 1U);
  EXPECT_EQ(other.added[0].by, JoinedBy::Note);

  const auto spelling =
      joinedValues(bag({{id::kLast, Object("Müller")}}), bag({{id::kLast, Object("MULLER")}}));
  EXPECT_EQ(textIn(spelling.values, id::kLast), "Müller");
  EXPECT_TRUE(spelling.added.empty());
}

TEST(JoinedValues, KeepWhatARecordHoldsOnceAndNoteTheOther) {
  const auto joined = joinedValues(
      bag({{id::kOrganization, Object("Acme")}, {id::kNote, Object("note")}}),
      bag({{id::kOrganization, Object("Beta")},
           {id::kJobTitle, Object("Boss")},
           {id::kBirthday,
            Object(Date{
                .year = 1990, .month = 5, .day = 17, .secondOfDay = {}, .utcOffsetMinutes = {}})},
           {id::kNote, Object("other")}}));
  EXPECT_EQ(textIn(joined.values, id::kOrganization), "Acme");
  EXPECT_EQ(textIn(joined.values, id::kJobTitle), "Boss");
  EXPECT_EQ(textIn(joined.values, id::kNote), "note\nother\nCompany: Beta");
  const auto again = joinedValues(joined.values, bag({{id::kNote, Object("other")}}));
  EXPECT_TRUE(again.added.empty());
}

TEST(JoinedValues, TakePartOfALineForNoLine) {
  const auto joined =
      joinedValues(bag({{id::kOrganization, Object("Acme")},
                        {id::kNote, Object("Company: Old School Ltd, of Bob's")}}),
                   bag({{id::kOrganization, Object("Old")}, {id::kNote, Object("Bob")}}));
  EXPECT_EQ(textIn(joined.values, id::kNote),
            "Company: Old School Ltd, of Bob's\nBob\nCompany: Old");
  ASSERT_EQ(joined.added.size(), 2U);
  const auto again = joinedValues(joined.values, bag({{id::kOrganization, Object("Old")}}));
  EXPECT_TRUE(again.added.empty());
}

TEST(JoinedValues, TellTheLabelThatIsLeft) {
  const auto joined =
      joinedValues(bag({{id::kPhone, entries({{"_$!<Home>!$_", "+1 555"}})}}),
                   bag({{id::kPhone, entries({{"_$!<Work>!$_", "+1555"}, {"Boat", "1 555"}})}}));
  ASSERT_EQ(joined.added.size(), 2U);
  EXPECT_EQ(joined.added[0].by, JoinedBy::None);
  EXPECT_EQ(joined.added[0].text, "Work: +1555");
  EXPECT_EQ(entriesIn(joined.values, id::kPhone), "_$!<Home>!$_ +1 555, Boat 1 555");
}

TEST(JoinedValues, HoldEveryEntryOnce) {
  const auto joined = joinedValues(
      bag({{id::kPhone, entries({{"Home", "+1 555-1"}}, 1)},
           {id::kEmail, entries({{"Work", "a@b.example"}})}}),
      bag({{id::kPhone, entries({{"Home", "+(1) 555 1"}, {"Work", "15552"}, {"Work", "15552"}}, 2)},
           {id::kEmail, entries({{"Home", "A@B.example"}})},
           {id::kURLs, entries({{"Home", "https://x.example"}}, 1)}}));
  EXPECT_EQ(entriesIn(joined.values, id::kPhone), "Home +1 555-1*, Work 15552, Work 15552");
  EXPECT_EQ(entriesIn(joined.values, id::kEmail), "Work a@b.example");
  EXPECT_EQ(entriesIn(joined.values, id::kURLs), "Home https://x.example*");
}

TEST(JoinedValues, KeepLinesThatAreNotModelledButNotWhatIsSaidOfValues) {
  const auto lines = [](std::vector<const char*> texts) {
    Array array;
    for (const auto* text : texts) array.emplace_back(text);
    return PropertyValue(Object(std::move(array)));
  };
  const auto joined = joinedValues(
      bag({{id::kCardUid, Object("own")},
           {id::kUnmodelledLines, lines({";16#1;TYPE=MODEM", "X-A:1"})}}),
      bag({{id::kCardUid, Object("other")},
           {id::kUnmodelledLines, lines({";16#1.item1", "FN:Somebody", "item1.X-A:1",
                                         "item1.X-B;P=a.b:2", "REV:20200101T000000Z"})}}));
  EXPECT_EQ(textIn(joined.values, id::kCardUid), "own");
  const auto array = std::get<Object>(joined.values.value(id::kUnmodelledLines)).array();
  ASSERT_TRUE(array);
  ASSERT_EQ(array->size(), 3U);
  EXPECT_EQ(*(*array)[0].text(), ";16#1;TYPE=MODEM");
  EXPECT_EQ(*(*array)[1].text(), "X-A:1");
  EXPECT_EQ(*(*array)[2].text(), "X-B;P=a.b:2");
}

// By the places that the values have in the joined record; ranks are among a card's own values.
TEST(JoinedValues, TakeWhatTheOtherCardSaidOfTheValuesThatTheyTake) {
  const auto lines = [](std::vector<const char*> texts) {
    Array array;
    for (const auto* text : texts) array.emplace_back(text);
    return PropertyValue(Object(std::move(array)));
  };
  auto others = std::make_shared<MultiValue>();
  others->entries = {{1, "Home", Object("1")}, {2, "Work", Object("2")}};
  const auto joined = joinedValues(
      bag({{id::kPhone, entries({{"Home", "1"}})}, {id::kUnmodelledLines, lines({"X-A:1"})}}),
      bag({{id::kPhone, MultiValuePtr(others)},
           {id::kNickname, Object("A,B")},
           {id::kUnmodelledLines,
            lines({";16#1;TYPE=FAX", ";16#2;TYPE=MODEM", ";16#2.item1", ";16#2;PREF=3"})}}));
  EXPECT_EQ(entriesIn(joined.values, id::kPhone), "Home 1, Work 2");
  const auto array = std::get<Object>(joined.values.value(id::kUnmodelledLines)).array();
  ASSERT_TRUE(array);
  ASSERT_EQ(array->size(), 2U);
  EXPECT_EQ(*(*array)[0].text(), "X-A:1");
  const auto taken = std::get<MultiValuePtr>(joined.values.value(id::kPhone))->entries.back();
  EXPECT_EQ(*(*array)[1].text(), ";16#" + std::to_string(taken.identifier) + ";TYPE=MODEM");
}

TEST(JoinedValues, NoteWhatTheOtherCardCalledThePerson) {
  const auto called = [](const char* line) {
    return bag({{id::kFirst, Object("Ann")},
                {id::kUnmodelledLines, PropertyValue(Object(Array{Object(line)}))}});
  };
  const auto noteOf = [&](const char* own, const char* other) {
    return textIn(joinedValues(called(own), called(other)).values, id::kNote);
  };
  EXPECT_EQ(noteOf("X-A:1", "FN;LANGUAGE=en:Mom\\, dear"), "Name: Mom, dear");
  EXPECT_EQ(noteOf("FN:Mom", "FN:Mum"), "Name: Mum");
  EXPECT_EQ(noteOf("FN:Mom", "FN:Mom"), "(none)");
  EXPECT_EQ(noteOf("X-A:1", "FN:Ann"), "(none)");
  EXPECT_EQ(noteOf("X-A:1", "FN;DERIVED=TRUE:a@b.example"), "(none)");
}

TEST(JoinedValues, OfARecordAndItselfAreItsOwn) {
  const auto own = bag({{id::kFirst, Object("Ann")},
                        {id::kNote, Object("n")},
                        {id::kPhone, entries({{"Home", "1"}, {"Home", "1"}}, 2)}});
  const auto joined = joinedValues(own, own);
  EXPECT_TRUE(joined.added.empty());
  for (const auto& [property, value] : own.entries()) {
    EXPECT_TRUE(sameValue(joined.values.value(property), value)) << property;
  }
}

}  // namespace
}  // namespace ox
