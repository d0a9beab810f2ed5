// What the library writes for a host, killed at every change that it makes to a file. The host does
// its work in steps and says after each that it is done; what is left is the state after the last
// step that it spoke of, or after the next.
#include <algorithm>
#include <cstdio>
#include <functional>
#include <gtest/gtest.h>
#include <map>
#include <ostream>

#include "ox/OxMacAddressBookSDK/admin/whole_act.hpp"
#include "ox/platform/store/contact_source.hpp"
#include "ox/records/fingerprint.hpp"
#include "tests/OxMacAddressBookSDK/book/bulk_runs.hpp"
#include "tests/OxMacAddressBookSDK/fixtures.hpp"
#include "tests/images/picture_files.hpp"
#include "tests/kills/address_book.hpp"
#include "tests/kills/allowed_states.hpp"
#include "tests/kills/killed_run.hpp"
#include "tests/kills/readable_state.hpp"

namespace ox::kills {
namespace {

std::shared_ptr<ABAddressBook> records() {
  return ABAddressBook::sharedAddressBook();
}

std::shared_ptr<OxMacAddressBook> localBook() {
  return test::bookNamed("_local");
}

// The person of the address book that starts with that name.
std::shared_ptr<_ABPerson> named(const std::string& name) {
  for (const auto& person : records()->people()) {
    auto host = hostPerson(person);
    if (host->displayName().value_or("").starts_with(name)) return host;
  }
  std::abort();
}

std::shared_ptr<_ABGroup> groupNamed(const std::string& name) {
  for (const auto& group : records()->groups()) {
    auto host = hostGroup(group);
    if (host->displayName() == name) return host;
  }
  std::abort();
}

void mustSave() {
  if (!records()->save()) std::abort();
}

// --- the steps ---

void saveManyEdits() {
  named("Ann")->setValue_byPropertyName(test::onePhone("99"), OxProPertyPhone);
  named("Ben")->setThumbnail(std::make_shared<const Image>(images::patterned(20, 20)));
  named("Cid")->setValue_forProperty(Object("short"), kABNoteProperty);
  records()->removeRecord(named("Dora"));
  groupNamed("Club")->addPersons({named("Ann"), named("Cid")});
  groupNamed("Friends")->removePersonsFromThisGroup({named("Ben")});
  mustSave();
}

std::shared_ptr<IOxPerson>& madePerson() {
  static auto& person = *new std::shared_ptr<IOxPerson>;
  return person;
}

void makePerson() {
  madePerson() = localBook()->newPerson();
}

void copyAnn() {
  madePerson() = test::bookNamed("W")->addOneFromOtherPerson(named("Ann"));
}

// Without the save.
void fillPerson() {
  const auto person = recordOf(madePerson());
  person->setValue_forProperty(Object("Ida"), kABFirstNameProperty);
  person->setValue_byPropertyName(test::onePhone("12"), OxProPertyPhone);
  person->setThumbnail(std::make_shared<const Image>(images::patterned(9, 9)));
}

void fillAndSavePerson() {
  fillPerson();
  mustSave();
}

void makeWholePerson() {
  WholeAct act;
  makePerson();
  fillPerson();
  if (!act.save().contacts.done) std::abort();
}

void givePersonUp() {
  WholeAct act;
  makePerson();
  fillPerson();
}

std::shared_ptr<IOxGroup>& madeGroup() {
  static auto& group = *new std::shared_ptr<IOxGroup>;
  return group;
}

void makeGroup() {
  madeGroup() = localBook()->newGroup();
}

void nameAndSaveGroup() {
  madeGroup()->setDisplayName("Sailing");
  madeGroup()->addPersons({named("Ann"), named("Ben")});
  mustSave();
}

void makeWholeGroupTree() {
  WholeAct act;
  const auto above = localBook()->addGroupByName("Sports");
  const auto below = above->addSubGroupByName("Sailing");
  below->addPersons({named("Ann"), named("Cid")});
  if (!act.save().contacts.done) std::abort();
}

void copyWholeAnn() {
  WholeAct act;
  copyAnn();
  if (!act.save().contacts.done) std::abort();
}

void removeGroupTree() {
  localBook()->removeGroup(groupNamed("Friends"));
  mustSave();
}

void executeRequest() {
  const auto request = CNSaveRequest::init();
  request->addContainer({"N:ABAccount", "Net", 1});
  const auto contact = CNMutableContact::init();
  PropertyBag values;
  values.set(property_id::kFirst, Object("Jon"));
  values.set(property_id::kNote, Object(std::string(5'000, 'j')));
  contact->setProperties(std::move(values));
  contact->setImageData(makeData(images::flatJpeg(50, 40, {7, 8, 9})));
  const auto group = CNMutableGroup::init();
  group->setName("Jury");
  request->addContact_toContainerWithIdentifier(contact, "N");
  request->addGroup_toContainerWithIdentifier(group, "N");
  request->addMember_toGroup(contact->identifier(), group->identifier());
  std::string error;
  if (!CNContactStore::init()->executeSaveRequest_error(*request, &error)) std::abort();
}

NewRecord personOfNet(const char* id, const std::string& note) {
  PropertyBag values;
  values.set(property_id::kNote, Object(note));
  return {RecordKey::of(id), RecordKind::Person, "N:ABAccount", std::move(values), nullptr};
}

SyncCardChange cardOf(const NewRecord& record, std::int64_t id) {
  SyncCardChange change;
  change.card.id = id;
  change.card.container = record.container;
  change.card.record = record.key;
  change.card.path = "/net/" + record.key.text();
  change.card.fingerprint = contentFingerprint(record.properties, record.image);
  change.texts = SyncCard::Texts{std::string(3'000, 't'), "agreed", "", ""};
  return change;
}

SyncBook bookOfNet(const char* token) {
  SyncBook book;
  book.container = "N:ABAccount";
  book.token = token;
  return book;
}

void mustExecute(SaveRequest& request) {
  request.outlivesPowerCut = true;
  if (!containerSource().execute(request)) std::abort();
}

void addSyncedAccount() {
  SaveRequest request;
  request.newContainers.push_back({"N:ABAccount", "Net", 3});
  SyncLogin login;
  login.name = "net";
  request.sync.logins.push_back(login);
  request.sync.books.push_back({bookOfNet("first"), "net"});
  for (const auto* id : {"ida", "jon"}) {
    request.additions.push_back(personOfNet(id, "as it came"));
    request.sync.cards.push_back(cardOf(request.additions.back(), 0));
  }
  mustExecute(request);
}

// Ida was changed there, Jon is gone there, Kim is new there.
void storeRun() {
  const auto before = containerSource().committedValues(RecordKey::of("jon"));
  SaveRequest request;
  request.removals.push_back({RecordKey::of("jon"), contentFingerprint(*before, nullptr)});
  const auto ida = personOfNet("ida", std::string(5'000, 'i'));
  request.replacements.push_back({ida.key, ida.properties, nullptr});
  request.additions.push_back(personOfNet("kim", "new there"));
  request.sync.removedCards = {2};
  request.sync.books.push_back({bookOfNet("second"), "net"});
  request.sync.cards = {cardOf(ida, 1), cardOf(request.additions.back(), 0)};
  request.sync.runs.push_back({"N:ABAccount", 1, 2, "1 new, 1 changed, 1 deleted", ""});
  mustExecute(request);
}

void addTag() {
  named("Ann")->addTag("opera");
}

void replaceTags() {
  named("Ben")->setTags(std::vector<std::string>{"one", "two", "three"});
}

void removeTag() {
  named("Ann")->removeTag("work");
}

void forgetTags() {
  test::bookNamed("W")->tagManager()->removeForPersonID(named("Dora")->ID());
}

void removePersons() {
  localBook()->removePersons({named("Ann"), named("Cid")});
}

void loadBook() {
  const auto data = makeData(support::fileBytes(support::temporaryPath("local.book")));
  if (!test::loaded(localBook(), data).ends_with("100!")) std::abort();
}

struct Work {
  const char* name;
  std::vector<std::function<void()>> steps;
};

std::ostream& operator<<(std::ostream& stream, const Work& work) {
  return stream << work.name;
}

const std::vector<Work>& allWork() {
  static const std::vector<Work> work = {
      {"SavesManyEdits", {saveManyEdits}},
      {"MakesAPerson", {makePerson, fillAndSavePerson}},
      {"MakesAGroup", {makeGroup, nameAndSaveGroup}},
      {"MakesAPersonAsOneAct", {makeWholePerson}},
      {"MakesAGroupTreeAsOneAct", {makeWholeGroupTree}},
      {"CopiesAPersonAsOneAct", {copyWholeAnn}},
      {"GivesAPersonUp", {givePersonUp, saveManyEdits}},
      {"RemovesAGroupTree", {removeGroupTree}},
      {"ExecutesARequest", {executeRequest}},
      {"StoresARunOfABook", {addSyncedAccount, storeRun}},
      {"ChangesTags", {addTag, replaceTags, removeTag, forgetTags}},
      {"RemovesPersons", {removePersons, mustSave}},
      {"LoadsABook", {loadBook}},
  };
  return work;
}

// Arguments: which work, and how many of its steps. Whatever the steps do not save is not to be
// there afterwards.
const support::SecondProcess worksAsHost("worksAsHost", [](const auto& arguments) {
  const auto& work = *std::find_if(allWork().begin(), allWork().end(),
                                   [&](const auto& one) { return one.name == arguments.at(0); });
  OxMacAddressBook::addressBookArray();
  for (int i = 0; i < std::stoi(arguments.at(1)); ++i) {
    work.steps.at(static_cast<std::size_t>(i))();
    std::puts("done");
    std::fflush(stdout);
  }
  return 0;
});

class KilledHost : public testing::TestWithParam<Work> {};

TEST_P(KilledHost, LeavesWholeStepsOnly) {
  fillAddressBook();
  const auto known = identifiersNow();
  AllowedStates states([&] { return readableState(known); });
  const auto& work = GetParam();
  {
    const PreparedFolder prepared;
    for (std::size_t steps = 1; steps <= work.steps.size(); ++steps) {
      const auto result = runAlive(worksAsHost.command({work.name, std::to_string(steps)}));
      ASSERT_EQ(result.exitCode, 0) << result.errors;
      states.add();
      prepared.bringBack();
    }
  }
  const auto command = worksAsHost.command({work.name, std::to_string(work.steps.size())});
  const int killed = killEverywhere(command, [&](const support::ProcessResult& result) {
    const auto done =
        static_cast<std::size_t>(std::count(result.output.begin(), result.output.end(), '\n'));
    states.expectLeft(done, std::min(done + 1, work.steps.size()));
  });
  EXPECT_GT(killed, 1);
  RecordProperty("killed", killed);
}

std::string nameOf(const testing::TestParamInfo<Work>& info) {
  return info.param.name;
}

INSTANTIATE_TEST_SUITE_P(That, KilledHost, testing::ValuesIn(allWork()), nameOf);

}  // namespace
}  // namespace ox::kills
