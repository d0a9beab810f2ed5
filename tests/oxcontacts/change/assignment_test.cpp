#include "oxcontacts/edit/assignment.hpp"

#include <gtest/gtest.h>

#include "ox/OxAddressBookSDK/objects/OxObjectEmail.hpp"
#include "ox/OxAddressBookSDK/objects/OxObjectInstantMessage.hpp"
#include "ox/OxAddressBookSDK/objects/OxObjectPersonName.hpp"
#include "ox/OxAddressBookSDK/objects/OxObjectPhone.hpp"
#include "oxcontacts/context.hpp"

namespace ox::program {
namespace {

std::string shown(const Text& text) {
  return text ? "'" + *text + "'" : "none";
}

std::string shown(const Object& value) {
  if (value.isMissing()) return "none";
  if (value.text()) return shown(Text(*value.text()));
  if (const auto* date = value.as<Date>()) return date->toText();
  if (const auto phone = value.host<OxObjectPhone>()) return "phone " + shown(phone->phoneNumber());
  if (const auto email = value.host<OxObjectEmail>()) return "email " + shown(email->email());
  if (const auto name = value.host<OxObjectPersonName>()) {
    return shown(name->first()) + " " + shown(name->middle()) + " " + shown(name->last());
  }
  if (const auto account = value.host<OxObjectInstantMessage>()) {
    return account->server()->name() + " " + shown(account->userName());
  }
  std::string text;
  for (const auto& [key, entry] : value.dictionary()->entries()) text += key + shown(entry);
  return text;
}

std::string parsed(const std::string& text) {
  try {
    const auto assignment = parseAssignment(text);
    return assignment.property->name().substr(10) +
           (assignment.part.empty() ? "" : "." + assignment.part) + (assignment.adds ? "+" : "") +
           " " + assignment.label.value_or("-") + " " + shown(assignment.value);
  } catch (const CommandError& error) {
    return std::to_string(error.code()) + " " + error.what();
  }
}

TEST(Assignment, IsReadAsItStands) {
  struct Row {
    const char* text;
    const char* read;
  };
  const std::vector<Row> rows = {
      {"phone=+1 555", "Phone - phone '+1 555'"},
      {"PHONE+=1=2", "Phone+ - phone '1=2'"},
      {"phone:work=1", "Phone _$!<Work>!$_ phone '1'"},
      {"phone+:Boat=1", "Phone+ Boat phone '1'"},
      {"phone:Boat+=1", "Phone+ Boat phone '1'"},
      {"phone:work=", "Phone _$!<Work>!$_ none"},
      {"phone=", "Phone - none"},
      {"phone:MOBILE=1", "Phone _$!<Mobile>!$_ phone '1'"},
      {"phone:home fax=1", "Phone _$!<HomeFAX>!$_ phone '1'"},
      {"phone:homefax=1", "Phone _$!<HomeFAX>!$_ phone '1'"},
      {"urls:homepage=x", "URLs _$!<HomePage>!$_ 'x'"},
      {"urls:Home Page=x", "URLs _$!<HomePage>!$_ 'x'"},
      {"phone:home boat=1", "Phone home boat phone '1'"},
      {"phone:other fax=1", "Phone _$!<OtherFAX>!$_ phone '1'"},
      {"phone:iphone=1", "Phone _$!<iPhone>!$_ phone '1'"},
      {"relatednames+:mother=Eva", "RelatedNames+ _$!<Mother>!$_ 'Eva'"},
      {"email=a@b", "Email - email 'a@b'"},
      {"name=Ann", "Name - 'Ann' none none"},
      {"name=Ann Lee", "Name - 'Ann' none 'Lee'"},
      {"name=Ann Mary  Lee ", "Name - 'Ann Mary' none 'Lee'"},
      {"name=", "Name - none"},
      {"name.First=Zo\u00EB", "Name.first - 'Zo\u00EB'"},
      {"name.last=", "Name.last - none"},
      {"address.city:home=Oslo", "Address.city _$!<Home>!$_ 'Oslo'"},
      {"birthday=1990-05-17", "Birthday - 1990-05-17"},
      {"birthday=--05-17", "Birthday - --05-17"},
      {"date+:anniversary=2001-02-28", "Date+ _$!<Anniversary>!$_ 2001-02-28"},
      {"instantmessage=Skype:ann", "InstantMessage - Skype 'ann'"},
      {"socialprofile=S:ann", "SocialProfile - serviceName'S'username'ann'"},
      {"note=a:b", "Note - 'a:b'"},
      {"company=", "Company - none"},
  };
  for (const auto& row : rows) EXPECT_EQ(parsed(row.text), row.read) << row.text;
}

TEST(Assignment, SaysWhatIsWrong) {
  struct Row {
    const char* text;
    const char* reason;
  };
  const std::vector<Row> rows = {
      {"phone", "2 \"phone\" is not of the form PROPERTY=VALUE"},
      {"fax=1", "2 there is no property \"fax\"; there are name, phone, email, title, "},
      {"=1", "2 there is no property \"\""},
      {"thumbnail=x", "2 a picture is set by `photo`"},
      {"tags=x", "2 tags are set by `tag`"},
      {"birthday=1990-02-30", "2 \"1990-02-30\" is no date; write 1990-05-17"},
      {"birthday=1990-05", "2 \"1990-05\" is no date"},
      {"birthday=soon", "2 \"soon\" is no date"},
      {"note+=x", "2 \"note\" has one value, without a label"},
      {"name:work=x", "2 \"name\" has one value, without a label"},
      {"phone:=1", "2 the label after \"phone:\" is missing"},
      {"phone+=", "2 there is nothing to add"},
      {"phone.area=1", "2 \"phone\" has no part \"area\""},
      {"name.nick=1", "2 \"name\" has no part \"nick\"; it has first middle last"},
      {"name.=1", "2 \"name\" has no part \"\""},
      {"address=Street 1", "2 an address is given by its parts: address.street="},
      {"instantmessage=ann", "2 \"ann\" is no account; write SERVICE:NAME"},
      {"instantmessage=:ann", "2 \":ann\" is no account"},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(parsed(row.text).substr(0, std::string(row.reason).size()), row.reason);
  }
}

}  // namespace
}  // namespace ox::program
