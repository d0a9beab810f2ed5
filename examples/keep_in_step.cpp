// Brings an account in step with a folder of vCards: keep_in_step ACCOUNT FOLDER. The first time it
// makes the account; from then on each run carries over what changed on either side.
#include <algorithm>
#include <atomic>
#include <csignal>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <string>

#include "ox/sync/logins.hpp"
#include "ox/sync/synchronise.hpp"

namespace {

using ox::sync::BookReport;

std::atomic<bool> isInterrupted{false};

bool isKnown(const std::string& account) {
  const auto books = ox::sync::knownBooks();
  return std::any_of(books.begin(), books.end(),
                     [&](const auto& book) { return book.account == account; });
}

// A server is reached the same way: its URL, a user, and where the password comes from.
void add(const std::string& account, const std::string& folder) {
  ox::sync::LoginSettings login;
  login.kind = ox::sync::LoginSettings::Kind::Folder;
  login.url = std::filesystem::absolute(folder).string();
  const auto offer = ox::sync::offerOf(login, {});
  ox::sync::addLogin(account, login, offer, {{offer.books.front(), {}, account}});
}

// Where both sides hold contacts that have never met, somebody should see what would happen.
bool confirm(const BookReport& plan) {
  std::printf("%s: %zu new here, %zu new there. Go on? [y/n] ", plan.account.c_str(),
              plan.down.added, plan.up.added);
  std::fflush(stdout);
  return std::getchar() == 'y';
}

// True when nothing is left for the user to do.
bool tell(const BookReport& report) {
  if (report.state != BookReport::State::InStep) {
    std::fprintf(stderr, "%s: not in step: %s\n", report.account.c_str(), report.failure.c_str());
    return false;
  }
  std::printf("%s: %zu new, %zu changed, %zu deleted here; %zu sent, %zu deleted there\n",
              report.account.c_str(), report.down.added, report.down.changed, report.down.deleted,
              report.up.added + report.up.changed, report.up.deleted);
  for (const auto& card : report.refused) {
    std::fprintf(stderr, "refused: %s: %s\n", card.name.c_str(), card.reason.c_str());
  }
  return report.refused.empty();
}

// Both sides gave one value another one: theirs stands, ours is kept until somebody chooses.
void tellConflicts() {
  for (const auto& conflict : ox::sync::openConflicts()) {
    std::fprintf(stderr, "conflict: %s: %s is %s there and was %s here\n", conflict.name.c_str(),
                 conflict.property.c_str(), conflict.theirs.c_str(), conflict.ours.c_str());
  }
}

}  // namespace

int main(int argc, char** argv) try {
  if (argc != 3) {
    std::fputs("keep_in_step ACCOUNT FOLDER\n", stderr);
    return 2;
  }
  std::signal(SIGINT, [](int) { isInterrupted = true; });
  if (!isKnown(argv[1])) add(argv[1], argv[2]);
  ox::sync::SyncOptions options;
  options.confirm = confirm;
  options.hooks.isStopped = [] { return isInterrupted.load(); };
  bool isDone = true;
  for (const auto& report : ox::sync::synchronise(options)) isDone &= tell(report);
  tellConflicts();
  return isDone ? 0 : 1;
} catch (const std::exception& error) {  // RemoteError of the other side, StoreError of ours
  std::fprintf(stderr, "failed: %s\n", error.what());
  return 1;
}
