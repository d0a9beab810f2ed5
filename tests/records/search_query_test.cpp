#include "ox/records/search_query.hpp"

#include <algorithm>
#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "ox/records/property_keys.hpp"

namespace ox {
namespace {

PropertyValue list(const std::vector<Object>& values) {
  auto multi = std::make_shared<MultiValue>();
  for (const auto& value : values) multi->add(value, std::nullopt);
  return MultiValuePtr(multi);
}

PropertyBag named(const std::string& first, const std::string& last) {
  PropertyBag bag;
  if (!first.empty()) bag.set(property_id::kFirst, Object(first));
  if (!last.empty()) bag.set(property_id::kLast, Object(last));
  return bag;
}

PropertyBag withPhone(const std::string& number) {
  PropertyBag bag;
  bag.set(property_id::kPhone, list({Object(number)}));
  return bag;
}

// What an index leaves of such a text: false where it would overlook it.
bool mayHold(const SearchQuery& query, const std::string& text) {
  std::vector<bool> held(kSearchGrams);
  std::size_t from = 0;
  for (auto end = text.find('\n'); end != std::string::npos; end = text.find('\n', from)) {
    forEachGram(std::string_view(text).substr(from + 1, end - from - 1),
                [&](std::size_t gram) { held[gram] = true; });
    from = end + 1;
  }
  return std::ranges::all_of(query.grams(), [&](const auto& either) {
    return std::ranges::any_of(either, [&](const auto& grams) {
      return std::ranges::all_of(grams, [&](std::size_t gram) { return held[gram]; });
    });
  });
}

bool finds(const std::string& typed, const PropertyBag& person,
           SearchQuery::In in = SearchQuery::In::KnownFields) {
  const SearchQuery query(typed, in);
  const auto text = searchText(person);
  const bool found = query.matches(text);
  EXPECT_TRUE(!found || mayHold(query, text)) << typed;
  return found;
}

TEST(SearchQuery, FindsWordsInAnyOrderAsTheyAreTyped) {
  struct Row {
    std::string first;
    std::string last;
    std::string typed;
    bool found;
  };
  const std::vector<Row> rows = {
      {"Ann", "Lee", "lee ann", true},
      {"Ann", "Lee", "nn ee", true},
      {"Ann", "Lee", "annlee", true},
      {"Ann", "Lee", "al", true},
      {"Ann", "Lee", "ann bee", false},
      {"Ann", "Lee", "\"ann lee\"", true},
      {"Ann", "Lee", "\"lee ann\"", false},
      {"Jürgen", "Müller", "MUELLER jurgen", true},
      {"Søren", "Ørsted", "orsted", true},
      {"İpek", "Işık", "isik ipek", true},
      {"Đorđe", "Łukić", "dorde lukic", true},
      {"Max", "Weiß", "weiss", true},
      {"小明", "王", "王小明", true},
      {"小明", "王", "小明", true},
      {"小明", "王", "wangxiaoming", true},
      {"小明", "王", "xiao wang", true},
      {"小明", "王", "wxm", true},
      {"Антон", "Чехов", "chekhov anton", true},
      {"Антон", "Чехов", "ЧЕХОВ", true},
      {"Γιώργος", "Παπαδόπουλος", "papadopoulos", true},
      {"Γιώργος", "Παπαδόπουλος", "παπαδοπουλος", true},
      {"さくら", "たかはし", "takahashi", true},
      {"민준", "김", "gim", true},
      {"Ann", "Lee", "", false},
      {"Ann", "Lee", "lee\u00A0ann", true},
      {"Ann", "Lee", "lee\u3000ann", true},
      {"Ann", "Lee", "ann \u200B", true},
      {"Ann", "Lee", "\u200B", false},
      {"Ann", "Lee", "name:ann", true},
      {"Ann", "Lee", "NAME:ann company:x", false},
      {"Ann", "Lee", "nofield:ann", false},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(finds(row.typed, named(row.first, row.last)), row.found)
        << row.first << " " << row.last << ": " << row.typed;
  }
}

TEST(SearchQuery, FindsANumberByItsDigits) {
  struct Row {
    std::string stored;
    std::string typed;
    bool found;
  };
  const std::vector<Row> rows = {
      {"+49 30 1234567", "030 1234567", true},
      {"+49 30 1234567", "030/123-45 67", true},
      {"+49 30 1234567", "+49 30 1234567", true},
      {"+49 30 1234567", "0049301234567", true},
      {"+49 30 1234567", "1234567", true},
      {"+49 30 1234567", "234 56", true},
      {"+49 30 1234567", "+44 30 1234567", false},
      {"030 1234567", "+49 (0)30 1234567", true},
      {"030 1234567", "+49 30 1234567", true},
      {"(212) 555-0123", "+1 212 555 0123", true},
      {"+1 212 555 0123", "(212) 555-0123", true},
      {"+351 21 123456", "21123456", true},
      {"٠٣٠١٢٣٤٥٦٧", "0301234567", true},
      {"030 1234567", "030 7654321", false},
      {"+49 (0)30 1234567", "+49 30 1234567", true},
      {"+49 30 1234567", "+49 (0)30 1234567", true},
      {"(0)30 1234567", "030 1234567", true},
      {"030 1234567", "030 / 1234567", true},
      {"030 1234567", "030 - 12 34 567", true},
      {"030\u00A01234567", "030\u20111234567", true},
      {"030 1234567", "٠٣٠١٢٣٤٥٦٧", true},
      {"+49 30 1234567", "+4930123", true},
      {"+49 30 1234567", "+43 30 1234567", false},
      {"030 1234567", "phone:1234", true},
      {"030 1234567", "note:1234", false},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(finds(row.typed, withPhone(row.stored)), row.found)
        << row.stored << ": " << row.typed;
  }
}

TEST(SearchQuery, FindsANumberAmongWords) {
  auto person = withPhone("030 1234567");
  person.set(property_id::kFirst, Object("Ann"));
  person.set(property_id::kNote, Object("room 4 since 1990"));
  for (const auto* typed : {"ann 030 1234567", "030 12 ann", "room 4 1990", "1990 ann", "4 1990"}) {
    EXPECT_TRUE(finds(typed, person)) << typed;
  }
  EXPECT_FALSE(finds("ann 4 1991", person));
  EXPECT_FALSE(finds("ben 030 1234567", person));
}

TEST(SearchQuery, FindsWhoeverHasNoNameByTheCompany) {
  PropertyBag person;
  person.set(property_id::kOrganization, Object("Acme Inc"));
  EXPECT_TRUE(finds("acme inc", person, SearchQuery::In::Names));
  person.set(property_id::kFirst, Object("Bob"));
  EXPECT_FALSE(finds("acme inc", person, SearchQuery::In::Names));
}

TEST(SearchQuery, AsksForManyWordsOnce) {
  std::string typed;
  for (int i = 0; i < 20'000; ++i) typed += "ann ";
  EXPECT_EQ(SearchQuery(typed).grams().size(), 1U);
  for (int i = 0; i < 20'000; ++i) typed += "w" + std::to_string(i) + " ";
  EXPECT_LE(SearchQuery(typed).grams().size(), 64U);
}

TEST(SearchQuery, LooksIntoFieldsThatAreNamed) {
  Dictionary address;
  address.set(std::string(kABAddressStreetKey), Object("Main Street 4"));
  address.set(std::string(kABAddressCityKey), Object("München"));
  auto person = named("Ann", "Lee");
  person.set(property_id::kOrganization, Object("北京大学"));
  person.set(property_id::kJobTitle, Object("Baker"));
  person.set(property_id::kNote, Object("met in\nRome"));
  person.set(property_id::kBirthday, Object(*Date::fromText("1990-05-17")));
  person.set(property_id::kEmail, list({Object("Ann.Lee@Example.org")}));
  person.set(property_id::kAddress, list({Object(address)}));
  for (const auto* typed : {"muenchen", "town:munchen", "address:main", "street:main", "beijing",
                            "company:北京", "rome", "note:rome", "example.org lee",
                            "email:ann.lee@", "job:baker", "birthday:1990-05", "ann rome"}) {
    EXPECT_TRUE(finds(typed, person)) << typed;
  }
  for (const auto* typed : {"main", "baker", "1990-05", "town:rome", "name:rome", "chat:ann"}) {
    EXPECT_FALSE(finds(typed, person)) << typed;
  }
  EXPECT_TRUE(finds("lee", person, SearchQuery::In::Names));
  EXPECT_FALSE(finds("rome", person, SearchQuery::In::Names));
  EXPECT_FALSE(finds("email:ann", person, SearchQuery::In::Names));
}

}  // namespace
}  // namespace ox
