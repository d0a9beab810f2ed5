#pragma once

#include <functional>
#include <string>
#include <vector>

#include "ox/OxMacAddressBookSDK/_ABPerson/_ABPerson.hpp"
#include "oxcontacts/find.hpp"
#include "oxcontacts/output/table.hpp"

namespace ox::program {

// A column of a table of persons: how it is headed, and what it shows of somebody.
struct PersonColumn {
  Table::Column head;
  std::function<std::string(const _ABPerson&)> cell;
};

inline constexpr const char* kUsualColumns = "name,phone,email,book,id";
// What may stand in a list of columns, for the user.
std::string columnNames();

// The columns of that list, "name,birthday,email"; throws a CommandError (kUsage) that names what
// is none. The names of the books are borrowed.
std::vector<PersonColumn> personColumns(const std::string& list, const BookNames& books);

Text mainPhone(const _ABPerson& person);
Text mainEmail(const _ABPerson& person);

}  // namespace ox::program
