#include "ox/OxMacAddressBookSDK/admin/written_book.hpp"

#include <algorithm>

#include "ox/OxAddressBookSDK/general/OxAddressBookGeneral.hpp"
#include "ox/OxAddressBookSDK/general/book_writer.hpp"
#include "ox/OxMacAddressBookSDK/ground/one_moment.hpp"
#include "ox/OxMacAddressBookSDK/ground/progress.hpp"
#include "ox/base/hash_set.hpp"
#include "ox/base/text/keyed_hash.hpp"
#include "ox/base/text/utf8.hpp"

namespace ox {
namespace {

// A book that lists a record twice holds it once, and identifiers that are no UTF-8 may become one
// when they are repaired. No may be wrong now and then.
template <typename Records>
bool haveDistinctKeys(const Records& records) {
  HashSet met;
  return std::ranges::all_of(records, [&](const auto& record) {
    auto identifier = record ? record->ID() : std::nullopt;
    return !identifier || met.insert(keyedHash(validUtf8(*std::move(identifier))));
  });
}

}  // namespace

bool writeBook(OxMacAddressBook& book, BookSink& sink,
               const std::function<void(double)>& progress) {
  const OneMoment moment;
  const auto groups = book.allGroups();
  const auto list = book.allPersons();
  const auto persons = list ? list->snapshot() : Persons();
  const std::size_t total = groups.size() + persons.size();
  const auto report = [&](double percent) {
    if (progress) progress(percent);
  };
  const auto addAll = [&](auto& collected) {
    // A save counts its items from 0 where a load counts them from 1, so its first report is 0 and
    // the last item does not reach 100. Required.
    std::size_t index = 0;
    for (const auto& group : groups) {
      collected.addGroup(group);
      report(progress::percent(index++, total));
    }
    for (const auto& person : persons) {
      collected.addPerson(person);
      report(progress::percent(index++, total));
    }
    report(progress::kDone);
  };
  if (haveDistinctKeys(groups) && haveDistinctKeys(persons)) {
    BookWriter writer(sink);
    addAll(writer);
    return writer.finish();
  }
  const auto general = OxAddressBookGeneral::init();
  addAll(*general);
  const auto data = general->saveToData();
  if (data) sink.append(*data);
  return data != nullptr;
}

}  // namespace ox
