#include "oxcontacts/find.hpp"

#include <algorithm>
#include <unordered_set>
#include <vector>

#include "ox/OxMacAddressBookSDK/admin/accounts.hpp"
#include "ox/OxMacAddressBookSDK/ground/one_moment.hpp"
#include "ox/OxMacAddressBookSDK/registry/person_book.hpp"
#include "ox/base/text/composed.hpp"
#include "ox/platform/AddressBook/ABAddressBook.hpp"
#include "oxcontacts/output/progress_bar.hpp"

namespace ox::program {
namespace {

struct Candidate {
  std::string identifier;
  std::string name;
};

std::string quoted(const std::string& text) {
  return "\"" + text + "\"";
}

[[noreturn]] void notFound(const char* what, const std::string& text) {
  throw CommandError(kNotFound, std::string("there is no ") + what + " " + quoted(text));
}

[[noreturn]] void ambiguous(const char* what, const std::string& text,
                            const std::vector<Candidate>& candidates) {
  constexpr std::size_t kListed = 10;
  std::string message = quoted(text) + " may be any of " + std::to_string(candidates.size()) + " " +
                        what + "s; name one by its ID:";
  for (std::size_t i = 0; i < candidates.size() && i < kListed; ++i) {
    message += (i == 0 ? " " : ", ") + candidates[i].identifier;
  }
  if (candidates.size() > kListed) message += ", ...";
  throw CommandError(kUsage, message);
}

// What the user typed as a name, to be found however its accents are stored.
class WantedName {
 public:
  explicit WantedName(const std::string& typed) : typed_(typed), composed_(composed(typed)) {}
  bool isNameOf(const Text& name) const {
    return name && (*name == typed_ || composed(*name) == composed_);
  }

 private:
  std::string typed_;
  std::string composed_;
};

// The one record of that display name.
template <typename Record, typename Records>
std::shared_ptr<Record> oneNamed(const char* what, const std::string& text, const Records& records,
                                 std::shared_ptr<Record> (*asHost)(std::shared_ptr<ABRecord>)) {
  const WantedName wanted(text);
  std::shared_ptr<Record> found;
  std::vector<Candidate> candidates;
  for (const auto& record : records) {
    auto host = asHost(record);
    if (!host || !wanted.isNameOf(host->displayName())) continue;
    candidates.push_back({host->ID().value_or(""), text});
    found = std::move(host);
  }
  if (candidates.empty()) notFound(what, text);
  if (candidates.size() > 1) ambiguous(what, text, candidates);
  return found;
}

using Book = std::shared_ptr<OxMacAddressBook>;

// The discovered book of that ID; null when there is none.
Book bookWithId(const BookList& books, const Text& id) {
  for (const auto& book : books) {
    if (book->ID() == id) return book;
  }
  return nullptr;
}

// The discovered one, or one that is made: no discovery lists an account without records.
Book bookOf(const BookList& books, const CNContainerPtr& account) {
  auto book = bookWithId(books, OxMacAddressBook::standID(account->identifier()));
  if (book) return book;
  return OxMacAddressBook::initWithContainer(account);
}

// Those of that name, be it their own or their account's, each once.
std::vector<Book> booksNamed(const BookList& books, const std::string& text) {
  const WantedName wanted(text);
  std::vector<Book> named;
  for (const auto& book : books) {
    if (wanted.isNameOf(book->name())) named.push_back(book);
  }
  for (const auto& account : accounts()) {
    auto book = bookOf(books, account);
    const bool known = std::any_of(named.begin(), named.end(),
                                   [&](const Book& other) { return other->ID() == book->ID(); });
    if (!known && (wanted.isNameOf(account->name()) || wanted.isNameOf(book->name()))) {
      named.push_back(std::move(book));
    }
  }
  return named;
}

}  // namespace

CNContainerPtr findAccount(const std::string& text) {
  const OneMoment moment;
  if (auto account = accountNamed(text)) return account;
  const WantedName wanted(text);
  CNContainerPtr found;
  std::vector<Candidate> candidates;
  for (const auto& account : accounts()) {
    if (!wanted.isNameOf(account->name())) continue;
    candidates.push_back({account->identifier().value_or(""), text});
    found = account;
  }
  if (!found) notFound("account", text);
  if (candidates.size() > 1) ambiguous("account", text, candidates);
  return found;
}

std::shared_ptr<OxMacAddressBook> findBook(const BookList& books, const std::string& text) {
  const OneMoment moment;
  if (auto book = bookWithId(books, text)) return book;
  if (const auto account = accountNamed(text)) return bookOf(books, account);
  const auto named = booksNamed(books, text);
  if (named.empty()) notFound("book", text);
  if (named.size() == 1) return named.front();
  std::vector<Candidate> candidates;
  candidates.reserve(named.size());
  for (const auto& book : named) candidates.push_back({book->ID().value_or(""), text});
  ambiguous("book", text, candidates);
}

std::shared_ptr<_ABPerson> findPerson(const std::string& text) {
  return recordOf(findPersons({text}).front());
}

Persons findPersons(const std::vector<std::string>& texts) {
  const OneMoment moment;
  const auto store = ABAddressBook::sharedAddressBook();
  const auto records = store->recordsForUniqueIds(texts);
  Persons persons;
  std::unordered_set<RecordKey> met;
  for (std::size_t i = 0; i < texts.size(); ++i) {
    auto person = hostPerson(records[i]);
    if (!person) person = oneNamed<_ABPerson>("person", texts[i], store->people(), &hostPerson);
    if (!met.insert(person->key()).second) continue;
    makeBookOf(*person);
    persons.push_back(std::move(person));
  }
  return persons;
}

std::shared_ptr<_ABGroup> findGroup(const std::string& text) {
  const OneMoment moment;
  const auto store = ABAddressBook::sharedAddressBook();
  if (auto group = hostGroup(store->recordForUniqueId(text))) return group;
  return oneNamed<_ABGroup>("group", text, store->groups(), &hostGroup);
}

BookList discoveredBooks(const Context& context) {
  ProgressBar bar(context, "looking for books");
  return OxMacAddressBook::addressBookArrayWithProgressBlock(bar.callback());
}

}  // namespace ox::program
