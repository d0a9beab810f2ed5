#include "ox/sync/synchronise.hpp"

#include <algorithm>
#include <chrono>
#include <optional>
#include <stdexcept>
#include <system_error>
#include <utility>

#include "ox/OxMacAddressBookSDK/ground/contacts_and_tags.hpp"
#include "ox/base/clock.hpp"
#include "ox/platform/store/contact_source.hpp"
#include "ox/platform/store/values/store_error.hpp"
#include "ox/records/damaged_bytes.hpp"
#include "ox/sync/run/book_run.hpp"
#include "ox/sync/run/login_lock.hpp"
#include "ox/sync/run/remote_login.hpp"
#include "ox/sync/run/run_rows.hpp"

namespace ox::sync {
namespace {

using State = BookReport::State;

constexpr const char* kSomebodyElse = "another program is synchronising this account";

// The runs of the books of one login.
class LoginRun {
 public:
  LoginRun(SyncLogin login, const SyncOptions& options)
      : login_(std::move(login)), options_(options) {}

  std::vector<BookReport> run(const std::vector<SyncBook>& books) {
    books_ = books;
    for (const auto& book : books) reports_.push_back(begun(book));
    try {
      if (millisecondsNow() < login_.notBefore) {
        failAll(State::TryLater, "the server has asked to be left alone for a while",
                RemoteFailure::TryLater);
        return reports_;
      }
      auto lock = LoginLock::tryToTake(login_.id);
      if (!lock) {
        failAll(State::TryLater, kSomebodyElse, std::nullopt);
        return reports_;
      }
      runBooks();
    } catch (const RemoteError& error) {
      failRest(error);
    } catch (const std::system_error& error) {
      failAll(State::Failed, error.what(), std::nullopt);
    }
    return reports_;
  }

 private:
  static BookReport begun(const SyncBook& book) {
    BookReport report;
    report.container = book.container;
    report.book = book.name;
    const auto container = containerSource().containerNamed(book.container);
    report.account = container ? container->name : book.name;
    return report;
  }

  void failAll(State state, const std::string& why, std::optional<RemoteFailure> kind) {
    for (auto& report : reports_) {
      report.state = state;
      report.failure = why;
      report.kind = kind;
    }
  }

  // The login as a whole cannot be used: neither can the books whose turn has not come.
  void failRest(const RemoteError& error) {
    for (auto place = done_; place < reports_.size(); ++place) {
      fail(place, error);
      noteRun(place);
    }
    noteWaiting(error);
  }

  void fail(std::size_t place, const RemoteError& error) {
    auto& report = reports_[place];
    const bool later =
        error.kind() == RemoteFailure::TryLater || error.kind() == RemoteFailure::Unreachable;
    report.state = error.kind() == RemoteFailure::Stopped ? State::Stopped
                   : later                                ? State::TryLater
                                                          : State::Failed;
    report.failure = error.what();
    report.kind = error.kind();
  }

  // Changes what is kept of the login, if that is another thing then.
  template <typename Change>
  void changeLogin(Change change) const {
    if (options_.isDryRun) return;
    for (const auto& row : syncSource().syncLogins()) {
      if (row.id != login_.id) continue;
      auto changed = row;
      change(changed);
      if (changed == row) return;
      SaveRequest request;
      request.sync.logins.push_back(std::move(changed));
      containerSource().execute(request);
    }
  }

  // One that was told to wait waits in every process.
  void noteWaiting(const RemoteError& error) const {
    if (error.kind() == RemoteFailure::Stopped) return;
    changeLogin([&](SyncLogin& row) { row.notBefore = error.notBefore(); });
  }

  // That a run was none is for people to see.
  void noteRun(std::size_t place) const {
    const auto& report = reports_[place];
    const bool isNone = report.state == State::Failed || report.state == State::TryLater ||
                        report.state == State::Guarded || report.state == State::NeedsConfirmation;
    if (!isNone || options_.isDryRun) return;
    try {
      noteFailedRun(report, start_);
    } catch (const FailureError&) {
      // The store could not do it: then that is why the run has failed, too.
    }
  }

  void runBooks() {
    RemoteLogin remote(login_, options_.hooks);
    const auto same = unchangedBooks(remote);
    for (; done_ < books_.size(); ++done_) {
      const bool isSame = std::ranges::find(same, books_[done_].container) != same.end();
      tryOne(remote, done_, isSame);
    }
    // Cards that were moved into another of these books have arrived there.
    for (const auto place : std::exchange(postponed_, {})) tryOne(remote, place, false);
    if (const auto scheme = remote.scheme(); !scheme.empty()) {
      changeLogin([&](SyncLogin& row) { row.scheme = scheme; });
    }
  }

  // Where all books cannot be asked at once each is asked by itself.
  std::vector<std::string> unchangedBooks(RemoteLogin& remote) const {
    if (books_.size() < 2 || options_.listsAll) return {};
    try {
      return remote.unchanged(books_);
    } catch (const RemoteError& error) {
      using enum RemoteFailure;
      if (error.kind() != Away && error.kind() != Protocol && error.kind() != NoBook) throw;
      return {};
    }
  }

  // One bad book never stops a login; a login that is refused stops all of it.
  void tryOne(RemoteLogin& remote, std::size_t place, bool isSame) {
    using enum RemoteFailure;
    const auto began = std::chrono::steady_clock::now();
    std::optional<RemoteError> ofLogin;
    try {
      runOne(remote, place, isSame);
    } catch (const RemoteError& error) {
      fail(place, error);
      if (error.kind() == Away) noteAway(books_[place]);
      const bool isOfBook =
          error.kind() == Away || error.kind() == Protocol || error.kind() == NoBook;
      if (!isOfBook) ofLogin = error;
    } catch (const FailureError& error) {
      const bool isBusy = error.kind() == FailureKind::Busy;
      failStore(place, isBusy ? State::TryLater : State::Failed, error.what());
    } catch (const DamagedBytes& error) {
      failStore(place, State::Failed, error.what());
    } catch (const std::system_error& error) {
      failStore(place, State::Failed, error.what());
    }
    reports_[place].seconds +=
        std::chrono::duration<double>(std::chrono::steady_clock::now() - began).count();
    noteRun(place);
    finish(remote, place);
    if (ofLogin) throw RemoteError(*ofLogin);
  }

  // The store could not do it, or what it keeps of this book is damaged: the other books go on.
  void failStore(std::size_t place, State state, const std::string& why) {
    reports_[place].state = state;
    reports_[place].failure = why;
  }

  void noteAway(const SyncBook& book) const {
    if (options_.isDryRun || book.state != SyncBook::State::Active) return;
    for (auto& row : syncSource().syncBooks()) {
      if (row.container != book.container) continue;
      row.state = SyncBook::State::Away;
      SaveRequest request;
      request.sync.books.push_back({std::move(row), {}});
      containerSource().execute(request);
    }
  }

  void finish(const RemoteLogin& remote, std::size_t place) {
    auto& report = reports_[place];
    report.requests += remote.requests() - requests_;
    report.bytes += remote.bytes() - bytes_;
    requests_ = remote.requests();
    bytes_ = remote.bytes();
    addOpenMatters(report);
  }

  // What earlier runs have left open is open still.
  static void addOpenMatters(BookReport& report) {
    report.conflicts = 0;
    for (const auto& conflict : syncSource().syncConflicts()) {
      if (conflict.container == report.container) ++report.conflicts;
    }
    for (const auto& now : syncSource().refusedSyncCards(report.container)) {
      const auto& card = now.card;
      const bool isTold = std::ranges::any_of(
          report.refused, [&](const RefusedCard& refused) { return refused.href == card.href; });
      if (!isTold) report.refused.push_back({nameOfRecord(card), card.href, 0, card.refused});
    }
  }

  static std::string nameOfRecord(const SyncCard& card) {
    if (card.record.isNone()) return card.href;
    LocalBook local(card.container);
    const auto content = local.contentOf(card.record, card.kind);
    return content ? nameOfContent(content->content) : card.href;
  }

  static SyncBook bookNow(const SyncBook& book) {
    for (auto& row : syncSource().syncBooks()) {
      if (row.container == book.container) return row;
    }
    return book;
  }

  void runOne(RemoteLogin& remote, std::size_t place, bool isSame) {
    auto& report = reports_[place];
    auto book = bookNow(books_[place]);
    const auto elsewhere = remote.open(book);
    BookRun::Start start;
    start.isSameThere = isSame;
    start.isOneOfSeveral = books_.size() > 1;
    start.listsAll = options_.listsAll;
    start.abilities = [&] { return remote.abilitiesOf(*elsewhere); };
    if (runBook(*elsewhere, std::move(book), options_, start, report)) postponed_.push_back(place);
  }

  SyncLogin login_;
  const SyncOptions& options_;
  std::vector<SyncBook> books_;
  std::vector<BookReport> reports_;
  std::int64_t start_ = millisecondsNow();
  std::size_t done_ = 0;
  std::vector<std::size_t> postponed_;
  std::uint64_t requests_ = 0;
  std::uint64_t bytes_ = 0;
};

// The books that are asked for, by login, in the order of the books.
std::vector<std::pair<std::int64_t, std::vector<SyncBook>>> chosenBooks(
    const std::vector<std::string>& containers) {
  const auto all = syncSource().syncBooks();
  for (const auto& container : containers) {
    const bool isKnown =
        std::ranges::any_of(all, [&](const SyncBook& book) { return book.container == container; });
    if (!isKnown) {
      throw RemoteError(RemoteFailure::Usage,
                        "the account " + container + " is in step with nothing");
    }
  }
  std::vector<std::pair<std::int64_t, std::vector<SyncBook>>> chosen;
  for (const auto& book : all) {
    const bool isChosen =
        containers.empty() || std::ranges::find(containers, book.container) != containers.end();
    if (!isChosen) continue;
    auto found = std::ranges::find(chosen, book.login, [](const auto& some) { return some.first; });
    if (found == chosen.end()) found = chosen.insert(chosen.end(), {book.login, {}});
    found->second.push_back(book);
  }
  return chosen;
}

}  // namespace

std::vector<BookReport> synchronise(const SyncOptions& options) {
  followTags();
  const auto logins = syncSource().syncLogins();
  std::vector<BookReport> reports;
  for (const auto& [id, books] : chosenBooks(options.containers)) {
    const auto login = std::ranges::find(logins, id, &SyncLogin::id);
    if (login == logins.end()) continue;
    for (auto& report : LoginRun(*login, options).run(books)) {
      reports.push_back(std::move(report));
    }
    if (options.hooks.isStopped && options.hooks.isStopped()) break;
  }
  return reports;
}

}  // namespace ox::sync
