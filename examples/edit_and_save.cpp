// Gives a person another phone number, saves the book, says what failed on the way, and writes a
// backup of the book to a file: edit_and_save PERSON NUMBER FILE
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <future>
#include <memory>
#include <string>
#include <system_error>
#include <utility>

#include "ox/OxAddressBookSDK/objects/OxObjectPhone.hpp"
#include "ox/OxAddressBookSDK/values/OxMutableMultipleValue.hpp"
#include "ox/OxMacAddressBookSDK/OxMacAddressBook.hpp"
#include "ox/base/failures.hpp"

namespace {

using Book = std::shared_ptr<ox::OxMacAddressBook>;
using Person = std::shared_ptr<ox::IOxPerson>;

// The first person of that name, with the book it is in; nulls when there is none.
std::pair<Book, Person> personNamed(const std::string& name) {
  const auto books = ox::OxMacAddressBook::addressBookArrayWithProgressBlock(
      [](double percent, bool) { std::fprintf(stderr, "\r%3.0f %%", percent); });
  std::fputc('\n', stderr);
  for (const auto& book : books) {
    const auto persons = book->allPersons();
    if (!persons) continue;
    for (const auto& person : persons->snapshot()) {
      if (person->displayName() == name) return {book, person};
    }
  }
  return {};
}

// The main number becomes this one; the others, and every label, stay.
void changePhone(ox::IOxPerson& person, const std::string& number) {
  const auto old = ox::multipleOf(person.valueByPropertyName(ox::OxProPertyPhone));
  const auto phones = ox::OxMutableMultipleValue::init();
  const auto main = old ? old->mainValue() : nullptr;
  const auto changed = main ? main->copySingle() : ox::OxMutableSingleValue::init();
  changed->setType(ox::value_type::kPhone);
  changed->setValue(ox::OxObjectPhone::initWithPhoneNumber(number));
  for (std::uint64_t i = 0; old && i < old->count(); ++i) {
    const auto phone = old->valueAtIndex(i);
    phones->addValue(phone == main ? changed : phone);
  }
  if (!main) phones->addValue(changed);
  phones->setMainValue(changed);
  person.setValue_byPropertyName(phones, ox::OxProPertyPhone);
}

// The whole book as data, put together on a thread of the library; missing when that failed.
ox::Data backupOf(const Book& book) {
  const auto data = std::make_shared<std::promise<ox::Data>>();
  book->saveDataBlock([data](bool finished, const ox::Data& bytes, double) {
    if (finished) data->set_value(bytes);
  });
  return data->get_future().get();
}

// The new file takes the old one's place when it is whole.
bool replaceFile(const std::filesystem::path& path, const std::string& bytes) {
  const auto fresh = path.string() + ".new";
  std::ofstream file(fresh, std::ios::binary);
  file << bytes;
  file.close();
  std::error_code error;
  if (file) std::filesystem::rename(fresh, path, error);
  return file && !error;
}

// No operation reports an error: what went wrong since the watch was opened stands in it.
bool tell(const ox::failures::Watch& watch) {
  for (const auto& failure : watch.all()) {
    std::fprintf(stderr, "%s: %s (%s)\n", failure.isRefusal() ? "refused" : "failed",
                 failure.reason.c_str(), failure.subject.c_str());
  }
  return watch.isClear();
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 4) {
    std::fputs("edit_and_save PERSON NUMBER FILE\n", stderr);
    return 2;
  }
  const ox::failures::Watch watch;
  const auto [book, person] = personNamed(argv[1]);
  if (!person) {
    if (tell(watch)) std::fprintf(stderr, "there is no %s\n", argv[1]);
    return 1;
  }
  changePhone(*person, argv[2]);
  book->save();
  const auto data = backupOf(book);
  // A backup that was not made whole must not take the place of an earlier one.
  if (!tell(watch) || !data) return 1;
  if (!replaceFile(argv[3], *data)) {
    std::fprintf(stderr, "failed: %s cannot be written\n", argv[3]);
    return 1;
  }
  std::printf("%s has the number %s now\n", argv[1], argv[2]);
}
