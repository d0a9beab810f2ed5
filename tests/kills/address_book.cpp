#include "tests/kills/address_book.hpp"

#include <stdexcept>
#include <string>
#include <vector>

#include "ox/base/base64.hpp"
#include "ox/images/image_codec.hpp"
#include "tests/images/picture_files.hpp"
#include "tests/kills/killed_run.hpp"
#include "tests/oxcontacts/program.hpp"
#include "tests/support/store_environment.hpp"

namespace ox::kills {
namespace {

using program_tests::card;
using support::temporaryFile;
using support::temporaryPath;

void run(const std::vector<std::string>& arguments) {
  const auto result = runAlive(program_tests::programCommand(arguments));
  if (result.exitCode != 0) throw std::runtime_error(arguments[0] + ": " + result.errors);
}

std::string photoLine(std::uint8_t shade) {
  return "PHOTO;ENCODING=b;TYPE=JPEG:" + base64(images::flatJpeg(60, 40, {shade, 10, 10}));
}

void writeFiles() {
  const auto eve = card({"FN:Eve", "N:;Eve;;;", "UID:eve", "TEL;TYPE=HOME:9", photoLine(90)});
  const auto fay = card({"FN:Fay", "N:;Fay;;;", "UID:fay", "NOTE:" + std::string(5'000, 'f')});
  temporaryFile("persons.vcf", eve + fay);
  temporaryFile("cards.vcf",
                eve + fay +
                    card({"FN:Choir", "N:Choir", "UID:choir", "X-ADDRESSBOOKSERVER-KIND:group",
                          "X-ADDRESSBOOKSERVER-MEMBER:urn:uuid:eve",
                          "X-ADDRESSBOOKSERVER-MEMBER:urn:uuid:fay"}));
  temporaryFile("tagged.vcf", card({"FN:Eve", "N:;Eve;;;", "UID:eve", "CATEGORIES:golf,Sailors"}) +
                                  card({"FN:Fay", "N:;Fay;;;", "UID:fay", "CATEGORIES:Sailors"}));
  temporaryFile("untagged.vcf", card({"FN:Eve", "N:;Eve;;;", "UID:eve"}) +
                                    card({"FN:Fay", "N:;Fay;;;", "UID:fay"}));
  temporaryFile("persons.csv", "UID,First Name,Tags,Phone 1 - Value\neve,Eve,golf,1\nfay,Fay,,2\n");
  temporaryFile("changed.vcf", card({"FN:Ann Lee", "N:Lee;Ann;;;", "UID:ann", "TEL:77"}) + eve);
  temporaryFile("photo.tiff", *images::encodeTiff(images::patterned(30, 20)));
}

}  // namespace

void fillAddressBook() {
  writeFiles();
  const auto ann = card({"FN:Ann Lee", "N:Lee;Ann;;;", "UID:ann", "TEL;TYPE=HOME:1",
                         "TEL;TYPE=WORK:2", "EMAIL:ann@lee", photoLine(200)});
  const auto ben = card({"FN:Ben Ray", "N:Ray;Ben;;;", "UID:ben", "BDAY:1990-05-17"});
  const auto cid = card({"FN:Cid", "N:;Cid;;;", "UID:cid", "NOTE:" + std::string(6'000, 'c')});
  run({"import", temporaryFile("first.vcf", ann + ben + cid).string()});
  run({"add-group", "_local", "Friends"});
  run({"add-group", "_local", "Close", "--under", "Friends"});
  run({"add-group", "_local", "Club"});
  run({"group-add", "Friends", "Ann Lee", "Ben Ray"});
  run({"group-add", "Close", "Cid"});
  run({"group-add", "Club", "Ben Ray"});
  run({"accounts", "add", "Work", "--type", "local", "--identifier", "W:ABAccount"});
  run({"accounts", "add", "Old", "--identifier", "O:ABAccount"});
  run({"add-person", "Work", "name=Dora", "phone=4"});
  run({"tag", "Ann Lee", "--add", "work", "--add", "golf"});
  run({"tag", "Ben Ray", "--add", "chess"});
  run({"tag", "Dora", "--add", "night"});
  run({"backup", "_local", temporaryPath("local.book").string()});
  // What the backup does not hold, a restore takes away.
  run({"add-person", "_local", "name=Gus", "phone=5"});
  run({"tag", "Gus", "--add", "late"});
}

}  // namespace ox::kills
