#include "oxcontacts/page/page_data.hpp"

#include <unordered_map>

#include "ox/images/image_codec.hpp"

namespace ox::program {
namespace {

using Group = std::shared_ptr<_ABGroup>;
using Places = std::unordered_map<RecordKey, std::size_t>;

// No tag begins or ends in it.
std::string withinScript(const Json& json) {
  std::string text;
  for (const char c : json.dump(-1, ' ', false, Json::error_handler_t::replace)) {
    if (c == '<') {
      text += "\\u003c";
    } else {
      text += c;
    }
  }
  return text;
}

// The groups of some books with everything below them, each once.
class GroupList {
 public:
  std::size_t placeOf(const Group& group) {
    const auto [place, isNew] = places_.emplace(group->key(), groups_.size());
    if (isNew) groups_.push_back(group);
    return place->second;
  }

  // Goes on to those that lie in them, as deep as they do.
  Json json(const Places& persons) {
    Json list = Json::array();
    for (std::size_t next = 0; next < groups_.size();) {
      const auto group = groups_[next++];  // no loop over the list itself, for it grows
      Json below = Json::array();
      for (const auto& each : group->subGroups()) {
        if (const auto host = recordOf(each)) below.push_back(placeOf(host));
      }
      Json members = Json::array();
      for (const auto& member : group->members()) {
        const auto place = persons.find(member->key());
        if (place != persons.end()) members.push_back(place->second);
      }
      list.push_back({{"name", group->displayName().value_or("")},
                      {"groups", std::move(below)},
                      {"persons", std::move(members)}});
    }
    return list;
  }

 private:
  std::vector<Group> groups_;
  Places places_;
};

Json bookJson(const OxMacAddressBook& book, GroupList& groups) {
  Json json = {{"name", book.name().value_or("")}};
  if (const auto picture = book.logo1()) {
    json["picture"] = imageAddress(images::encodePng(*picture), "png");
  }
  Json roots = Json::array();
  for (const auto& root : book.rootGroups()) {
    if (const auto host = recordOf(root)) roots.push_back(groups.placeOf(host));
  }
  json["groups"] = std::move(roots);
  return json;
}

}  // namespace

void writePageData(const PageContent& content, const std::function<void(std::string_view)>& write) {
  const auto& [persons, letters] = content.ordered;
  Places places;
  for (std::size_t i = 0; i < persons.size(); ++i) places.emplace(persons[i]->key(), i);
  GroupList groups;
  Json books = Json::array();
  std::unordered_map<std::string, std::size_t> bookPlaces;
  for (const auto& book : content.books) {
    bookPlaces.emplace(book->ID().value_or(""), books.size());
    books.push_back(bookJson(*book, groups));
  }
  write("{\"books\":" + withinScript(books) + ",\n\"groups\":" + withinScript(groups.json(places)) +
        ",\n\"persons\":[");
  for (std::size_t i = 0; i < persons.size(); ++i) {
    auto person = pagePerson(*persons[i], content.maps);
    const auto book = bookPlaces.find(persons[i]->addressBookID().value_or(""));
    if (book != bookPlaces.end()) person["book"] = book->second;
    person["letter"] = letters[i];
    write((i == 0 ? "\n" : ",\n") + withinScript(person));
  }
  write("]}");
}

}  // namespace ox::program
