#include "tests/kills/life_model.hpp"

#include <fstream>

namespace ox::kills {
namespace {

struct Parts {
  std::string kind;
  std::string owner;
  std::string name;
};

Parts partsOf(const LifeModel::Thing& thing) {
  const auto first = thing.find(' ');
  const auto second = thing.find(' ', first + 1);
  return {thing.substr(0, first), thing.substr(first + 1, second - first - 1),
          thing.substr(second + 1)};
}

// Owners are persons and groups; nobody owns these themselves.
bool isOwner(const Parts& parts) {
  return parts.kind == "person" || parts.kind == "group";
}

}  // namespace

void LifeModel::readLog(const std::string& path) {
  std::ifstream file(path);
  std::vector<Try> tried;
  // The process's own last setting of each kind and owner: an earlier one of its own cannot last.
  std::map<std::string, Thing> lastSet;
  for (std::string line; std::getline(file, line);) {
    if (file.eof()) break;  // torn by the kill: the act before it had not ended
    if (line.starts_with("wrong ")) {
      wrong_.insert(line.substr(6));
    } else if (line.starts_with("try ")) {
      const auto space = line.find(' ', 4);
      tried.push_back({line.substr(4, space - 4), line.substr(space + 1)});
    } else {
      for (const auto& each : tried) {
        const auto parts = partsOf(each.thing);
        if (each.verb != "set" || line != "done") continue;
        auto& last = lastSet[parts.kind + " " + parts.owner];
        candidates_.erase(last);
        last = each.thing;
      }
      end(line, tried);
    }
  }
  end("killed", tried);
}

void LifeModel::end(const std::string& how, std::vector<Try>& tried) {
  if (tried.empty()) return;
  ++acts_;
  if (how == "not") ++refused_;
  for (const auto& [verb, thing] : tried) {
    if (verb == "set") {
      if (how != "not") candidates_.insert(thing);
      continue;
    }
    const auto now = verb == "add" ? Expect::There : Expect::Gone;
    const auto before = expected_.emplace(thing, Expect::Gone).first->second;
    if (how == "done") {
      expected_[thing] = now;
    } else if (how == "killed" && before != now) {
      expected_[thing] = Expect::Either;
    }
  }
  tried.clear();
}

std::string LifeModel::differences(const Things& there) const {
  std::string text;
  for (const auto& line : wrong_) text += line + "\n";
  std::set<std::string> owners;
  for (const auto& thing : there) {
    const auto parts = partsOf(thing);
    if (isOwner(parts)) owners.insert(parts.name);
  }
  for (const auto& thing : std::set<Thing>(there.begin(), there.end())) {
    if (there.count(thing) > 1) text += "doubled: " + thing + "\n";
    const auto known = expected_.find(thing);
    const bool isExpected =
        known == expected_.end() ? candidates_.contains(thing) : known->second != Expect::Gone;
    if (!isExpected) text += "not gone: " + thing + "\n";
  }
  for (const auto& [thing, expect] : expected_) {
    if (expect != Expect::There || there.contains(thing)) continue;
    const auto parts = partsOf(thing);
    const bool ownerIsThere = isOwner(parts) || owners.contains(parts.owner);
    // A member is a person of its own.
    const bool nameIsThere = parts.kind != "member" || owners.contains(parts.name);
    if (ownerIsThere && nameIsThere) text += "missing: " + thing + "\n";
  }
  return text;
}

}  // namespace ox::kills
