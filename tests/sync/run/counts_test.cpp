// How often a server is asked, and what is written, by whole runs over HTTP.

#include <chrono>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <map>
#include <string>

#include "ox/sync/dav/dav_book.hpp"
#include "ox/sync/http/http_client.hpp"
#include "tests/support/store_environment.hpp"
#include "tests/sync/run/synced_book.hpp"
#include "tests/sync/support/card_server.hpp"

namespace ox::test {
namespace {

using support::CardServer;
using support::ScriptedRequest;

sync::LoginSettings loginOf(const CardServer& server) {
  sync::LoginSettings settings;
  settings.url = server.bookUrl();
  settings.allowHttp = true;
  return settings;
}

class Counts : public testing::Test {
 protected:
  void fill(std::size_t cards) {
    for (std::size_t at = 0; at < cards; ++at) {
      const auto name = "p" + std::to_string(at);
      server.put(name + ".vcf", cardText(name, name, "X", {"CATEGORIES:Friends"}));
    }
    run();
    startCounting();
  }

  void run(const sync::SyncOptions& options = {}) {
    const auto report = book.runWith(elsewhere, options);
    EXPECT_EQ(report.state, sync::BookReport::State::InStep) << report.failure;
    EXPECT_TRUE(report.refused.empty());
  }

  void startCounting() { counted_ = server.scripted.requests().size(); }
  // How many of each method there were since.
  std::map<std::string, std::size_t> requests() const {
    std::map<std::string, std::size_t> counts;
    const auto all = server.scripted.requests();
    for (auto at = counted_; at < all.size(); ++at) ++counts[all[at].method];
    return counts;
  }

  // Every byte of the store and of its log.
  static std::string stored() {
    const auto store = support::StoreEnvironment::instance().contactStore().string();
    std::string bytes;
    for (const auto& file : {store, store + "-wal"}) {
      std::ifstream stream(file, std::ios::binary);
      bytes.append(std::istreambuf_iterator<char>(stream), {});
    }
    return bytes;
  }

  void expectNothingIsWritten() {
    const auto before = stored();
    ASSERT_FALSE(before.empty());
    startCounting();
    run();
    EXPECT_EQ(requests(), (std::map<std::string, std::size_t>{{"REPORT", 1}}));
    EXPECT_TRUE(stored() == before);
  }

  CardServer server;
  sync::HttpClient client{loginOf(server), {}};
  sync::DavBook elsewhere{client, server.bookUrl()};
  SyncedBook book{"Book"};

 private:
  std::size_t counted_ = 0;
};

TEST_F(Counts, OfAThousandChangesAreAThousandRequestsFourAtOnceAndFewMore) {
  fill(1000);
  for (const auto& person : book.persons()) book.set(person, property_id::kNote, "changed");
  startCounting();
  // Slow enough for others to be sent meanwhile.
  server.between([](const ScriptedRequest& request, const CardServer::Answer& answer) {
    auto slow = answer();
    if (request.method == "PUT") slow.silence = std::chrono::milliseconds(5);
    return slow;
  });
  run();
  // A listing before and one after, and what was sent read back by the hundred.
  EXPECT_EQ(requests(), (std::map<std::string, std::size_t>{{"PUT", 1000}, {"REPORT", 12}}));
  EXPECT_EQ(server.scripted.mostAtOnce(), 4U);
  EXPECT_LE(server.scripted.connections(), 4U);
}

TEST_F(Counts, OfAWholeListingWithoutChangeAreThreeRequestsAndNoCard) {
  fill(300);
  sync::SyncOptions options;
  options.listsAll = true;
  run(options);
  // The book itself, what it says has changed, and the listing.
  EXPECT_EQ(requests(), (std::map<std::string, std::size_t>{{"PROPFIND", 1}, {"REPORT", 2}}));
}

TEST_F(Counts, OfARunWithNothingToDoAreOneRequestAndNoByteOfTheStore) {
  fill(30);
  expectNothingIsWritten();
}

TEST_F(Counts, OfARunAfterChangesOnBothSidesAreOneRequestAndNoByteOfTheStore) {
  fill(30);
  book.set(book.persons().at(3), property_id::kNote, "ours");
  book.setTags(book.persons().at(4), {"Ours"});
  book.addPerson("New", "Here");
  server.put("p5.vcf", cardText("p5", "Other", "Name"));
  run();
  expectNothingIsWritten();
  expectNothingIsWritten();
}

TEST_F(Counts, OfARunAfterManyChangesHereAreOneRequestAndNoByteOfTheStore) {
  fill(60);
  for (const auto& person : book.persons()) book.set(person, property_id::kNote, "changed");
  run();
  expectNothingIsWritten();
}

}  // namespace
}  // namespace ox::test
