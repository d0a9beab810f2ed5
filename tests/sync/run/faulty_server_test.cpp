// Whole runs over HTTP, with one fault at each of their requests in turn. Whatever came of such a
// run, the store is sound, and one that nothing disturbs ends where it would have ended before.

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <functional>
#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <vector>

#include "ox/platform/store/contact_source.hpp"
#include "ox/platform/store/store_source.hpp"
#include "ox/platform/store/upkeep/check.hpp"
#include "ox/sync/dav/dav_book.hpp"
#include "ox/sync/http/http_client.hpp"
#include "tests/support/store_environment.hpp"
#include "tests/sync/run/synced_book.hpp"
#include "tests/sync/support/card_server.hpp"

namespace ox::test {
namespace {

using std::chrono::milliseconds;
using support::CardServer;
using support::ScriptedAnswer;
using sync::BookReport;
using Lines = std::vector<std::string>;

// What both sides say in the end, in whatever order, and whatever a run gives each card anew.
struct Ends {
  Lines here;
  Lines there;
  std::size_t conflicts = 0;

  bool operator==(const Ends&) const = default;
};

std::string withoutMarks(const std::string& text) {
  std::string lines;
  for (std::size_t at = 0; at < text.size();) {
    const auto end = text.find("\r\n", at) + 2;
    const auto line = text.substr(at, end - at);
    if (!line.starts_with("REV:") && !line.starts_with("PRODID:")) lines += line;
    at = end;
  }
  return lines;
}

// A store of its own, and a server with a book that it was in step with. Both have gone their own
// ways since.
class Scene {
 public:
  Scene() {
    clear();
    source_ = openStoreSource(StoreAddress(path().string()));
    installContactSource(source_);
    book_ = std::make_unique<SyncedBook>("Scene");
    for (const auto* name : {"a", "b", "c", "d", "e", "f"}) {
      server.put(std::string(name) + ".vcf", cardText(name, name, "X", {"TEL;TYPE=CELL:1"}));
    }
    server.put("g.vcf", groupText("g", "Group", {"a", "b"}));
    EXPECT_EQ(runCalmly().state, BookReport::State::InStep);
    disturb();
  }
  Scene(const Scene&) = delete;
  Scene& operator=(const Scene&) = delete;
  ~Scene() {
    book_.reset();
    source_.reset();
    clear();
  }

  static std::filesystem::path path() { return support::temporaryPath("scene.db"); }

  BookReport runCalmly(const sync::SyncOptions& options = {}) { return run({}, options); }

  // As long as nobody waits for anything.
  BookReport runHastily() {
    sync::HttpLimits limits;
    limits.pauses = {milliseconds(1), milliseconds(1)};
    limits.second = milliseconds(1);
    limits.silence = milliseconds(60);
    limits.sunkBody = limits.keptBody = std::size_t{1} << 20U;
    return run(limits);
  }

  Ends ends() const {
    Ends ends;
    ends.here = book_->lines();
    for (const auto& group : book_->groups()) {
      Lines names;
      for (const auto& member : book_->members(group)) {
        names.push_back(book_->text(member, property_id::kFirst));
      }
      std::ranges::sort(names);
      auto line = book_->text(group, property_id::kGroupName) + " of";
      for (const auto& name : names) line += " " + name;
      ends.here.push_back(line);
    }
    for (const auto& [name, text] : server.texts()) ends.there.push_back(withoutMarks(text));
    std::ranges::sort(ends.here);
    std::ranges::sort(ends.there);
    ends.conflicts = syncSource().syncConflicts().size();
    return ends;
  }

  const std::string& container() const { return book_->container(); }

  CardServer server;

 private:
  static void clear() {
    for (const auto* ending : {"", "-wal", "-shm", "-synced"}) {
      std::filesystem::remove(path().string() + ending);
    }
  }

  BookReport run(const sync::HttpLimits& limits, const sync::SyncOptions& options = {}) {
    sync::LoginSettings login;
    login.url = server.bookUrl();
    login.allowHttp = true;
    sync::HttpClient client(login, {}, limits);
    sync::DavBook elsewhere(client, login.url);
    return book_->runWith(elsewhere, options);
  }

  RecordKey person(const std::string& first) const {
    for (const auto& each : book_->persons()) {
      if (book_->text(each, property_id::kFirst) == first) return each;
    }
    throw std::logic_error("nobody is called " + first);
  }

  void disturb() {
    book_->set(person("a"), property_id::kNote, "ours");
    server.put("b.vcf", cardText("b", "bee", "X", {"TEL;TYPE=CELL:1"}));
    book_->set(person("c"), property_id::kNote, "ours too");
    server.put("c.vcf", cardText("c", "c", "X", {"TEL;TYPE=CELL:1", "TEL;TYPE=CELL:2"}));
    book_->remove(person("d"));
    server.erase("e.vcf");
    book_->set(person("f"), property_id::kNote, "mine");
    server.put("f.vcf", cardText("f", "f", "X", {"TEL;TYPE=CELL:1", "NOTE:theirs"}));
    const auto fresh = book_->addPerson("new", "here", {"7"});
    book_->set(fresh, property_id::kCardUid, "fresh");
    book_->set(book_->addPerson("newer", "here", {"8"}), property_id::kCardUid, "fresher");
    book_->link(book_->groups().at(0), fresh);
    server.put("h.vcf", cardText("h", "new", "there"));
  }

  std::shared_ptr<ContactSource> source_;
  std::unique_ptr<SyncedBook> book_;
};

// What is done instead of answering well.
using Strike = std::function<ScriptedAnswer(CardServer&, const CardServer::Answer&)>;

struct Fault {
  const char* name;
  Strike strike;
};

std::ostream& operator<<(std::ostream& out, const Fault& fault) {
  return out << fault.name;
}

ScriptedAnswer code(int status, support::ScriptedHeaders headers = {}) {
  headers.emplace_back("Content-Type", "text/plain");
  return {.status = status, .headers = std::move(headers), .body = "Not now."};
}

// It is done, and that is answered.
Strike saying(int status, const std::string& type, const std::string& body) {
  return [=](CardServer&, const CardServer::Answer& answer) -> ScriptedAnswer {
    answer();
    return {.status = status, .headers = {{"Content-Type", type}}, .body = body};
  };
}

Strike sayingXml(const std::string& body) {
  return saying(207, "application/xml", body);
}

// It is done, and the answer is spoilt.
Strike spoiling(const std::function<void(ScriptedAnswer&)>& spoil) {
  return [=](CardServer&, const CardServer::Answer& answer) {
    auto spoilt = answer();
    spoil(spoilt);
    return spoilt;
  };
}

// Nothing is done.
Strike refusing(const ScriptedAnswer& refusal) {
  return [=](CardServer&, const CardServer::Answer&) { return refusal; };
}

Strike cutting(std::size_t eighths) {
  return spoiling([=](ScriptedAnswer& answer) { answer.cutAt = answer.body.size() * eighths / 8; });
}

std::string nested(std::size_t depth) {
  std::string text = "<multistatus xmlns=\"DAV:\">";
  for (std::size_t i = 0; i < depth; ++i) text += "<response>";
  return text;
}

std::vector<Fault> faults() {
  const std::string open = "<multistatus xmlns=\"DAV:\">";
  return {
      {"Refused",
       [](CardServer& server, const CardServer::Answer&) {
         server.scripted.refuse();
         return ScriptedAnswer{.closesUnanswered = true};
       }},
      {"ClosedBefore", refusing({.closesUnanswered = true})},
      {"ResetBefore", refusing({.closesUnanswered = true, .resets = true})},
      {"ClosedAfter", spoiling([](ScriptedAnswer& answer) { answer.closesUnanswered = true; })},
      {"ResetAfter",
       spoiling([](ScriptedAnswer& answer) { answer.closesUnanswered = answer.resets = true; })},
      {"CutAtOnce", cutting(0)},
      {"CutAfter1", cutting(1)},
      {"CutAfter2", cutting(2)},
      {"CutAfter3", cutting(3)},
      {"CutAfter4", cutting(4)},
      {"CutAfter5", cutting(5)},
      {"CutAfter6", cutting(6)},
      {"CutAfter7", cutting(7)},
      {"CutChunks", spoiling([](ScriptedAnswer& answer) {
         answer.framing = ScriptedAnswer::Framing::Chunked;
         answer.cutAt = answer.body.size();
       })},
      {"Silent", spoiling([](ScriptedAnswer& answer) { answer.silence = std::chrono::hours(1); })},
      {"Stalled",
       spoiling([](ScriptedAnswer& answer) { answer.stallsAt = answer.body.size() / 2; })},
      {"Bytewise", spoiling([](ScriptedAnswer& answer) { answer.bytesAtOnce = 1; })},
      {"LongerThanSaid",
       spoiling([](ScriptedAnswer& answer) { answer.promised = answer.body.size() / 2; })},
      {"ShorterThanSaid", spoiling([](ScriptedAnswer& answer) {
         answer.promised = answer.body.size() + 50;
         answer.closesAfterwards = true;
       })},
      {"NotPacked", spoiling([](ScriptedAnswer& answer) {
         answer.headers.emplace_back("Content-Encoding", "gzip");
       })},
      {"Code500", refusing(code(500))},
      {"Code500Though", spoiling([](ScriptedAnswer& answer) { answer = code(500); })},
      {"Code502", refusing(code(502))},
      {"Code504Though", spoiling([](ScriptedAnswer& answer) { answer = code(504); })},
      {"Code401", refusing(code(401))},
      {"Code429", refusing(code(429, {{"Retry-After", "3"}}))},
      {"Code429ForLong", refusing(code(429, {{"Retry-After", "3600"}}))},
      {"Code503", refusing(code(503))},
      {"Huge", sayingXml(open + std::string(std::size_t{2} << 20U, ' ') + "</multistatus>")},
      {"Deep", sayingXml(nested(5000))},
      {"DocumentType", sayingXml("<!DOCTYPE a [<!ENTITY b \"bbbb\"><!ENTITY c \"&b;&b;&b;&b;\">]>" +
                                 open + "&c;</multistatus>")},
      {"NoUtf8", sayingXml(open + "<response><href>\xC3\x28\xFF</href></response></multistatus>")},
      {"Nothing", sayingXml("")},
      {"Page", saying(200, "text/html", "<html><body>Please log in.</body></html>")},
      {"PageAs207", saying(207, "text/html", "<html><body>Please log in.</body></html>")},
  };
}

class FaultyServer : public testing::TestWithParam<Fault> {};

// Nobody gets another chance where the fault lasts; where it does not, the run may well go on.
TEST_P(FaultyServer, CostsNothingButTheRun) {
  Ends expected;
  std::size_t requests = 0;
  {
    Scene calm;
    const auto before = calm.server.scripted.requests().size();
    EXPECT_EQ(calm.runCalmly().state, BookReport::State::InStep);
    requests = calm.server.scripted.requests().size() - before;
    expected = calm.ends();
  }
  ASSERT_EQ(expected.here.size(), 8U);
  ASSERT_EQ(expected.there.size(), 8U);
  ASSERT_EQ(expected.conflicts, 1U);
  ASSERT_GE(requests, 7U);
  RecordProperty("requests", static_cast<int>(requests));
  for (std::size_t struck = 0; struck < requests; ++struck) {
    for (const bool lasts : {false, true}) {
      SCOPED_TRACE("at request " + std::to_string(struck) + (lasts ? " and all after it" : ""));
      Scene scene;
      std::size_t request = 0;
      scene.server.between([&](const auto&, const auto& answer) {
        const auto now = request++;
        const bool isStruck = lasts ? now >= struck : now == struck;
        return isStruck ? GetParam().strike(scene.server, answer) : answer();
      });
      const auto disturbed = scene.runHastily();
      EXPECT_GT(request, struck);
      EXPECT_NE(disturbed.state, BookReport::State::Guarded);
      EXPECT_EQ(storeProblems(Scene::path()), Lines());
      scene.server.between(nullptr);
      scene.server.scripted.open();
      const auto clean = scene.runCalmly();
      EXPECT_EQ(clean.state, BookReport::State::InStep) << clean.failure;
      EXPECT_TRUE(clean.refused.empty());
      EXPECT_EQ(scene.ends().here, expected.here);
      EXPECT_EQ(scene.ends().there, expected.there);
      EXPECT_EQ(scene.ends().conflicts, expected.conflicts);
      EXPECT_EQ(storeProblems(Scene::path()), Lines());
      const auto changes = scene.server.state().changes;
      const auto again = scene.runCalmly();
      EXPECT_EQ(again.state, BookReport::State::InStep);
      EXPECT_EQ(again.down, sync::SyncCounts());
      EXPECT_EQ(again.up, sync::SyncCounts());
      EXPECT_EQ(scene.server.state().changes, changes);
      if (HasFailure()) return;
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Of, FaultyServer, testing::ValuesIn(faults()),
                         [](const auto& fault) { return std::string(fault.param.name); });

// What spoils one card alone is taken for the card's own matter, until everything is looked at
// anew.
TEST(SpoiltCard, IsLeftAloneUntilAFullRun) {
  Scene scene;
  const auto path = CardServer::bookPath() + "h.vcf";
  scene.server.between([&](const support::ScriptedRequest& request, const auto& answer) {
    auto whole = answer();
    const bool isMultiget = request.body.find(path) != std::string::npos;
    const auto card = isMultiget ? whole.body.find("UID:h") : std::size_t{30};
    const auto end = whole.body.find("END:VCARD", card);
    if ((isMultiget || request.target == path) && end != std::string::npos) {
      whole.body.erase(end, 9);
    }
    return whole;
  });
  const auto spoilt = scene.runCalmly();
  ASSERT_EQ(spoilt.refused.size(), 1U);
  EXPECT_EQ(spoilt.refused[0].href, path);
  EXPECT_EQ(spoilt.refused[0].reason, "it is cut short: END:VCARD is missing");
  const auto without = scene.ends().here;
  EXPECT_EQ(without.size(), 7U);
  EXPECT_EQ(scene.ends().there.size(), 8U);
  scene.server.between(nullptr);
  const auto before = scene.server.scripted.requests().size();
  EXPECT_EQ(scene.runCalmly().state, BookReport::State::InStep);
  EXPECT_EQ(scene.server.scripted.requests().size(), before + 1);
  EXPECT_EQ(scene.ends().here, without);
  sync::SyncOptions full;
  full.listsAll = true;
  EXPECT_TRUE(scene.runCalmly(full).refused.empty());
  EXPECT_EQ(scene.ends().here.size(), 8U);
  EXPECT_TRUE(syncSource().refusedSyncCards(scene.container()).empty());
}

}  // namespace
}  // namespace ox::test
