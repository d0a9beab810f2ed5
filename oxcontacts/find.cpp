#include "oxcontacts/find.hpp"

#include <unordered_set>
#include <vector>

#include "oxcontacts/output/progress_bar.hpp"
#include "platform/store/contact_source.hpp"

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

// The one record of that display name.
template <typename Record, typename Records>
std::shared_ptr<Record> oneNamed(const char* what, const std::string& text, const Records& records,
                                 std::shared_ptr<Record> (*asHost)(std::shared_ptr<ABRecord>)) {
  std::shared_ptr<Record> found;
  std::vector<Candidate> candidates;
  for (const auto& record : records) {
    auto host = asHost(record);
    if (!host || host->displayName() != text) continue;
    candidates.push_back({host->ID().value_or(""), text});
    found = std::move(host);
  }
  if (candidates.empty()) notFound(what, text);
  if (candidates.size() > 1) ambiguous(what, text, candidates);
  return found;
}

// Null when there is none.
ContainerPtr accountNamed(const std::string& text) {
  if (auto container = contactSource().containerNamed(text)) return container;
  ContainerPtr found;
  std::vector<Candidate> candidates;
  for (const auto& container : contactSource().containers()) {
    if (container->name != text) continue;
    candidates.push_back({container->identifier, container->name});
    found = container;
  }
  if (candidates.size() > 1) ambiguous("account", text, candidates);
  return found;
}

}  // namespace

ContainerPtr findAccount(const std::string& text) {
  if (auto account = accountNamed(text)) return account;
  notFound("account", text);
}

std::shared_ptr<OxMacAddressBook> findBook(const BookList& books, const std::string& text) {
  std::shared_ptr<OxMacAddressBook> found;
  std::vector<Candidate> candidates;
  for (const auto& book : books) {
    if (book->ID() == text) return book;
    if (book->name() != text) continue;
    candidates.push_back({book->ID().value_or(""), text});
    found = book;
  }
  if (candidates.empty()) {
    const auto account = accountNamed(text);
    if (!account) notFound("book", text);
    return OxMacAddressBook::initWithContainer(std::make_shared<const CNContainer>(account));
  }
  if (candidates.size() > 1) ambiguous("book", text, candidates);
  return found;
}

std::shared_ptr<_ABPerson> findPerson(const std::string& text) {
  const auto store = ABAddressBook::sharedAddressBook();
  if (auto person = hostPerson(store->recordForUniqueId(text))) return person;
  return oneNamed<_ABPerson>("person", text, store->people(), &hostPerson);
}

Persons findPersons(const std::vector<std::string>& texts) {
  Persons persons;
  std::unordered_set<RecordKey> met;
  for (const auto& text : texts) {
    auto person = findPerson(text);
    if (met.insert(person->key()).second) persons.push_back(std::move(person));
  }
  return persons;
}

std::shared_ptr<_ABGroup> findGroup(const std::string& text) {
  const auto store = ABAddressBook::sharedAddressBook();
  if (auto group = hostGroup(store->recordForUniqueId(text))) return group;
  return oneNamed<_ABGroup>("group", text, store->groups(), &hostGroup);
}

BookList discoveredBooks(const Context& context) {
  ProgressBar bar(context, "looking for books");
  return OxMacAddressBook::addressBookArrayWithProgressBlock(bar.callback());
}

}  // namespace ox::program
