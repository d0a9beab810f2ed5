// accounts add with --url or --folder: accounts that are in step with a server or a folder.
#include "oxcontacts/commands/sync/add_login.hpp"

#include <algorithm>
#include <array>
#include <filesystem>

#include "ox/OxMacAddressBookSDK/admin/accounts.hpp"
#include "ox/sync/logins.hpp"
#include "oxcontacts/arguments.hpp"
#include "oxcontacts/commands/sync/wire.hpp"
#include "oxcontacts/find.hpp"
#include "oxcontacts/output/counted.hpp"
#include "oxcontacts/output/json.hpp"
#include "oxcontacts/wanted_name.hpp"

namespace ox::program {
namespace {

using sync::OfferedBook;
using Books = std::vector<OfferedBook>;
using Kind = sync::PasswordSource::Kind;

// What is kept must mean the same wherever a later run is started.
std::string absolutePath(const std::string& path) {
  return path.empty() ? path : std::filesystem::absolute(path).lexically_normal().string();
}

sync::PasswordSource passwordOf(const LoginArguments& arguments) {
  if (!arguments.passwordCommand.empty()) return {Kind::Command, arguments.passwordCommand};
  if (!arguments.passwordFile.empty()) return {Kind::File, absolutePath(arguments.passwordFile)};
  if (!arguments.credential.empty()) return {Kind::Credential, arguments.credential};
  if (!arguments.bearerCommand.empty()) return {Kind::BearerCommand, arguments.bearerCommand};
  return {};
}

using Known = std::vector<sync::KnownBook>;

Known booksOfLogin(const std::string& login) {
  auto known = sync::knownBooks();
  std::erase_if(known, [&](const sync::KnownBook& book) { return book.login != login; });
  return known;
}

bool isAddress(const std::string& url) {
  return url.find('@') != url.npos && url.find('/') == url.npos;
}

sync::LoginSettings settingsFrom(const LoginArguments& arguments) {
  sync::LoginSettings settings;
  if (!arguments.folder.empty()) {
    settings.kind = sync::LoginSettings::Kind::Folder;
    settings.url = absolutePath(arguments.folder);
    return settings;
  }
  settings.url = arguments.url;
  settings.user = arguments.user;
  if (settings.user.empty() && isAddress(settings.url)) settings.user = settings.url;
  settings.password = passwordOf(arguments);
  settings.clientCertificate = absolutePath(arguments.clientCertificate);
  settings.authorities = absolutePath(arguments.authorities);
  settings.allowHttp = arguments.allowsHttp;
  const bool wantsPassword = !settings.user.empty() && settings.password.kind == Kind::None &&
                             arguments.clientCertificate.empty();
  if (wantsPassword) {
    throw CommandError(kUsage, "where the password of " + settings.user +
                                   " comes from is not said: --password-command, --password-file, "
                                   "--credential or --bearer-command");
  }
  return settings;
}

// Of a login that is there: what is said of the place must be what is known of it.
sync::LoginSettings settingsOfKnown(const std::string& login, const LoginArguments& arguments) {
  auto known = sync::settingsOf(login);
  if (!arguments.namesPlace()) return known;
  const auto place = arguments.folder.empty() ? arguments.url : absolutePath(arguments.folder);
  const auto password = passwordOf(arguments);
  const bool isOther = place != known.url ||
                       (!arguments.user.empty() && arguments.user != known.user) ||
                       (password.kind != Kind::None && password != known.password);
  if (isOther) {
    throw CommandError(kUsage, "there is a login " + login + " already, for " +
                                   (known.user.empty() ? "" : known.user + " at ") + known.url +
                                   "; `oxcontacts accounts add " + shellWord(login) +
                                   " --book NAME` adds a book of it, and another login wants "
                                   "another name");
  }
  return known;
}

sync::Offer offerFor(const sync::LoginSettings& settings, const sync::WireHooks& hooks,
                     ProgressLine& line) {
  auto offer = sync::offerOf(settings, hooks);
  if (offer.foreignHost.empty()) return offer;
  line.wipe();
  const auto where = "the DNS of " + settings.url + " leads to " + offer.foreignHost +
                     ", which the password would go to";
  if (!Context::canAsk()) {
    throw CommandError(kFailed,
                       where + "; --url https://" + offer.foreignHost + " says that it is meant");
  }
  if (!agrees(where + ". Go on?")) throw CommandError(kFailed, "nothing was added");
  return sync::offerOf(settings, hooks, offer.foreignHost);
}

std::string withoutSlash(std::string url) {
  while (url.ends_with('/')) url.pop_back();
  return url;
}

std::string listOf(const Books& books) {
  std::string list;
  for (const auto& book : books)
    list += (list.empty() ? "" : ", ") + book.name + " (" + book.url + ")";
  return list;
}

bool isAt(const std::string& url, const Known& known) {
  return std::ranges::any_of(known, [&](const sync::KnownBook& book) {
    return withoutSlash(book.url) == withoutSlash(url);
  });
}

// Takes out those that are in step already; whoever names one of them is told.
void leaveOutKnown(const std::string& login, const Known& known,
                   const std::vector<std::string>& named, Books& offered) {
  if (known.empty()) return;
  const auto isNamed = [&](const sync::KnownBook& book) {
    return std::ranges::any_of(named, [&](const std::string& text) {
      return withoutSlash(book.url) == withoutSlash(text) || WantedName(text).isNameOf(book.name);
    });
  };
  for (const auto& book : known) {
    if (isNamed(book)) {
      throw CommandError(kUsage, book.name + " is in step with " + book.account + " already");
    }
  }
  std::erase_if(offered, [&](const OfferedBook& book) { return isAt(book.url, known); });
  if (offered.empty()) {
    throw CommandError(kUsage, "every book of the login " + login + " is in step already");
  }
}

// By URL, else by name.
std::size_t placeOf(const std::string& text, const Books& offered) {
  const WantedName wanted(text);
  std::vector<std::size_t> named;
  for (std::size_t i = 0; i < offered.size(); ++i) {
    if (withoutSlash(offered[i].url) == withoutSlash(text)) return i;
    if (wanted.isNameOf(offered[i].name)) named.push_back(i);
  }
  if (named.size() == 1) return named.front();
  if (named.empty()) {
    throw CommandError(kNotFound,
                       "there is no book \"" + text + "\"; there are " + listOf(offered));
  }
  throw CommandError(kUsage, "\"" + text + "\" may be any of " + std::to_string(named.size()) +
                                 " books; name one by its URL: " + listOf(offered));
}

// Whether each of the offered books is taken: those that are named; the only one that there is;
// those of the user.
std::vector<bool> choiceOf(const LoginArguments& arguments, const Books& offered, bool isNew) {
  if (offered.empty()) throw CommandError(kFailed, "there is no address book yet");
  std::vector<bool> taken(offered.size(), arguments.takesAll);
  for (const auto& text : arguments.books) taken[placeOf(text, offered)] = true;
  const bool isSaid = arguments.takesAll || !arguments.books.empty();
  for (std::size_t i = 0; i < offered.size() && !isSaid; ++i) {
    taken[i] = (isNew && offered.size() == 1) || offered[i].isOwn;
  }
  const auto count = std::ranges::count(taken, true);
  if (count == 0) {
    throw CommandError(kFailed, "none of the books is your own: " + listOf(offered) +
                                    "; --book takes those that it names, --all every one");
  }
  if (count > 1 && !arguments.into.empty()) {
    throw CommandError(kUsage, "--into takes one book, and these are " + std::to_string(count) +
                                   "; --book names one");
  }
  return taken;
}

// A book alone is called as the user says, one of several as it calls itself, unless an account is
// called so already.
class AccountNames {
 public:
  AccountNames() {
    for (const auto& account : accounts()) taken_.push_back(account->name().value_or(""));
  }

  std::string of(const OfferedBook& book, const std::string& login, bool isAlone) {
    auto name = isAlone ? login : book.name.empty() ? login : book.name;
    if (!isAlone && isTaken(name)) name = login + " " + name;
    const auto first = name;
    for (int number = 2; !isAlone && isTaken(name); ++number)
      name = first + " " + std::to_string(number);
    taken_.push_back(name);
    return name;
  }

 private:
  bool isTaken(const std::string& name) const { return std::ranges::count(taken_, name) > 0; }

  std::vector<std::string> taken_;
};

Json offeredJson(const OfferedBook& book) {
  return {{"name", book.name},
          {"description", book.description},
          {"url", book.url},
          {"readOnly", book.isReadOnly},
          {"own", book.isOwn}};
}

void tellAdded(const Context& context, const std::string& name,
               const std::vector<sync::ChosenBook>& chosen,
               const std::vector<sync::AddedBook>& added, const Books& left) {
  Json list = Json::array();
  for (std::size_t i = 0; i < added.size(); ++i) {
    const auto& book = chosen[i].book;
    const bool isReadOnly = book.isReadOnly || chosen[i].sendsNothing;
    list.push_back({{"identifier", added[i].container},
                    {"name", added[i].name},
                    {"book", book.name},
                    {"url", book.url},
                    {"readOnly", isReadOnly}});
    if (context.json) continue;
    context.tell("added " + added[i].name + " (" + added[i].container + ") for " + book.url +
                 (isReadOnly ? ", which is read-only" : ""));
  }
  Json rest = Json::array();
  for (const auto& book : left) {
    rest.push_back(offeredJson(book));
    if (context.json) continue;
    context.tell("left " + book.name + (book.isOwn ? "" : ", which is not yours") +
                 "; `oxcontacts accounts add " + shellWord(name) + " --book " +
                 shellWord(book.url) + "` adds it");
  }
  if (context.json) {
    printJson({{"login", name}, {"added", std::move(list)}, {"left", std::move(rest)}});
  } else {
    context.tell("`oxcontacts sync " + shellWord(name) + "` brings " +
                 (added.size() == 1 ? "it" : "them") + " in step");
  }
}

}  // namespace

void declareLoginOptions(CLI::App& add, LoginArguments& arguments) {
  auto* url = add.add_option("--url", arguments.url,
                             "In step with a CardDAV server: a URL, a host or user@domain")
                  ->type_name("URL");
  add.add_option("--folder", arguments.folder, "In step with a folder of vCards, one a file")
      ->type_name("PATH")
      ->excludes(url);
  const auto ofServer = [&](const char* name, std::string& value, const char* what,
                            const char* type) {
    return add.add_option(name, value, what)->type_name(type)->needs(url);
  };
  ofServer("--user", arguments.user, "Who logs in", "USER");
  const std::array sources = {
      ofServer("--password-command", arguments.passwordCommand,
               "Run this in each run; the first line it prints is the password", "COMMAND"),
      ofServer("--password-file", arguments.passwordFile,
               "The password is the first line of this file, which nobody else can read", "FILE"),
      ofServer("--credential", arguments.credential,
               "The password is this file of the service's credentials", "ID"),
      ofServer("--bearer-command", arguments.bearerCommand,
               "Run this in each run; the first line it prints is a bearer token", "COMMAND"),
  };
  for (auto* source : sources) {
    for (auto* other : sources) {
      if (source != other) source->excludes(other);
    }
  }
  ofServer("--client-cert", arguments.clientCertificate,
           "Certificate and key (PEM) that this side shows", "FILE");
  ofServer("--ca", arguments.authorities, "The authorities (PEM) that count, and no others",
           "FILE");
  add.add_flag("--allow-http", arguments.allowsHttp, "Without encryption too: for a server at home")
      ->needs(url);
  auto* books = add.add_option("--book", arguments.books, "Take this book (else the user's own)")
                    ->type_name("NAME|URL")
                    ->expected(1)
                    ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
  add.add_flag("--all", arguments.takesAll, "Take every book, other people's too")->excludes(books);
  add.add_option("--into", arguments.into, "Into this account (else a new one)")
      ->type_name("ACCOUNT");
  add.add_flag("--read-only", arguments.isReadOnly, "Never change anything there");
  add.add_flag("--categories-as-groups", arguments.categoriesAreGroups,
               "A category of its persons is a group here, instead of a tag");
  add.add_flag("--verbose", arguments.isVerbose, "Tell of each request");
}

void addLoginFor(const Context& context, const std::string& name, const LoginArguments& arguments) {
  const auto known = booksOfLogin(name);
  const bool isNew = known.empty();
  if (isNew && !arguments.namesPlace()) {
    throw CommandError(kUsage,
                       "what the account is to be in step with is not said: --url or --folder");
  }
  const auto settings = isNew ? settingsFrom(arguments) : settingsOfKnown(name, arguments);
  std::string container;
  if (!arguments.into.empty()) container = findAccount(arguments.into)->identifier().value_or("");
  try {
    ProgressLine line(context);
    const auto hooks = hooksOf(context, arguments.isVerbose, line);
    line.show("looking at " + settings.url);
    auto offer = offerFor(settings, hooks, line);
    line.wipe();
    if (!context.json) {
      context.tell("found " + counted(offer.books.size(), "book") + " at " + settings.url);
    }
    leaveOutKnown(name, known, arguments.books, offer.books);
    const auto taken = choiceOf(arguments, offer.books, isNew);
    const bool isAlone = isNew && std::ranges::count(taken, true) == 1;
    AccountNames names;
    std::vector<sync::ChosenBook> chosen;
    Books left;
    for (std::size_t i = 0; i < taken.size(); ++i) {
      auto book = offer.books[i];
      if (!taken[i]) {
        left.push_back(std::move(book));
        continue;
      }
      auto newName = container.empty() ? names.of(book, name, isAlone) : std::string();
      chosen.push_back({std::move(book), container, std::move(newName), arguments.isReadOnly,
                        arguments.categoriesAreGroups});
    }
    const auto added =
        isNew ? sync::addLogin(name, settings, offer, chosen) : sync::addBooks(name, offer, chosen);
    tellAdded(context, name, chosen, added, left);
  } catch (const sync::RemoteError& error) {
    if (error.kind() != sync::RemoteFailure::Unencrypted) throw commandErrorOf(error);
    throw CommandError(kFailed, std::string(error.what()) + "; --allow-http does");
  }
}

}  // namespace ox::program
