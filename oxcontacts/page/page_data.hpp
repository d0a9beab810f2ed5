#pragma once

#include <functional>
#include <memory>
#include <string_view>
#include <vector>

#include "oxcontacts/output/order.hpp"
#include "oxcontacts/page/page_person.hpp"

namespace ox::program {

// What a page shows.
struct PageContent {
  std::vector<std::shared_ptr<OxMacAddressBook>> books;
  OrderedPersons ordered;
  Maps maps = Maps::No;
};

// Gives the data of the page piece by piece, a person a piece: JSON that may stand within a script
// element of HTML, whatever the contacts hold. {"books": [{"name","picture","groups"}], "groups":
// [{"name","groups","persons"}], "persons": [...]}; groups and persons go by their places in these
// lists, a person's "book" too. A group that lies in several is there once.
void writePageData(const PageContent& content, const std::function<void(std::string_view)>& write);

}  // namespace ox::program
