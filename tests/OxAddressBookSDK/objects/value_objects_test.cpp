#include <gtest/gtest.h>

#include "ox/OxAddressBookSDK/objects/OxObjectAddress.hpp"
#include "ox/OxAddressBookSDK/objects/OxObjectEmail.hpp"
#include "ox/OxAddressBookSDK/objects/OxObjectInstantMessage.hpp"
#include "ox/OxAddressBookSDK/objects/OxObjectPhone.hpp"

namespace ox {
namespace {

TEST(ValueObjects, PhonesAndEmailsKeepTheirTextAsItStands) {
  EXPECT_EQ(OxObjectPhone::initWithPhoneNumber("+1 (555) 01\n")->phoneNumber(),
            Text("+1 (555) 01\n"));
  EXPECT_EQ(OxObjectPhone::initWithPhoneNumber(std::nullopt)->phoneNumber(), std::nullopt);
  EXPECT_EQ(OxObjectEmail::initWithEmail("Ann@Example.COM")->email(), Text("Ann@Example.COM"));
}

TEST(ValueObjects, OfDifferentKindsAreNeverEqual) {
  const Object phone(OxObjectPhone::initWithPhoneNumber("1"));
  EXPECT_EQ(phone, Object(OxObjectPhone::initWithPhoneNumber("1")));
  EXPECT_FALSE(phone == Object(OxObjectPhone::initWithPhoneNumber("2")));
  EXPECT_FALSE(phone == Object(OxObjectEmail::initWithEmail("1")));
  EXPECT_FALSE(phone == Object("1"));
}

TEST(ValueObjects, AnAddressHoldsItsFiveFieldsAndItsCountryCode) {
  const auto address = OxObjectAddress::init();
  for (const auto field : {OxAddressFieldCountryOrArea, OxAddressFieldState, OxAddressFieldCity,
                           OxAddressFieldStreet, OxAddressFieldZIP}) {
    EXPECT_EQ(address->stringValueByFieldName(field), std::nullopt);
    address->setStringValue_forFieldName(std::string(field) + "\n2", field);
  }
  for (const auto field : {OxAddressFieldCountryOrArea, OxAddressFieldState, OxAddressFieldCity,
                           OxAddressFieldStreet, OxAddressFieldZIP}) {
    EXPECT_EQ(address->stringValueByFieldName(field), Text(std::string(field) + "\n2"));
  }
  address->setStringValue_forFieldName(std::nullopt, OxAddressFieldCity);
  EXPECT_EQ(address->stringValueByFieldName(OxAddressFieldCity), std::nullopt);
  address->setStringValue_forFieldName("x", "Planet");
  address->setStringValue_forFieldName("x", nullptr);
  EXPECT_EQ(address->stringValueByFieldName("Planet"), std::nullopt);
  EXPECT_EQ(address->stringValueByFieldName(nullptr), std::nullopt);
  EXPECT_EQ(address->countryCode(), std::nullopt);
  address->setCountryCode("de");
  EXPECT_EQ(address->countryCode(), Text("de"));
}

TEST(ValueObjects, AddressesAreEqualWhenEveryPartIs) {
  const auto address = [](Text city, Text code) {
    auto result = OxObjectAddress::init();
    result->setStringValue_forFieldName(std::move(city), OxAddressFieldCity);
    result->setCountryCode(std::move(code));
    return result;
  };
  EXPECT_TRUE(address("Graz", "AT")->equals(*address("Graz", "AT")));
  EXPECT_FALSE(address("Graz", "AT")->equals(*address("Linz", "AT")));
  EXPECT_FALSE(address("Graz", "AT")->equals(*address("Graz", std::nullopt)));
  EXPECT_FALSE(address("", "AT")->equals(*address(std::nullopt, "AT")));
}

TEST(ValueObjects, InstantMessageAccountsCompareTheirServiceByName) {
  const auto account = [](Text user, TextView service) {
    return OxObjectInstantMessage::initWithUserName_server(
        std::move(user), OxInstantMessageServer::serverWithName(service));
  };
  EXPECT_TRUE(account("ann", "Own")->equals(*account("ann", "Own")));
  EXPECT_TRUE(account("ann", nullptr)->equals(*account("ann", nullptr)));
  EXPECT_FALSE(account("ann", "Own")->equals(*account("ann", "AIM")));
  EXPECT_FALSE(account("ann", "Own")->equals(*account("ann", nullptr)));
  EXPECT_FALSE(account(std::nullopt, "Own")->equals(*account("", "Own")));
}

}  // namespace
}  // namespace ox
