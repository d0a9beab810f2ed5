// What the words PERSON and GROUP mean.
#include <charconv>
#include <iostream>
#include <unordered_set>

#include "ox/OxMacAddressBookSDK/ground/one_moment.hpp"
#include "ox/OxMacAddressBookSDK/registry/person_book.hpp"
#include "ox/platform/AddressBook/ABAddressBook.hpp"
#include "oxcontacts/find.hpp"
#include "oxcontacts/output/terminal_text.hpp"
#include "oxcontacts/wanted_name.hpp"

namespace ox::program {
namespace {

std::shared_ptr<ABAddressBook> store() {
  return ABAddressBook::sharedAddressBook();
}

template <typename Record, typename Records>
std::vector<std::shared_ptr<Record>> hostsOf(
    Records records, std::shared_ptr<Record> (*host)(std::shared_ptr<ABRecord>)) {
  std::vector<std::shared_ptr<Record>> hosts;
  hosts.reserve(records.size());
  for (auto& record : records) {
    if (auto each = host(std::move(record))) hosts.push_back(std::move(each));
  }
  return hosts;
}

// How each kind of record is looked for and told from others.
struct PersonKind {
  using Record = _ABPerson;
  static constexpr const char* kName = "person";
  static constexpr const char* kEnding = ":ABPerson";
  static constexpr auto kKind = RecordKind::Person;

  static std::shared_ptr<_ABPerson> host(std::shared_ptr<ABRecord> record) {
    return hostPerson(std::move(record));
  }
  // Those whose names hold all words; all of them where nothing that was typed is a word.
  static std::vector<std::shared_ptr<_ABPerson>> thatMayBe(const std::string& text) {
    const bool hasWords = WantedName(text).hasWords();
    return hostsOf<_ABPerson>(hasWords ? store()->peopleNamed(text) : store()->people(),
                              &hostPerson);
  }
  // Nicknames and other spellings count, which the search has looked at.
  static bool isMeant(const WantedName& wanted, const Text&) { return wanted.hasWords(); }
  static std::string detail(const _ABPerson& person) {
    const auto value = person.valueForProperty(kABPhoneProperty);
    const auto* numbers = std::get_if<MultiValuePtr>(&value);
    if (numbers == nullptr || !*numbers || (*numbers)->entries.empty()) return {};
    return (*numbers)->entries.front().value.toText().value_or("");
  }
};

struct GroupKind {
  using Record = _ABGroup;
  static constexpr const char* kName = "group";
  static constexpr const char* kEnding = ":ABGroup";
  static constexpr auto kKind = RecordKind::Group;

  static std::shared_ptr<_ABGroup> host(std::shared_ptr<ABRecord> record) {
    return hostGroup(std::move(record));
  }
  static std::vector<std::shared_ptr<_ABGroup>> thatMayBe(const std::string&) {
    return hostsOf<_ABGroup>(store()->groups(), &hostGroup);
  }
  static bool isMeant(const WantedName& wanted, const Text& name) { return wanted.isPartOf(name); }
  static std::string detail(const _ABGroup& group) {
    return std::to_string(group.persons().size()) + " persons";
  }
};

template <typename Kind>
using Found = std::vector<std::shared_ptr<typename Kind::Record>>;

// One of several that may be meant: its name, book, telephone number or size, and short ID.
template <typename Kind>
std::string lineOf(const typename Kind::Record& record, const BookNames& books) {
  auto line = record.displayName().value_or("") + " (" + books.nameOf(record.addressBookID());
  if (const auto detail = Kind::detail(record); !detail.empty()) line += ", " + detail;
  return line + ", " + record.key().shortText() + ")";
}

// Missing when the answer is none of them.
template <typename Kind>
std::shared_ptr<typename Kind::Record> askedFor(const std::string& text, const Found<Kind>& found) {
  const BookNames books;
  std::cerr << "Which " << Kind::kName << " is \"" << terminalText(text) << "\"?\n";
  for (std::size_t i = 0; i < found.size(); ++i) {
    std::cerr << "  " << i + 1 << "  " << terminalText(lineOf<Kind>(*found[i], books)) << '\n';
  }
  std::cerr << "Number (nothing to leave it): " << std::flush;
  std::string answer;
  std::getline(std::cin, answer);
  std::size_t number = 0;
  const auto read = std::from_chars(answer.data(), answer.data() + answer.size(), number);
  const bool isNumber = read.ec == std::errc() && read.ptr == answer.data() + answer.size();
  if (!isNumber || number == 0 || number > found.size()) return nullptr;
  return found[number - 1];
}

// The one of them, which are not none.
template <typename Kind>
std::shared_ptr<typename Kind::Record> oneOf(const std::string& text, const Found<Kind>& found) {
  constexpr std::size_t kAsked = 20;
  if (found.size() == 1) return found.front();
  if (Context::canAsk() && found.size() <= kAsked) {
    if (auto chosen = askedFor<Kind>(text, found)) return chosen;
  }
  const BookNames books;
  std::vector<std::string> lines;
  for (std::size_t i = 0; i < found.size() && i < kListedCandidates; ++i) {
    lines.push_back(lineOf<Kind>(*found[i], books));
  }
  throwAmbiguous(Kind::kName, text, lines, found.size());
}

// Of the candidates those with that name, as exactly as any of them.
template <typename Kind>
Found<Kind> namedLike(const std::string& text, const Found<Kind>& candidates, bool onlyWhole) {
  const WantedName wanted(text);
  Found<Kind> whole;
  Found<Kind> nearly;
  Found<Kind> partly;
  for (const auto& record : candidates) {
    const auto name = record->displayName();
    if (wanted.isNameOf(name)) whole.push_back(record);
    if (wanted.isNearlyNameOf(name)) nearly.push_back(record);
    if (Kind::isMeant(wanted, name)) partly.push_back(record);
  }
  if (!whole.empty() || onlyWhole) return whole;
  return nearly.empty() ? partly : nearly;
}

template <typename Kind>
Found<Kind> withIdBeginning(const std::string& text, bool onlyWhole) {
  // Shorter ones are rather names, and begin the identifiers of years.
  constexpr std::size_t kShortest = 8;
  constexpr std::size_t kMost = 50;
  if (text.size() < (onlyWhole ? RecordKey::kShortTextSize : kShortest)) return {};
  return hostsOf<typename Kind::Record>(store()->recordsStartingWith(text, Kind::kKind, kMost),
                                        &Kind::host);
}

// Those of a book, where the text is BOOK/NAME.
template <typename Kind>
Found<Kind> namedInBook(const std::string& text) {
  Found<Kind> found;
  const auto slash = text.find('/');
  if (slash == std::string::npos || slash + 1 == text.size()) return found;
  const auto name = text.substr(slash + 1);
  const auto candidates = Kind::thatMayBe(name);
  for (const auto& book : booksOfAccountsNamed(text.substr(0, slash))) {
    Found<Kind> held;
    for (const auto& record : candidates) {
      if (record->addressBookID() == book->ID()) held.push_back(record);
    }
    for (auto& record : namedLike<Kind>(name, held, false)) found.push_back(std::move(record));
  }
  return found;
}

// Where records are looked for: in all books, or in one.
class Place {
 public:
  explicit Place(const Context& context) {
    if (!context.book.empty() && context.book != kAllBooks)
      book_ = findBook(BookList(), context.book)->ID();
  }

  template <typename Record>
  std::vector<std::shared_ptr<Record>> of(std::vector<std::shared_ptr<Record>> records) const {
    if (book_) {
      std::erase_if(records, [&](const auto& record) { return record->addressBookID() != book_; });
    }
    return records;
  }

 private:
  Text book_;
};

// Those that are meant, one or several.
template <typename Kind>
Found<Kind> findRecords(const std::string& text, const Place& place, bool onlyWhole) {
  for (const auto& identifier : {text, text + Kind::kEnding}) {
    if (auto record = Kind::host(store()->recordForUniqueId(identifier))) {
      auto found = place.of(Found<Kind>{std::move(record)});
      if (!found.empty()) return found;
    }
  }
  auto found = namedLike<Kind>(text, place.of(Kind::thatMayBe(text)), onlyWhole);
  if (found.empty()) found = place.of(withIdBeginning<Kind>(text, onlyWhole));
  if (found.empty() && !onlyWhole) found = place.of(namedInBook<Kind>(text));
  if (found.empty()) throwNotFound(Kind::kName, text);
  return found;
}

// Somebody may be asked, and nothing is read of one moment while that waits.
template <typename Kind>
std::shared_ptr<typename Kind::Record> findRecord(const Context& context, const std::string& text,
                                                  bool onlyWhole) {
  Found<Kind> found;
  {
    const OneMoment moment;
    found = findRecords<Kind>(text, Place(context), onlyWhole);
  }
  return oneOf<Kind>(text, found);
}

}  // namespace

std::shared_ptr<_ABPerson> findPerson(const Context& context, const std::string& text) {
  return findPersons(context, {text}).front();
}

std::shared_ptr<_ABPerson> findPersonByWholeName(const Context& context, const std::string& text) {
  return findRecord<PersonKind>(context, text, true);
}

Persons findPersons(const Context& context, const std::vector<std::string>& texts) {
  // The store is asked once for all that are IDs, of which there may be thousands.
  auto records = store()->recordsForUniqueIds(texts);
  if (!context.book.empty()) records.assign(texts.size(), nullptr);
  Persons persons;
  std::unordered_set<RecordKey> met;
  for (std::size_t i = 0; i < texts.size(); ++i) {
    auto person = hostPerson(records[i]);
    if (!person) person = findRecord<PersonKind>(context, texts[i], false);
    if (!met.insert(person->key()).second) continue;
    makeBookOf(*person);
    persons.push_back(std::move(person));
  }
  return persons;
}

std::shared_ptr<_ABGroup> findGroup(const Context& context, const std::string& text) {
  return findRecord<GroupKind>(context, text, false);
}

}  // namespace ox::program
