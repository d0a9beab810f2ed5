#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "ox/vcard/unmodelled/unmodelled_line.hpp"
#include "ox/vcard/values/property_writer.hpp"

namespace ox::vcard {

// Writes what a record holds beside its properties, once their lines are written: unmodelled lines
// in the form of the version or wrapped, and the details that could not stand in a property's line.
// Borrows the card's writer.
class UnmodelledWriter {
 public:
  enum class Of { Person, Group };
  enum class Revision { IsTrue, IsOutdated };
  enum class NestedCards { LeftOut, Written };

  UnmodelledWriter(PropertyWriter& card, Of of) : card_(card), of_(of) {}

  // One line of these; the preserved ones are left out then.
  void writeCategories(const std::vector<std::string>& categories);
  // False when the line has to be wrapped.
  bool writeLine(const UnmodelledLine& line);
  void writeLines(Revision revision, NestedCards nestedCards);
  void writeDetails();

 private:
  bool writeNestedCard(std::string_view text);
  bool wouldBeMisread(const UnmodelledLine& line);
  bool hasLineFor(const DetailView& parameters) const;

  PropertyWriter& card_;
  Of of_;
  bool hasCategories_ = false;
  std::string room_;  // for lines that change with the version
};

}  // namespace ox::vcard
