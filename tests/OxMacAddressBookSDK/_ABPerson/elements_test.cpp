#include "ox/OxMacAddressBookSDK/_ABPerson/convert/elements.hpp"

#include <gtest/gtest.h>

#include "tests/OxMacAddressBookSDK/fixtures.hpp"

namespace ox {
namespace {

const _ABPerson& anyPerson() {
  static const auto& person = *new _ABPerson(RecordKey::of("p"));
  return person;
}

Object::DictionaryPtr dictionary(Dictionary entries) {
  return std::make_shared<const Dictionary>(std::move(entries));
}

TEST(Converters, LineFeedsLeavePhonesAndEmailsOnReadingOnly) {
  const auto& person = anyPerson();
  const struct {
    Text stored;
    Text read;
  } rows[] = {
      {"+1 23\n4", "+1 234"}, {"\n\n1\n", "1"}, {"1\r2", "1\r2"}, {"", ""}, {"\n", ""},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(person.converterPhoneValueFromMacValue(row.stored)->phoneNumber(), row.read);
    EXPECT_EQ(person.converterEmailValueFromMacValue(row.stored)->email(), row.read);
    EXPECT_EQ(person.converterPhoneValueToMacValue(OxObjectPhone::initWithPhoneNumber(row.stored)),
              row.stored);
    EXPECT_EQ(person.converterEmailValueToMacValue(OxObjectEmail::initWithEmail(row.stored)),
              row.stored);
  }
}

TEST(Converters, AMissingElementGivesAMissingOne) {
  const auto& person = anyPerson();
  EXPECT_EQ(person.converterPhoneValueFromMacValue(std::nullopt), nullptr);
  EXPECT_EQ(person.converterPhoneValueToMacValue(nullptr), Text());
  EXPECT_EQ(person.converterEmailValueFromMacValue(std::nullopt), nullptr);
  EXPECT_EQ(person.converterEmailValueToMacValue(nullptr), Text());
  EXPECT_EQ(person.converterAddressValueFromMacValue(nullptr), nullptr);
  EXPECT_EQ(person.converterAddressValueToMacValue(nullptr), nullptr);
  EXPECT_EQ(person.converterInstantValueFromMacValue(nullptr), nullptr);
  EXPECT_EQ(person.converterInstantValueToMacValue(nullptr), nullptr);
}

TEST(AddressConverter, CarriesSixEntriesAndDropsTheRest) {
  const auto address = anyPerson().converterAddressValueFromMacValue(
      dictionary({{std::string(kABAddressCountryCodeKey), "ch"},
                  {std::string(kABAddressCountryKey), "Schweiz"},
                  {std::string(kABAddressStateKey), "ZH"},
                  {std::string(kABAddressCityKey), "Zürich"},
                  {std::string(kABAddressStreetKey), "Weg 1\nHof"},
                  {std::string(kABAddressZIPKey), ""},
                  {"Planet", "Earth"}}));
  EXPECT_EQ(address->countryCode(), Text("ch"));
  EXPECT_EQ(address->stringValueByFieldName(OxAddressFieldCountryOrArea), Text("Schweiz"));
  EXPECT_EQ(address->stringValueByFieldName(OxAddressFieldState), Text("ZH"));
  EXPECT_EQ(address->stringValueByFieldName(OxAddressFieldCity), Text("Zürich"));
  EXPECT_EQ(address->stringValueByFieldName(OxAddressFieldStreet), Text("Weg 1\nHof"));
  EXPECT_EQ(address->stringValueByFieldName(OxAddressFieldZIP), Text(""));

  std::string keys;
  const auto stored = anyPerson().converterAddressValueToMacValue(address);
  for (const auto& [key, value] : stored->entries()) {
    keys += key + "=" + *value.text() + ";";
  }
  EXPECT_EQ(keys, "CountryCode=ch;Country=Schweiz;State=ZH;City=Zürich;Street=Weg 1\nHof;ZIP=;");
}

TEST(AddressConverter, WithoutCountryCodeTakesTheUsersOwnAndWritesItBack) {
  support::setUserLocale("de_DE.UTF-8");
  const auto address = anyPerson().converterAddressValueFromMacValue(
      dictionary({{std::string(kABAddressCityKey), "Ulm"}}));
  EXPECT_EQ(address->countryCode(), Text("DE"));
  EXPECT_EQ(address->stringValueByFieldName(OxAddressFieldStreet), Text());
  EXPECT_EQ(*anyPerson().converterAddressValueToMacValue(address),
            (Dictionary{{std::string(kABAddressCountryCodeKey), "DE"},
                        {std::string(kABAddressCityKey), "Ulm"}}));
  EXPECT_TRUE(anyPerson().converterAddressValueToMacValue(OxObjectAddress::init())->empty());
}

TEST(InstantMessageConverter, NamesTheServiceAndSkipsAnAccountWithoutUser) {
  const auto& person = anyPerson();
  const std::string user(kABInstantMessageUsernameKey);
  const std::string service(kABInstantMessageServiceKey);
  const auto full = dictionary({{user, "ann"}, {service, "QQ"}});
  const auto account = person.converterInstantValueFromMacValue(full);
  EXPECT_EQ(account->userName(), Text("ann"));
  EXPECT_EQ(account->server(), OxInstantMessageServer::serverWithName("QQ"));
  EXPECT_EQ(*person.converterInstantValueToMacValue(account), *full);

  const auto unserved = dictionary({{user, "ann"}});
  EXPECT_EQ(person.converterInstantValueFromMacValue(unserved)->server(), nullptr);
  EXPECT_EQ(
      *person.converterInstantValueToMacValue(person.converterInstantValueFromMacValue(unserved)),
      *unserved);

  const auto nameless = person.converterInstantValueFromMacValue(dictionary({{service, "QQ"}}));
  EXPECT_EQ(nameless->userName(), Text());
  EXPECT_TRUE(person.converterInstantValueToMacValue(nameless)->empty());
  const auto emptyUser = OxObjectInstantMessage::initWithUserName_server("", nullptr);
  EXPECT_EQ(*person.converterInstantValueToMacValue(emptyUser), (Dictionary{{user, ""}}));
}

TEST(Elements, OfOtherTypesAreTheSameObjectOnBothSides) {
  const Object date(Date{1990, 5, 17, {}, {}});
  const Object profile(Dictionary{{"serviceName", "x"}});
  for (const std::int32_t type : {0, 1, 5, 8, 10, 11, 99}) {
    for (const Object& object : {date, profile, Object("text"), Object()}) {
      EXPECT_EQ(convert::elementFromStored(object, type), object);
      EXPECT_EQ(convert::storedFromElement(object, type), object);
    }
    EXPECT_EQ(convert::elementFromStored("", type), Object(""));
    EXPECT_EQ(convert::storedFromElement("", type), type == 0 ? Object() : Object(""));
  }
}

TEST(Elements, OfAnotherKindThanTheirTypeAreMissing) {
  for (const std::int32_t type : {6, 7, 9, 13}) {
    EXPECT_TRUE(convert::elementFromStored(Object(std::int64_t{1}), type).isMissing());
    EXPECT_TRUE(convert::storedFromElement("text", type).isMissing());
    EXPECT_TRUE(
        convert::storedFromElement(OxObjectPersonName::initWithFirst_middle_last("a", {}, {}), type)
            .isMissing());
  }
}

}  // namespace
}  // namespace ox
