// What any host does: finds the books, makes a person, saves, and has it back from the store, from
// a neutral book and from a vCard. Exit code 0 when all of it worked.
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "base/text.hpp"
#include "ox/OxAddressBookSDK/general/OxAddressBookGeneral.hpp"
#include "ox/OxMacAddressBookSDK/OxMacAddressBook.hpp"
#include "ox/OxMacAddressBookSDK/_ABPerson/_ABPerson.hpp"
#include "ox/OxMacAddressBookSDK/version.hpp"
#include "ox/base/serial_queue.hpp"
#include "ox/platform/AddressBook/ABAddressBook.hpp"
#include "ox/sync/logins.hpp"
#include "ox/sync/synchronise.hpp"
#include "ox/transfer/exporter.hpp"
#include "ox/transfer/importer.hpp"

namespace {

int failed = 0;

void expect(bool holds, const char* what) {
  if (holds) return;
  std::fprintf(stderr, "host: %s\n", what);
  failed = 1;
}

ox::OxValuePtr phones(const char* number) {
  auto phone = ox::OxMutableSingleValue::init();
  phone->setValue(ox::OxObjectPhone::initWithPhoneNumber(std::string(number)));
  phone->setType(ox::value_type::kPhone);
  auto value = ox::OxMutableMultipleValue::init();
  value->addValue(phone);
  value->setMainValue(phone);
  return value;
}

void edit(const std::shared_ptr<ox::OxMacAddressBook>& book) {
  const auto person = book->newPerson();
  if (!person) return expect(false, "no new person");
  auto company = ox::OxMutableSingleValue::init();
  company->setValue("Brightwater");
  person->setValue_byPropertyName(company, ox::OxProPertyCompany);
  person->setValue_byPropertyName(phones("+1 555 0100"), ox::OxProPertyPhone);
  book->save();
  expect(!ox::ABAddressBook::sharedAddressBook()->hasUnsavedChanges(), "changes are left unsaved");

  const auto record = ox::ABAddressBook::sharedAddressBook()->recordForUniqueId(person->ID());
  const auto host = ox::hostPerson(record);
  if (!host) return expect(false, "a record does not answer the model's interface");
  expect(host == person, "the store's record is another object");
  expect(host->displayName() == ox::Text("Brightwater"), "another display name");
  const auto phone = host->mainPhone();
  expect(phone && phone->phoneNumber() == ox::Text("+1 555 0100"), "another phone number");

  const auto general = ox::OxAddressBookGeneral::init();
  general->addPerson(host);
  const auto again = ox::OxAddressBookGeneral::addressBookWithData(general->saveToData());
  expect(again && again->personsDic().count() == 1, "the neutral book came back different");
}

void transfer(const std::string& folder, const std::string& book) {
  const std::string file = folder + "/one.vcf";
  std::ofstream(file)
      << "BEGIN:VCARD\r\nVERSION:3.0\r\nFN:Mia Holm\r\nN:Holm;Mia;;;\r\nEND:VCARD\r\n";
  const auto report = ox::vcard::importFiles({file}, book, {});
  expect(report.added == 1 && report.failure.empty(), "the card was not imported");

  const auto people = ox::ABAddressBook::sharedAddressBook()->people();
  std::vector<ox::RecordKey> keys;
  for (const auto& person : people) keys.push_back(person->key());
  std::string cards;
  const auto taken = [&](std::string_view card) {
    cards += card;
    return true;
  };
  ox::vcard::exportCards(keys, {}, ox::vcard::CardVersion::V40, taken);
  expect(cards.find("FN:Mia Holm\r\n") != std::string::npos, "the card was not exported");
}

void bringInStep(const std::string& folder) {
  ox::sync::LoginSettings login;
  login.kind = ox::sync::LoginSettings::Kind::Folder;
  login.url = folder;
  const auto offer = ox::sync::offerOf(login, {});
  ox::sync::addLogin("Cards", login, offer, {{offer.books.front(), {}, "Cards"}});
  const auto reports = ox::sync::synchronise({});
  expect(reports.size() == 1 && reports.front().down.added == 1, "the folder's card is not here");
  expect(ox::sync::openConflicts().empty(), "a conflict was made");
  try {
    ox::sync::settingsOf("Nobody's");
    expect(false, "a login that nobody has was found");
  } catch (const ox::sync::RemoteError& error) {
    expect(error.kind() == ox::sync::RemoteFailure::Usage, "another kind of failure");
  }
}

void throwThroughTheLibrary() {
  try {
    ox::OxMacAddressBook::addressArrayQueue().sync(
        [] { throw std::domain_error("the host's own"); });
    expect(false, "an exception was lost");
  } catch (const std::domain_error&) {
  }
}

}  // namespace

int main(int, char** arguments) {
  expect(decoyText() == 1, "the host's own header was not taken");
  throwThroughTheLibrary();
  const auto books = ox::OxMacAddressBook::addressBookArray();
  if (books.size() == 0) return std::fprintf(stderr, "host: no books\n"), 1;
  const auto book = books.element(0);
  expect(book->ID() == ox::Text("_local"), "the first book is not the local one");
  expect(book->thumbnail() != nullptr, "the pictures are not found");
  expect(std::string_view(ox::OxMacAddressBookSDKVersionString).substr(0, 4) == "@(#)",
         "no version");
  edit(book);
  transfer(arguments[1], "_local");
  bringInStep(arguments[1]);
  return failed;
}
