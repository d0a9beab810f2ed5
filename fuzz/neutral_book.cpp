// Neutral books: a body that is given the header and the trailer which make it one, or a book that
// a host fills. What can be written is the same when it was read again.
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "fuzz/made_book.hpp"
#include "fuzz/require.hpp"
#include "ox/OxAddressBookSDK/general/OxAddressBookGeneral.hpp"
#include "ox/OxAddressBookSDK/general/book_format.hpp"
#include "ox/OxAddressBookSDK/general/book_start.hpp"
#include "ox/base/failures.hpp"

namespace {

using namespace ox;

// The groups and persons that the lines of a body seem to be.
std::size_t linesWith(std::string_view body, std::string_view start) {
  std::size_t count = 0;
  for (std::size_t at = 0; at < body.size();) {
    if (body.substr(at).starts_with(start)) ++count;
    const auto end = body.find('\n', at);
    at = end == std::string_view::npos ? body.size() : end + 1;
  }
  return count;
}

std::string bookOf(std::string_view input) {
  const bool withFiles = input.find("\"file\":") != std::string_view::npos;
  std::string body(withFiles ? book_format::kHeaderWithFiles : book_format::kHeader);
  body += input;
  if (!body.ends_with('\n')) body += '\n';
  return body + book_format::trailer(body, linesWith(input, "{\"group\""),
                                     linesWith(input, "{\"person\""));
}

// As a host does: pictures are unpacked then.
void readAll(const OxAddressBookGeneral& book) {
  for (const auto& [key, person] : book.personsDic()) {
    for (const auto& property : OxProperty::StandardPropertyArray()) {
      person->valueByProperty(property);
    }
    for (const auto* name : {"Pair", "X", "Y"}) person->valueByPropertyName(name);
    person->displayName();
    person->thumbnail();
    person->mainPhone();
    person->mainEmail();
    person->tagArray();
    const auto filled = person->notNullValueProperty().size();
    fuzz::require(filled <= person->values().size());
  }
}

bool areEqual(const OxAddressBookGeneral& a, const OxAddressBookGeneral& b) {
  if (a.personsDic().count() != b.personsDic().count()) return false;
  if (a.groupsDic().count() != b.groupsDic().count()) return false;
  for (const auto& [key, person] : a.personsDic()) {
    const auto other = b.personsDic().objectForKey(key);
    if (!other || other->values().size() != person->values().size()) return false;
  }
  return true;
}

void tryBook(const OxAddressBookGeneral& book) {
  readAll(book);
  const auto written = book.saveToData();
  if (!written) return;  // something that no file holds, noticed as such
  fuzz::require(bookStartOf(*written) == BookStart::ThisVersion);
  const auto again = OxAddressBookGeneral::addressBookWithData(written);
  fuzz::require(again && *again->saveToData() == *written && areEqual(book, *again));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const failures::Watch watch;
  // A line of a book begins with a brace.
  constexpr std::uint8_t kMade = 16;
  if (size > 0 && data[0] < kMade) {
    fuzz::Input input(data + 1, size - 1);
    tryBook(*fuzz::makeBook(input));
    return 0;
  }
  const std::string_view input(reinterpret_cast<const char*>(data), size);
  bookStartOf(input);
  if (OxAddressBookGeneral::addressBookWithData(makeData(std::string(input)))) return 0;
  const auto book = OxAddressBookGeneral::addressBookWithData(makeData(bookOf(input)));
  if (book) tryBook(*book);
  return 0;
}
