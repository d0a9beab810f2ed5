// A process that does nothing but look at a store in which others live, and logs what no reader may
// see: half a record, half an act.
#include <filesystem>
#include <fstream>
#include <map>
#include <set>

#include "tests/kills/life.hpp"
#include "tests/kills/record_text.hpp"

namespace ox::kills {
namespace {

class Watcher {
 public:
  explicit Watcher(const std::string& name) : log_(lifeLog(name)) {}

  void look() {
    std::map<std::string, std::size_t> batches;  // how many of each are listed
    bool allStayed = true;
    for (const auto& person : records()->people()) {
      const auto name = textOf(*person, kABFirstNameProperty);
      if (const auto problem = problemOf(*person, name); !problem.empty()) {
        if (isThere(*person)) wrong(problem);
      }
      if (name.starts_with("w"))
        ++batches[name.substr(0, name.find('.')) + name.substr(name.find('/'))];
      allStayed = allStayed && !name.empty();
    }
    if (allStayed) {
      for (const auto& [batch, count] : batches) {
        if (std::to_string(count) != batch.substr(batch.find('/') + 1)) {
          wrong("persons of one act: " + std::to_string(count) + " of " + batch);
        }
      }
    }
    for (const auto& group : records()->groups()) lookAt(*group);
  }

 private:
  static std::string problemOf(const ABPerson& person, const std::string& name) {
    if (name.empty()) return "a person without a name";
    if (name.starts_with("s")) {
      const auto first = textOf(person, kABNicknameProperty);
      const auto second = textOf(person, kABJobTitleProperty);
      const bool isStill = textOf(person, kABNicknameProperty) == first;
      return isStill && first != second ? name + " has " + first + " with " + second : "";
    }
    const auto image = person.imageData();
    if (textOf(person, kABNoteProperty) != "note of " + name) return name + " without its note";
    return image && *image == "picture of " + name ? "" : name + " without its picture";
  }

  void lookAt(const ABGroup& group) {
    if (textOf(group, kABGroupNameProperty).empty() && isThere(group)) {
      wrong("a group without a name");
    }
    std::set<Text> seen;
    for (const auto& member : group.members()) {
      if (!seen.insert(member->uniqueId()).second) wrong("a member twice");
    }
  }

  void wrong(const std::string& what) {
    if (!told_.insert(what).second) return;
    log_ << "wrong seen: " + what + "\n" << std::flush;
  }

  std::ofstream log_;
  std::set<std::string> told_;
};

}  // namespace

// Argument: its name.
const support::SecondProcess watches("watches", [](const auto& arguments) {
  Watcher watcher(arguments.at(0));
  int looks = 0;
  for (; !std::filesystem::exists(stopFile()); ++looks) watcher.look();
  return looks > 0 ? 0 : 1;
});

}  // namespace ox::kills
