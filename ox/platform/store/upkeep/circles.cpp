#include "ox/platform/store/upkeep/circles.hpp"

#include <algorithm>
#include <cstddef>
#include <limits>
#include <unordered_map>

namespace ox {
namespace {

constexpr auto kUnmet = std::numeric_limits<std::size_t>::max();

struct Group {
  std::int64_t row = 0;
  std::vector<std::size_t> below;
  std::size_t met = kUnmet;       // when it was reached, counted from 0
  std::size_t earliest = kUnmet;  // of the open groups that it leads to
  bool isOpen = false;
};

// Parts the groups into those that all lead to each other (Tarjan), on a stack of its own: trees
// may be deeper than that of the thread.
class Circles {
 public:
  explicit Circles(const std::vector<GroupLink>& links) {
    for (const auto& [parent, child] : links) {
      const auto above = placeOf(parent);
      const auto below = placeOf(child);
      groups_[above].below.push_back(below);
    }
  }

  std::vector<std::int64_t> found() {
    for (std::size_t i = 0; i < groups_.size(); ++i) {
      if (groups_[i].met == kUnmet) walkFrom(i);
    }
    std::ranges::sort(found_);
    return std::move(found_);
  }

 private:
  struct Step {
    std::size_t group;
    std::size_t next = 0;  // of those below it
  };

  std::size_t placeOf(std::int64_t row) {
    const auto [place, isNew] = places_.emplace(row, groups_.size());
    if (isNew) groups_.emplace_back().row = row;
    return place->second;
  }

  void enter(std::size_t group) {
    groups_[group].met = groups_[group].earliest = count_++;
    groups_[group].isOpen = true;
    open_.push_back(group);
    path_.push_back({group});
  }

  void walkFrom(std::size_t start) {
    enter(start);
    while (!path_.empty()) {
      auto& [place, next] = path_.back();
      auto& group = groups_[place];
      if (next < group.below.size()) {
        const auto& below = groups_[group.below[next++]];
        if (below.met == kUnmet) {
          enter(group.below[next - 1]);
        } else if (below.isOpen) {
          group.earliest = std::min(group.earliest, below.met);
        }
        continue;
      }
      const auto done = place;
      path_.pop_back();
      if (!path_.empty()) {
        auto& above = groups_[path_.back().group];
        above.earliest = std::min(above.earliest, groups_[done].earliest);
      }
      if (groups_[done].earliest == groups_[done].met) close(done);
    }
  }

  bool leadsToItself(std::size_t group) const {
    return std::ranges::find(groups_[group].below, group) != groups_[group].below.end();
  }

  // Takes the group and those that were reached after it and lead back to it.
  void close(std::size_t first) {
    const auto begin = std::find(open_.rbegin(), open_.rend(), first).base() - 1;
    const bool isCircle = open_.end() - begin > 1 || leadsToItself(first);
    for (auto each = begin; each != open_.end(); ++each) {
      groups_[*each].isOpen = false;
      if (isCircle) found_.push_back(groups_[*each].row);
    }
    open_.erase(begin, open_.end());
  }

  std::unordered_map<std::int64_t, std::size_t> places_;
  std::vector<Group> groups_;
  std::vector<std::size_t> open_;
  std::vector<Step> path_;
  std::vector<std::int64_t> found_;
  std::size_t count_ = 0;
};

}  // namespace

std::vector<std::int64_t> groupsBelowThemselves(const std::vector<GroupLink>& links) {
  return Circles(links).found();
}

}  // namespace ox
