// One of the many processes that live in one store: it does acts of chance with the persons and
// groups that all share, and with its own, and logs each (see life_model.hpp).
#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <functional>
#include <random>

#include "ox/base/failures.hpp"
#include "tests/OxMacAddressBookSDK/fixtures.hpp"
#include "tests/kills/life.hpp"
#include "tests/kills/record_text.hpp"

namespace ox::kills {
namespace {

constexpr std::size_t kMost = 12;  // things of one kind that a process has at a time
constexpr std::size_t kBatch = 4;

class Log {
 public:
  explicit Log(const std::string& path) : file_(path) {}

  void wanted(const std::string& verb, const std::string& thing) {
    write("try " + verb + " " + thing);
  }
  void ended(bool done) { write(done ? "done" : "not"); }
  void wrong(const std::string& what) { write("wrong " + what); }

 private:
  // Written at once, so that a kill loses no line.
  void write(const std::string& line) { file_ << line + "\n" << std::flush; }

  std::ofstream file_;
};

bool saved() {
  const auto report = records()->saveAndReturnError();
  if (!report.done) records()->revert();
  return report.done && report.dropped.empty();
}

std::shared_ptr<ABPerson> personOf(const std::string& id) {
  return std::dynamic_pointer_cast<ABPerson>(records()->recordForUniqueId(id));
}

std::shared_ptr<ABGroup> groupOf(const std::string& id) {
  return std::dynamic_pointer_cast<ABGroup>(records()->recordForUniqueId(id));
}

class Life {
 public:
  explicit Life(const std::string& name)
      : name_(name),
        log_(lifeLog(name)),
        chance_(static_cast<std::uint32_t>(std::hash<std::string>()(name))) {}

  void live() {
    using Step = void (Life::*)();
    static constexpr std::array kSteps = {&Life::addPhone,    &Life::removePhone, &Life::addTag,
                                          &Life::removeTag,   &Life::addPerson,   &Life::addBatch,
                                          &Life::removeBatch, &Life::addMember,   &Life::addGroup,
                                          &Life::removeGroup, &Life::setPicture,  &Life::setPair,
                                          &Life::phoneOther,  &Life::removeMember};
    const Step step = kSteps[below(kSteps.size())];
    (this->*step)();
  }

 private:
  struct Own {
    std::string owner;  // a person or a group by its identifier, which is its name too
    std::string name;
    std::vector<std::string> ids;
  };
  using Owned = std::vector<Own>;

  std::size_t below(std::size_t end) {
    return std::uniform_int_distribution<std::size_t>(0, end - 1)(chance_);
  }
  std::string next() { return name_ + "-" + std::to_string(++count_); }
  std::string shared() { return "s" + std::to_string(below(kSharedPersons)); }
  std::string sharedGroup() { return "g" + std::to_string(below(kSharedGroups)); }
  Own taken(Owned& things) {
    const auto place = things.begin() + static_cast<std::ptrdiff_t>(below(things.size()));
    auto thing = std::move(*place);
    things.erase(place);
    return thing;
  }

  bool attempt(const std::string& verb, const std::string& thing,
               const std::function<bool()>& act) {
    log_.wanted(verb, thing);
    const bool done = act();
    log_.ended(done);
    return done;
  }

  bool appendPhone(const std::shared_ptr<ABPerson>& person, const std::string& number) {
    auto phones = entriesOf(*person, kABPhoneProperty);
    phones.add(Object(number), number);  // with one label, a new one might be an old one changed
    return person->setValue_forProperty(std::make_shared<const MultiValue>(std::move(phones)),
                                        kABPhoneProperty) &&
           saved();
  }

  void addPhone() {
    if (phones_.size() >= kMost) return removePhone();
    const Own phone{shared(), next(), {}};
    const auto add = [&] { return appendPhone(personOf(phone.owner), phone.name); };
    if (attempt("add", "phone " + phone.owner + " " + phone.name, add)) phones_.push_back(phone);
  }

  void removePhone() {
    if (phones_.empty()) return;
    const auto phone = taken(phones_);
    const auto person = personOf(phone.owner);
    auto phones = entriesOf(*person, kABPhoneProperty);
    const auto isIt = [&](const MultiEntry& entry) { return entry.value == Object(phone.name); };
    if (std::erase_if(phones.entries, isIt) != 1) return log_.wrong("lost phone " + phone.name);
    if (phones.primary != 0 &&
        std::none_of(phones.entries.begin(), phones.entries.end(),
                     [&](const auto& entry) { return entry.identifier == phones.primary; })) {
      phones.primary = 0;
    }
    attempt("remove", "phone " + phone.owner + " " + phone.name, [&] {
      return person->setValue_forProperty(std::make_shared<const MultiValue>(std::move(phones)),
                                          kABPhoneProperty) &&
             saved();
    });
  }

  // A person of another process, who may go at any time.
  void phoneOther() {
    const auto people = records()->people();
    const auto person = people[below(people.size())];
    const auto name = textOf(*person, kABFirstNameProperty);
    if (name.empty()) return;  // it has gone
    const auto number = next();
    attempt("add", "phone " + name + " " + number, [&] { return appendPhone(person, number); });
  }

  bool changeTags(const std::string& person, const std::function<void(_ABPerson&)>& change) {
    const failures::Watch watch;
    change(*hostPerson(personOf(person)));
    return watch.isClear();
  }

  void addTag() {
    if (tags_.size() >= kMost) return removeTag();
    const Own tag{shared(), next(), {}};
    const auto add = [&] {
      return changeTags(tag.owner, [&](_ABPerson& person) { person.addTag(tag.name); });
    };
    if (attempt("add", "tag " + tag.owner + " " + tag.name, add)) tags_.push_back(tag);
  }

  void removeTag() {
    if (tags_.empty()) return;
    const auto tag = taken(tags_);
    const auto there = hostPerson(personOf(tag.owner))->tagArray();
    if (std::find(there.begin(), there.end(), tag.name) == there.end()) {
      return log_.wrong("lost tag " + tag.name);
    }
    attempt("remove", "tag " + tag.owner + " " + tag.name, [&] {
      return changeTags(tag.owner, [&](_ABPerson& person) { person.removeTag(tag.name); });
    });
  }

  // Persons that are whole at every moment: first name, note and picture tell of each other.
  void addPersons(std::size_t count) {
    const auto request = CNSaveRequest::init();
    const auto batch = next();
    std::vector<std::shared_ptr<CNMutableContact>> contacts;
    Own own{"-", batch, {}};
    for (std::size_t i = 0; i < count; ++i) {
      const auto name = "w" + batch + "." + std::to_string(i) + "/" + std::to_string(count);
      PropertyBag values;
      values.set(property_id::kFirst, Object(name));
      values.set(property_id::kNote, Object("note of " + name));
      contacts.push_back(CNMutableContact::init());
      contacts.back()->setProperties(std::move(values));
      contacts.back()->setImageData(makeData("picture of " + name));
      request->addContact_toContainerWithIdentifier(contacts.back(), "_local");
      log_.wanted("add", "person - " + name);
    }
    std::string error;
    const bool done = CNContactStore::init()->executeSaveRequest_error(*request, &error);
    log_.ended(done);
    if (!done) return;
    for (const auto& contact : contacts) own.ids.push_back(contact->identifier().value_or(""));
    batches_.push_back(std::move(own));
  }
  void addPerson() { return batches_.size() >= kMost ? removeBatch() : addPersons(1); }
  void addBatch() { return batches_.size() >= kMost ? removeBatch() : addPersons(kBatch); }

  void removeBatch() {
    if (batches_.empty()) return;
    const auto batch = taken(batches_);
    std::erase_if(members_, [&](const Own& member) {
      return std::find(batch.ids.begin(), batch.ids.end(), member.ids[0]) != batch.ids.end();
    });
    for (const auto& id : batch.ids) {
      const auto person = personOf(id);
      if (!person) return log_.wrong("lost person " + id);
      log_.wanted("remove", "person - " + textOf(*person, kABFirstNameProperty));
    }
    for (const auto& id : batch.ids) records()->removeRecord(personOf(id));
    log_.ended(saved());
  }

  void addMember() {
    if (batches_.empty()) return addPerson();
    if (members_.size() >= kMost) return removeMember();
    const auto& batch = batches_[below(batches_.size())];
    const auto person = personOf(batch.ids[below(batch.ids.size())]);
    const Own member{
        sharedGroup(), textOf(*person, kABFirstNameProperty), {person->uniqueId().value_or("")}};
    const auto group = groupOf(member.owner);
    const auto isMember = group->members();
    if (std::find(isMember.begin(), isMember.end(), person) != isMember.end()) return;
    const auto add = [&] { return group->addMember(person) && saved(); };
    if (attempt("add", "member " + member.owner + " " + member.name, add)) {
      members_.push_back(member);
    }
  }

  void removeMember() {
    if (members_.empty()) return;
    const auto member = taken(members_);
    const auto person = personOf(member.ids[0]);
    const auto group = groupOf(member.owner);
    const auto there = group->members();
    if (std::find(there.begin(), there.end(), person) == there.end()) {
      return log_.wrong("lost member " + member.name);
    }
    attempt("remove", "member " + member.owner + " " + member.name,
            [&] { return group->removeMember(person) && saved(); });
  }

  // Below one that all share, or below one of its own.
  void addGroup() {
    if (groups_.size() >= kMost) return removeGroup();
    const auto parent = groups_.empty() || below(2) == 0 ? sharedGroup() : groups_.back().ids[0];
    const auto parentName = textOf(*groupOf(parent), kABGroupNameProperty);
    Own own{parent, "t" + next(), {}};
    const auto group = CNMutableGroup::init();
    group->setName(own.name);
    const auto request = CNSaveRequest::init();
    request->addGroup_toContainerWithIdentifier(group, "_local");
    request->addSubgroup_toGroup(group->identifier(), parent);
    const auto add = [&] {
      std::string error;
      return CNContactStore::init()->executeSaveRequest_error(*request, &error);
    };
    if (!attempt("add", "group " + parentName + " " + own.name, add)) return;
    own.ids.push_back(group->identifier().value_or(""));
    groups_.push_back(std::move(own));
  }

  // The last one, below which there is none of its own.
  void removeGroup() {
    if (groups_.empty()) return;
    const auto own = groups_.back();
    groups_.pop_back();
    const auto group = groupOf(own.ids[0]);
    if (!group) return log_.wrong("lost group " + own.name);
    const auto parent = textOf(*groupOf(own.owner), kABGroupNameProperty);
    attempt("remove", "group " + parent + " " + own.name,
            [&] { return records()->removeRecord(group) && saved(); });
  }

  void setPicture() {
    const auto person = shared();
    const auto name = next();
    attempt("set", "picture " + person + " " + name,
            [&] { return personOf(person)->setImageData(makeData(kPicture + name)) && saved(); });
  }

  // Two values that are to change together.
  void setPair() {
    const auto name = next();
    const auto id = shared();
    const auto person = personOf(id);
    attempt("set", "pair " + id + " " + name, [&] {
      return person->setValue_forProperty(Object(name), kABNicknameProperty) &&
             person->setValue_forProperty(Object(name), kABJobTitleProperty) && saved();
    });
  }

  std::string name_;
  Log log_;
  std::mt19937 chance_;
  std::size_t count_ = 0;
  Owned phones_;
  Owned tags_;
  Owned batches_;
  Owned members_;
  Owned groups_;
};

}  // namespace

// Argument: its name. Lives until the stop file is there.
const support::SecondProcess lives("lives", [](const auto& arguments) {
  OxMacAddressBook::addressBookArray();
  Life life(arguments.at(0));
  while (!std::filesystem::exists(stopFile())) life.live();
  return 0;
});

}  // namespace ox::kills
