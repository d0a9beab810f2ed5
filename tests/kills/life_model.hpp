#pragma once

#include <map>
#include <set>
#include <string>
#include <vector>

namespace ox::kills {

// What many processes did to one store, from the logs that they wrote, and what must be there
// therefore. A log holds one line for each thing before it is tried and one for how it ended:
//
//   try add phone s3 4-17      a thing: its kind, who has it, its name, which no other process uses
//   try remove phone s3 4-17
//   try set picture s3 4-18    one of the things of that kind that its owner has, the last one
//   stays done                       what was tried since the last end is in the store not it is
//   not wrong ...                  the process saw what must not be
//
// Several tries before one end are one act. What a killed process tried last may be there or not.
class LifeModel {
 public:
  // "phone s3 4-17"
  using Thing = std::string;
  using Things = std::multiset<Thing>;

  void readLog(const std::string& path);

  // Everything in which the things that are there differ from what must be, one line each, and what
  // the processes saw. Things whose owner is not there any more are not missed.
  std::string differences(const Things& there) const;

  std::size_t acts() const { return acts_; }
  // How many acts were not done, told and without a kill.
  std::size_t refused() const { return refused_; }

 private:
  enum class Expect { There, Gone, Either };
  struct Try {
    std::string verb;
    Thing thing;
  };
  void end(const std::string& how, std::vector<Try>& tried);

  std::map<Thing, Expect> expected_;
  std::set<Thing> candidates_;  // of those that are set: what may be the last
  std::set<std::string> wrong_;
  std::size_t acts_ = 0;
  std::size_t refused_ = 0;
};

}  // namespace ox::kills
