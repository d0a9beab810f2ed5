// Imports into a store that other processes and threads write to meanwhile.
#include <functional>
#include <gtest/gtest.h>
#include <thread>
#include <utility>

#include "ox/base/store_location.hpp"
#include "ox/platform/store/store_source.hpp"
#include "ox/records/property_keys.hpp"
#include "ox/transfer/importer.hpp"
#include "tests/support/store_builder.hpp"
#include "tests/support/store_environment.hpp"
#include "tests/support/switched_source.hpp"
#include "tests/transfer/imported_cards.hpp"

namespace ox::vcard {
namespace {

using support::PersonValues;
using support::StoreBuilder;
using support::SwitchedSource;
using support::temporaryFile;

// A source in whose way another process gets: what is to be done just before a request is written.
class InterruptedSource : public SwitchedSource {
 public:
  using Interruption = std::function<void(ContactSource& elsewhere)>;

  static InterruptedSource& install() {
    auto source = std::make_shared<InterruptedSource>();
    installContactSource(source);
    return *source;
  }
  InterruptedSource() : SwitchedSource(openStoreSource(contactStorePath())) {}

  // Once, before so many more requests.
  void beforeRequest(int passing, Interruption interruption) {
    passing_ = passing;
    interruption_ = std::move(interruption);
  }
  ContactSource& elsewhere() { return *elsewhere_; }

  bool execute(SaveRequest& request) override {
    if (interruption_ && passing_-- == 0) std::exchange(interruption_, nullptr)(*elsewhere_);
    return SwitchedSource::execute(request);
  }

 private:
  std::shared_ptr<ContactSource> elsewhere_ = openStoreSource(contactStorePath());
  int passing_ = 0;
  Interruption interruption_;
};

std::string withoutUid(const std::string& name) {
  return "BEGIN:VCARD\r\nVERSION:3.0\r\nN:;" + name + ";;;\r\nFN:" + name + "\r\nEND:VCARD\r\n";
}

// Four cards, two of them with other content, come in elsewhere: those of the batch that is being
// written, and of batches to come.
TEST(ImporterAmongOthers, AddsNothingThatOthersAddMeanwhile) {
  struct Row {
    int requests;  // before that of the others
    bool update;
    std::string counts;
  };
  const std::vector<Row> rows = {
      {0, false, "12501 = 12497 + 0 + 4 + 0 + 0"},
      {0, true, "12501 = 12497 + 2 + 2 + 0 + 0"},
      {1, false, "12501 = 12498 + 0 + 3 + 0 + 0"},
      {2, false, "12501 = 12500 + 0 + 1 + 0 + 0"},
  };
  auto& source = InterruptedSource::install();
  const auto file = temporaryFile("many.vcf", manyCards(12500) + withoutUid("Zoe")).string();
  for (std::size_t i = 0; i < rows.size(); ++i) {
    const auto container = "c" + std::to_string(i) + ":ABAccount";
    StoreBuilder(source.elsewhere()).container(container, "account", 3);
    std::vector<std::string> known = {"u10", "urn:uuid:u6000", "u12000"};
    if (rows[i].requests > 0) known[0] = "elsewhere";
    if (rows[i].requests > 1) known[1] = "elsewhere too";
    if (rows[i].requests > 1) known[2] = "and there";
    source.beforeRequest(rows[i].requests, [&](ContactSource& elsewhere) {
      auto account = StoreBuilder(elsewhere).in(container);
      const auto add = [&](const PersonValues& values) {
        account.person(RecordKey::make(RecordKind::Person).text(), values);
      };
      add({.first = "P10", .more = {{property_id::kCardUid, Object(known[0])}}});
      add({.first = "Other", .more = {{property_id::kCardUid, Object(known[1])}}});
      add({.first = "Other", .more = {{property_id::kCardUid, Object(known[2])}}});
      // The same as the last card, which has no UID.
      add({.first = "Zoe"});
    });
    ImportOptions options;
    options.update = rows[i].update;
    const auto report = importFiles({file}, container, options);
    EXPECT_EQ(report.failure, "") << i;
    EXPECT_EQ(countsOf(report), rows[i].counts) << i;
    const auto differ = rows[i].update || rows[i].requests > 1 ? 0U : 2U;
    EXPECT_EQ(report.problems.size(), differ) << i;
    const auto others = rows[i].requests + (rows[i].requests > 1 ? 1 : 0);
    EXPECT_EQ(source.recordsIn(container, RecordKind::Person).size(),
              12501U + static_cast<std::size_t>(others))
        << i;
  }
}

TEST(ImporterAmongOthers, AddsACardOnceFromManyThreads) {
  const auto file = temporaryFile("many.vcf", manyCards(6000) + withoutUid("Zoe")).string();
  std::vector<ImportReport> reports(3);
  std::vector<std::thread> threads;
  threads.reserve(reports.size());
  for (auto& report : reports) {
    threads.emplace_back([&] { report = importFiles({file}, "_local", {}); });
  }
  for (auto& thread : threads) thread.join();
  std::uint64_t added = 0;
  for (const auto& report : reports) {
    EXPECT_EQ(report.failure, "");
    EXPECT_EQ(report.added + report.skipped, 6001U);
    added += report.added;
  }
  EXPECT_EQ(added, 6001U);
  EXPECT_EQ(contactSource().recordsIn("_local", RecordKind::Person).size(), 6001U);
}

FoundRecords withCardUid(ContactSource& source, RecordKind kind, std::string_view uid) {
  return source.matches("_local", kind, std::vector<SoughtRecord>{{uid}}).at(0);
}

void removeElsewhere(ContactSource& elsewhere, const std::string& uid) {
  for (const auto kind : {RecordKind::Person, RecordKind::Group}) {
    for (const auto& found : withCardUid(elsewhere, kind, uid)) {
      elsewhere.remove(found.key, kind);
    }
  }
  ASSERT_TRUE(elsewhere.save().done);
}

std::string namesOf(ContactSource& source, const RecordKeys& keys, PropertyId property) {
  std::string names;
  for (const auto& key : keys) {
    names += (names.empty() ? "" : " ") + *source.committedValues(key)->text(property);
  }
  return names;
}

// Nobody has the tags of a card that came in elsewhere.
TEST(ImporterAmongOthers, GivesNoTagsToThoseWhomOthersAdd) {
  auto& source = InterruptedSource::install();
  const auto card = [](const std::string& uid) {
    return "BEGIN:VCARD\r\nVERSION:3.0\r\nUID:" + uid + "\r\nFN:" + uid + "\r\nCATEGORIES:of " +
           uid + "\r\nEND:VCARD\r\n";
  };
  source.beforeRequest(0, [](ContactSource& elsewhere) {
    SaveRequest request;
    auto& added = request.additions.emplace_back();
    added.key = RecordKey::make(RecordKind::Person);
    added.container = "_local";
    added.properties.set(property_id::kCardUid, Object("u1"));
    ASSERT_TRUE(elsewhere.execute(request));
  });
  const auto report =
      importFiles({temporaryFile("new.vcf", card("u1") + card("u2")).string()}, "_local", {});
  EXPECT_EQ(countsOf(report), "2 = 1 + 0 + 1 + 0 + 0");
  std::string tags;
  TagDebts debts = source.tagDebts();
  for (const auto& act : debts.acts) {
    for (const auto& change : act.changes) {
      for (const auto& tag : change.after) tags += tag + ";";
    }
  }
  EXPECT_EQ(tags, "of u2;");
}

TEST(ImporterAmongOthers, AddsAnewWhatOthersRemoveWhileItIsUpdated) {
  auto& source = InterruptedSource::install();
  importFiles({temporaryFile("old.vcf", manyCards(4)).string()}, "_local", {});
  source.beforeRequest(0, [](ContactSource& elsewhere) { removeElsewhere(elsewhere, "u1"); });
  std::string cards;
  for (const auto* uid : {"u0", "u1", "u2", "new"}) cards += cardOf(uid, std::string("N") + uid);
  ImportOptions options;
  options.update = true;
  const auto report = importFiles({temporaryFile("new.vcf", cards).string()}, "_local", options);
  EXPECT_EQ(report.failure, "");
  EXPECT_EQ(countsOf(report), "4 = 2 + 2 + 0 + 0 + 0");
  EXPECT_EQ(namesOf(source, source.recordsIn("_local", RecordKind::Person), property_id::kFirst),
            "Nu0 Nu2 P3 Nnew Nu1");
}

std::string groupOf(const std::string& uid, const std::vector<std::string>& members) {
  std::string text = "BEGIN:VCARD\r\nVERSION:3.0\r\nUID:" + uid + "\r\nN:" + uid +
                     ";;;;\r\nFN:" + uid + "\r\nX-ADDRESSBOOKSERVER-KIND:group\r\n";
  for (const auto& member : members) {
    text += "X-ADDRESSBOOKSERVER-MEMBER:urn:uuid:" + member + "\r\n";
  }
  return text + "END:VCARD\r\n";
}

// The groups of the local account with their members, and what the report tells.
std::string groupsAfter(ContactSource& source, const ImportReport& report) {
  std::string text = report.failure;
  for (const auto& group : source.recordsIn("_local", RecordKind::Group)) {
    text +=
        namesOf(source, {group}, property_id::kGroupName) + "(" +
        namesOf(source, *source.children(group, RecordKind::Person), property_id::kFirst) + "; " +
        namesOf(source, *source.children(group, RecordKind::Group), property_id::kGroupName) + ") ";
  }
  for (const auto& problem : report.problems) {
    text += "| " + std::to_string(problem.line) + ": " + problem.reason;
  }
  return text;
}

TEST(ImporterAmongOthers, LinksWhatIsThereWhenOthersRemoveAndAddMeanwhile) {
  auto& source = InterruptedSource::install();
  const auto cards = temporaryFile("groups.vcf", manyCards(3) + groupOf("G", {"u0", "u1", "H"}) +
                                                     groupOf("H", {"u2"}))
                         .string();
  source.beforeRequest(1, [](ContactSource& elsewhere) {
    removeElsewhere(elsewhere, "u1");
    StoreBuilder(elsewhere).group("h", "H");
    SaveRequest request;
    const auto key = RecordKey::of("h");
    request.replacements.push_back({key, *elsewhere.committedValues(key), nullptr});
    request.replacements[0].properties.set(property_id::kCardUid, Object(std::string("H")));
    ASSERT_TRUE(elsewhere.execute(request)) << request.reason;
  });
  EXPECT_EQ(groupsAfter(source, importFiles({cards}, "_local", {})),
            "H(; ) G(P0; H) | 19: the member u1 is not there| 29: differs from the group with the "
            "same UID; not updated");
}

// As long as the import asks, so that it has to do with what it finds at last.
TEST(ImporterAmongOthers, EndsAlsoWhenOthersNeverStopWriting) {
  auto& source = InterruptedSource::install();
  const auto cards = temporaryFile("groups.vcf", manyCards(9) + groupOf("G", {"u0", "u7", "u8"}) +
                                                     groupOf("H", {"u1", "G"}))
                         .string();
  int requests = 0;
  std::string last;
  std::function<void(ContactSource&)> again = [&](ContactSource& elsewhere) {
    const auto uid = "u" + std::to_string(++requests + 3);
    last = withCardUid(elsewhere, RecordKind::Person, uid).at(0).key.text();
    removeElsewhere(elsewhere, uid);
    source.beforeRequest(0, again);
  };
  source.beforeRequest(1, again);
  const auto found = groupsAfter(source, importFiles({cards}, "_local", {}));
  EXPECT_EQ(found, "G(P0; ) H(P1; G) | 55: the member u7 is not there| 55: the member " + last +
                       " could not be added");
  EXPECT_EQ(requests, 5);
}

}  // namespace
}  // namespace ox::vcard
