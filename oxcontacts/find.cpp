#include "oxcontacts/find.hpp"

#include <algorithm>
#include <vector>

#include "ox/OxMacAddressBookSDK/admin/accounts.hpp"
#include "ox/OxMacAddressBookSDK/ground/one_moment.hpp"
#include "oxcontacts/output/progress_bar.hpp"
#include "oxcontacts/wanted_name.hpp"

namespace ox::program {
namespace {

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
  std::vector<std::string> candidates;
  for (const auto& account : accounts()) {
    if (!wanted.isNameOf(account->name())) continue;
    candidates.push_back(account->identifier().value_or(""));
    found = account;
  }
  if (!found) throwNotFound("account", text);
  if (candidates.size() > 1) throwAmbiguous("account", text, candidates, candidates.size());
  return found;
}

BookNames::BookNames() {
  for (const auto& account : accounts()) {
    const auto book = OxMacAddressBook::initWithContainer(account);
    names_.emplace(book->ID().value_or(""), book->name().value_or(""));
  }
}

std::string BookNames::nameOf(const Text& id) const {
  const auto found = names_.find(id.value_or(""));
  return found == names_.end() || found->second.empty() ? id.value_or("") : found->second;
}

std::vector<std::shared_ptr<OxMacAddressBook>> booksOfAccountsNamed(const std::string& text) {
  return booksNamed(BookList(), text);
}

std::shared_ptr<OxMacAddressBook> findBook(const BookList& books, const std::string& text) {
  const OneMoment moment;
  if (auto book = bookWithId(books, text)) return book;
  if (const auto account = accountNamed(text)) return bookOf(books, account);
  const auto named = booksNamed(books, text);
  if (named.empty()) throwNotFound("book", text);
  if (named.size() == 1) return named.front();
  std::vector<std::string> candidates;
  candidates.reserve(named.size());
  for (const auto& book : named) candidates.push_back(book->ID().value_or(""));
  throwAmbiguous("book", text, candidates, candidates.size());
}

std::shared_ptr<OxMacAddressBook> findConfiguredBook(const Context& context,
                                                     const BookList& books) {
  try {
    return findBook(books, context.configuredBook());
  } catch (const CommandError& error) {
    throw CommandError(error.code(), context.config.placeOf("book") + ": " + error.what());
  }
}

BookList discoveredBooks(const Context& context) {
  ProgressBar bar(context, "looking for books");
  return OxMacAddressBook::addressBookArrayWithProgressBlock(bar.callback());
}

}  // namespace ox::program
