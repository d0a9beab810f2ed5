#include "tests/platform/store/rich_store.hpp"

#include <gtest/gtest.h>

#include "ox/platform/store/journal/store_journal.hpp"
#include "ox/records/property_codec.hpp"
#include "tests/support/store_builder.hpp"
#include "tests/support/sync_state.hpp"

namespace ox::support {
namespace {

std::string textOf(const JournalChange& change) {
  return std::to_string(change.act) + "/" + std::to_string(change.command) + "/" +
         std::to_string(change.at) + "/" + change.origin.program + "/" +
         std::to_string(static_cast<int>(change.kind)) + "/" + change.record.text() + "/" +
         change.other.text() + "/" + encodeProperties(change.before) + "/" +
         encodeProperties(change.after) + "/" + change.account.name + change.account.identifier +
         "/" + change.tags.person + "\n";
}

// An account in step with a book, whose second card has lost its record.
void fillSync(ContactSource& source) {
  SaveRequest request;
  SyncLogin login;
  login.name = "work";
  login.homes = {"/home"};
  request.sync.logins.push_back(login);
  SyncBook book;
  book.container = "A:ABAccount";
  book.token = "the token of the book";
  request.sync.books.push_back({book, "work"});
  for (const auto* name : {"cid", "gone"}) {
    SyncCardChange change;
    change.card.container = book.container;
    change.card.path = std::string("/home/") + name;
    if (name == std::string("cid")) change.card.record = RecordKey::of(name);
    change.texts = SyncCard::Texts{"the text of a card", "agreed", "tags", "members"};
    request.sync.cards.push_back(change);
  }
  request.sync.conflicts.push_back({0, book.container, "/home/cid", "Note", "t", "ours", "b", 5});
  request.sync.runs.push_back({book.container, 1, 2, "counts", "in step"});
  ASSERT_TRUE(source.execute(request)) << request.reason;
}

std::string textOf(const PastRecord& record) {
  std::string text = record.key.text() + record.container + encodeProperties(record.properties);
  for (const auto& group : record.groups) text += group.text() + " ";
  return text + "\n";
}

}  // namespace

void fillRichStore(ContactSource& source) {
  const auto key = [](const char* id) { return RecordKey::of(id); };
  StoreBuilder build(source);
  const auto custom = property_table::add("OxFlippedProperty", kABStringProperty);
  build
      .person("ann",
              {.first = "Ann",
               .note = "a note",
               .phones = {{"home", Object("1")}, {"work", Object("2")}},
               .more = {{property_id::kCardUid, Object("card-of-ann")}, {custom, Object("custom")}},
               .image = makeData("the picture of Ann")})
      .person("ben", {.first = "Ben", .image = makeData("the picture of Ben")})
      .persons("many", 12);
  build.group("friends", "Friends").group("chess", "Chess");
  build.members("friends", {"ann", "ben", "many1", "many2"}).members("chess", {"ann", "many3"});
  build.subgroup("friends", "chess");
  build.container("A:ABAccount", "iCloud", 3).person("cid", {.first = "Cid", .company = "A"});
  source.setValue(key("ann"), RecordKind::Person, property_id::kFirst, Object("Anna"));
  source.setImageData(key("ann"), makeData("another picture of Ann"));
  ASSERT_TRUE(source.save({{"_local", "ann", {}, {"red", "blue"}}}).done);
  source.remove(key("ben"), RecordKind::Person);
  source.unlink(key("friends"), key("many1"), RecordKind::Person);
  ASSERT_TRUE(source.save().done);
  source.setValue(key("many5"), RecordKind::Person, property_id::kNote, Object("taken back"));
  ASSERT_TRUE(source.save().done);
  ASSERT_TRUE(source.journal().takeBack(std::nullopt, StoreJournal::Last::Command).done);
  source.journal().setBounds({36500, 1 << 20});
  fillSync(source);
}

std::string wholeStateOf(ContactSource& source) {
  std::string text;
  auto& journal = source.journal();
  for (const auto& container : source.containers()) {
    text += container->identifier + container->name + std::to_string(container->type) + "\n";
    for (const auto kind : {RecordKind::Person, RecordKind::Group}) {
      for (const auto& key : source.recordsIn(container->identifier, kind)) {
        text += key.text() + encodeProperties(*source.committedValues(key));
        if (const auto picture = source.committedImage(key)) text += *picture;
        for (const auto& parent : *source.parents(key)) text += " in " + parent.text();
        for (const auto below : {RecordKind::Person, RecordKind::Group}) {
          for (const auto& child : *source.children(key, below)) text += " + " + child.text();
        }
        for (const auto& change : journal.historyOf(key, 100)) text += textOf(change);
      }
    }
  }
  for (const auto& command : journal.commands(100)) {
    text += std::to_string(command.number) + command.origin.command +
            std::to_string(command.added) + std::to_string(command.changed) +
            std::to_string(command.removed) + std::to_string(command.takenBackBy.value_or(0)) +
            "\n";
  }
  for (const auto& removed : journal.removedRecords(100)) text += textOf(removed.record);
  text += textOf(journal.recordAt(RecordKey::of("ann"), INT64_MAX).record);
  for (const auto& act : source.tagDebts().acts) {
    for (const auto& change : act.changes) text += change.person + change.after.front();
  }
  return text + syncState(source.sync(), [](const RecordKey& key) { return key.text(); }) +
         std::to_string(journal.bounds().days) + "\n";
}

}  // namespace ox::support
