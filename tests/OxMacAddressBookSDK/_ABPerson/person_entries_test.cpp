#include "ox/OxMacAddressBookSDK/_ABPerson/person_entries.hpp"

#include <gtest/gtest.h>
#include <map>

#include "ox/base/failures.hpp"
#include "tests/OxMacAddressBookSDK/fixtures.hpp"

namespace ox::test {
namespace {

using support::multiValue;

Object phone(const std::string& number) {
  return OxObjectPhone::initWithPhoneNumber(number);
}

// A letter for each identifier, in the order in which they were met.
char letterOf(std::uint64_t identifier) {
  static std::map<std::uint64_t, char> letters;
  return letters.emplace(identifier, static_cast<char>('a' + letters.size())).first->second;
}

// "a:_$!<Home>!$_ 555*, b: {City=Oslo}": identifier, label and value of each entry, a star at the
// main one.
std::string stored(std::string_view property) {
  const auto value = person("p")->valueForProperty(property);
  const auto* held = std::get_if<MultiValuePtr>(&value);
  if (held == nullptr) return "nothing";
  std::string text;
  for (const auto& entry : (*held)->entries) {
    text += text.empty() ? "" : ", ";
    text += letterOf(entry.identifier);
    text += ':' + entry.label.value_or("") + ' ';
    if (const auto* fields = entry.value.dictionary()) {
      text += '{';
      for (const auto& [name, field] : fields->entries()) text += name + '=' + *field.text() + ' ';
      text.back() = '}';
    } else {
      text += *entry.value.text();
    }
    if (entry.identifier == (*held)->primary) text += '*';
  }
  return text;
}

std::string storedPhones() {
  return stored(kABPhoneProperty);
}

template <typename Change>
void changeEntries(std::string_view name, Change change) {
  const auto changed = person("p");
  PersonEntries entries(*changed, property(name));
  change(entries);
  EXPECT_TRUE(entries.write());
}

template <typename Change>
void changePhones(Change change) {
  changeEntries(OxProPertyPhone, change);
}

template <typename Change>
void changeAddresses(Change change) {
  changeEntries(OxProPertyAddress, change);
}

void personWithThreePhones() {
  StoreBuilder().person("p", {.phones = {{.label = std::string(kABHomeLabel), .value = "1"},
                                         {.label = std::string(kABWorkLabel), .value = "2"},
                                         {.label = "Boat", .value = "3"}}});
}

TEST(PersonEntries, OfOneLabelAreReplacedWhereTheyStand) {
  personWithThreePhones();
  const auto before = storedPhones();
  EXPECT_EQ(before, "a:_$!<Home>!$_ 1, b:_$!<Work>!$_ 2, c:Boat 3");
  changePhones([](auto& entries) { entries.replaceLabelled("boat", phone("33")); });
  EXPECT_EQ(storedPhones(), "a:_$!<Home>!$_ 1, b:_$!<Work>!$_ 2, d:boat 33");
  changePhones([](auto& entries) { entries.replaceLabelled("_$!<Work>!$_", phone("22")); });
  EXPECT_EQ(storedPhones(), "a:_$!<Home>!$_ 1, e:_$!<Work>!$_ 22, d:boat 33");
  changePhones([](auto& entries) { entries.replaceLabelled("Car", phone("4")); });
  EXPECT_EQ(storedPhones(), "a:_$!<Home>!$_ 1, e:_$!<Work>!$_ 22, d:boat 33, f:Car 4");
  changePhones([](auto& entries) { entries.replaceLabelled("HOME", Object()); });
  EXPECT_EQ(storedPhones(), "e:_$!<Work>!$_ 22, d:boat 33, f:Car 4");
}

TEST(PersonEntries, HaveAMainOneWhenThereWasOneOrNoneAtAll) {
  StoreBuilder().person("p", {});
  changePhones([](auto& entries) { entries.add(phone("1"), "Boat"); });
  EXPECT_EQ(storedPhones(), "a:Boat 1*");
  changePhones([](auto& entries) { entries.add(phone("2"), std::nullopt); });
  EXPECT_EQ(storedPhones(), "a:Boat 1*, b: 2");
  changePhones([](auto& entries) { entries.replaceLabelled("Boat", phone("3")); });
  EXPECT_EQ(storedPhones(), "c:Boat 3*, b: 2");
  changePhones([](auto& entries) { entries.replaceLabelled("Boat", Object()); });
  EXPECT_EQ(storedPhones(), "b: 2*");
  changePhones([](auto& entries) { entries.replaceAll(phone("4")); });
  EXPECT_EQ(storedPhones(), "d: 4*");
  changePhones([](auto& entries) { entries.replaceAll(Object()); });
  EXPECT_EQ(storedPhones(), "nothing");
}

TEST(PersonEntries, GetNoMainOneWhereTheyHadNone) {
  personWithThreePhones();
  changePhones([](auto& entries) {
    entries.add(phone("4"), std::nullopt);
    entries.replaceLabelled("Boat", Object());
  });
  EXPECT_EQ(storedPhones(), "a:_$!<Home>!$_ 1, b:_$!<Work>!$_ 2, c: 4");
}

TEST(PersonEntries, KeepOfAnAddressWhatTheModelDoesNotKnow) {
  StoreBuilder().person(
      "p",
      {.more = {{property_id::kAddress,
                 multiValue({{.label = std::string(kABHomeLabel),
                              .value = Dictionary{{"City", "Paris"}, {"X", "y"}}},
                             {.label = std::string(kABWorkLabel),
                              .value = Dictionary{{"City", "Oslo"}, {"CountryCode", "no"}}}})}}});
  const std::string work = ", b:_$!<Work>!$_ {City=Oslo CountryCode=no}";
  changeAddresses(
      [](auto& entries) { entries.setAddressField(OxAddressFieldZIP, "75002", std::nullopt); });
  EXPECT_EQ(stored(kABAddressProperty), "a:_$!<Home>!$_ {City=Paris X=y ZIP=75002}" + work);
  changeAddresses([](auto& entries) {
    entries.setAddressField(OxAddressFieldCity, std::nullopt, "Home");
    entries.setAddressField(OxAddressFieldZIP, std::nullopt, "Home");
  });
  EXPECT_EQ(stored(kABAddressProperty), "a:_$!<Home>!$_ {X=y}" + work);
  changeAddresses([](auto& entries) {
    entries.setAddressField(OxAddressFieldCity, std::nullopt, "Work");
    entries.setAddressField(OxAddressFieldCity, std::nullopt, "Boat");
    entries.setAddressField(OxAddressFieldState, "Nord", "Boat");
    entries.addAddress(OxAddressFieldStreet, "Quay 1", std::nullopt);
  });
  EXPECT_EQ(stored(kABAddressProperty),
            "a:_$!<Home>!$_ {X=y}, c:Boat {State=Nord}, d: {Street=Quay 1}");
}

TEST(PersonEntries, AreNotGivenToAPersonThatIsGone) {
  personWithThreePhones();
  const auto gone = person("p");
  PersonEntries entries(*gone, property(OxProPertyPhone));
  EXPECT_TRUE(entries.holdsLabel("BOAT"));
  EXPECT_TRUE(entries.holdsLabel("Work"));
  EXPECT_FALSE(entries.holdsLabel("Bo"));
  ABAddressBook::sharedAddressBook()->removeRecord(gone);
  entries.replaceAll(phone("4"));
  EXPECT_FALSE(entries.write());
}

TEST(PersonEntries, RefuseAValueOfAnotherKindAndChangeNothing) {
  StoreBuilder().person("p", {.phones = {{"Boat", "1"}, {"Work", "2", true}}});
  const auto before = storedPhones();
  const failures::Watch watch;
  changePhones([](PersonEntries& entries) {
    entries.replaceAll(Object("3"));
    entries.replaceLabelled("Boat", Object("3"));
    entries.add(Object("3"), std::nullopt);
  });
  EXPECT_EQ(storedPhones(), before);
  EXPECT_EQ(watch.counts(), (failures::Counts{3, 0}));
  EXPECT_EQ(watch.last(),
            (Failure{FailureKind::Refused, "a value does not fit the entries of Phone", "p"}));
}

TEST(PersonEntries, RefuseAFieldThatAddressesDoNotHave) {
  StoreBuilder().person("p", {});
  const failures::Watch watch;
  changeEntries(OxProPertyAddress, [](PersonEntries& entries) {
    entries.addAddress("Planet", "Mars", std::nullopt);
    entries.setAddressField("Planet", "Mars", std::nullopt);
  });
  EXPECT_EQ(stored(kABAddressProperty), "nothing");
  EXPECT_EQ(watch.counts(), (failures::Counts{2, 0}));
}

TEST(PersonEntries, OfAPropertyOfOneValueAreRefusedAndKeepIt) {
  StoreBuilder().person("p", {.note = "kept"});
  const failures::Watch watch;
  EXPECT_FALSE(PersonEntries(*person("p"), property(OxProPertyNote)).write());
  EXPECT_FALSE(PersonEntries(*person("p"), nullptr).write());
  EXPECT_EQ(std::get<Object>(person("p")->valueForProperty(kABNoteProperty)), Object("kept"));
  EXPECT_EQ(watch.counts(), (failures::Counts{2, 0}));
}

TEST(LabelKeyOf, FindsABuiltInLabelByItsWord) {
  struct Row {
    const char* word;
    std::string_view key;
  };
  const std::vector<Row> rows = {
      {"Home", kABHomeLabel},
      {"MOBILE", kABPhoneMobileLabel},
      {"homepage", kABHomePageLabel},
      {"home fax", kABPhoneHomeFAXLabel},
      {"otherfax", "_$!<OtherFAX>!$_"},
      {"Anniversary", kABAnniversaryLabel},
      {"assistant", kABAssistantLabel},
      {"home boat", "home boat"},
      {"", ""},
      {kABWorkLabel.data(), kABWorkLabel},
  };
  for (const auto& row : rows) EXPECT_EQ(labelKeyOf(row.word), row.key) << row.word;
}

}  // namespace
}  // namespace ox::test
