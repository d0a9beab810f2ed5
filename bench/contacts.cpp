#include "bench/contacts.hpp"

#include <array>
#include <string_view>

#include "bench/card_text.hpp"
#include "bench/contact_photos.hpp"
#include "bench/contact_words.hpp"
#include "bench/random.hpp"

namespace ox::bench {
namespace {

using Words = std::vector<std::string>;

Words split(std::string_view list, char separator = ' ') {
  Words words;
  while (!list.empty()) {
    const auto end = list.find(separator);
    words.emplace_back(list.substr(0, end));
    list = end == std::string_view::npos ? std::string_view() : list.substr(end + 1);
  }
  return words;
}

// The characters of a text of three-byte characters.
Words characters(std::string_view han) {
  Words result;
  for (; !han.empty(); han.remove_prefix(3)) result.emplace_back(han.substr(0, 3));
  return result;
}

struct Region {
  Words given, family, cities;
  std::string country, topDomain, dialling;
};

struct Tables {
  std::vector<Region> regions;
  Words hanFamily = characters(words::kHanFamily);
  Words hanFamilyOfTwo = split(words::kHanFamilyOfTwo);
  Words hanGiven = characters(words::kHanGiven);
  Words hanCities = split(words::kHanCities);
  Words hanDistricts = split(words::kHanDistricts);
  Words hanStreets = split(words::kHanStreets);
  Words hanCompanyNames = split(words::kHanCompanyNames);
  Words hanTrades = split(words::kHanTrades);
  Words hanCompanyKinds = split(words::kHanCompanyKinds);
  Words hanTitles = split(words::kHanTitles);
  Words companyNames = split(words::kCompanyNames);
  Words companyKinds = split(words::kCompanyKinds, ';');
  Words departments = split(words::kDepartments, ';');
  Words titles = split(words::kTitles, ';');
  Words streets = split(words::kStreets, ';');
  Words customLabels = split(words::kCustomLabels, ';');
  Words categories = split(words::kCategories, ';');
  Words noteWords = split(words::kNoteWords);

  Tables() {
    for (const auto& row : words::kRegions) {
      regions.push_back({split(row.given), split(row.family), split(row.cities),
                         std::string(row.country), std::string(row.topDomain),
                         std::string(row.dialling)});
    }
  }
};

const Tables& tables() {
  static const auto& tables = *new Tables;
  return tables;
}

struct HanName {
  std::string family, given;
};

HanName hanName(Random& random) {
  const auto& t = tables();
  HanName name;
  name.family = random.chance(4) ? random.of(t.hanFamilyOfTwo) : random.of(t.hanFamily);
  name.given = random.of(t.hanGiven);
  if (!random.chance(25)) name.given += random.of(t.hanGiven);
  return name;
}

// Puts one card together.
class CardMaker {
 public:
  CardMaker(std::string& out, Random& random, std::size_t index)
      : out_(out), random_(random), index_(index) {}

  void make(const PhotoPool& photos) {
    line({"BEGIN:VCARD"});
    line({"VERSION:3.0"});
    line({"PRODID:-//Ox bench//Made-up contacts//EN"});
    chooseKind();
    addName();
    addWork();
    addPhones();
    addMails();
    addAddress();
    addDates();
    addWebAndNote();
    addServices();
    const auto uid = random_.uuid();
    line({"UID:", uid});
    line({"REV:", date(2011, 15), "T", padded(random_.below(24)), ":00:00Z"});
    if (index_ % 20 == 19) line({"PHOTO;ENCODING=b;TYPE=JPEG:", photos.base64(random_, uid)});
    line({"END:VCARD"});
  }

 private:
  void line(std::initializer_list<std::string_view> parts) { appendFolded(out_, joined(parts)); }

  static std::string padded(std::uint64_t number) {
    return joined({number < 10 ? "0" : "", std::to_string(number)});
  }

  std::string date(std::uint64_t first, std::uint64_t years) {
    const auto year = std::to_string(first + random_.below(years));
    const auto month = padded(1 + random_.below(12));
    return joined({year, "-", month, "-", padded(1 + random_.below(28))});
  }

  void chooseKind() {
    const auto draw = random_.below(100);
    company_ = draw >= 95;
    han_ = company_ ? random_.chance(35) : draw >= 60;
    region_ = &random_.of(tables().regions);
    dialling_ = han_ ? "+86" : region_->dialling;
    topDomain_ = han_ ? "cn" : region_->topDomain;
    companyName_ =
        han_ ? hanCompany()
             : joined({random_.of(tables().companyNames), " ", random_.of(tables().companyKinds)});
  }

  std::string hanCompany() {
    const auto& t = tables();
    std::string name = random_.of(t.hanCities);
    name.resize(name.size() - 3);  // without the word for city
    name += random_.of(t.hanCompanyNames);
    name += random_.of(t.hanTrades);
    return name += random_.of(t.hanCompanyKinds);
  }

  void addName() {
    const auto number = std::to_string(index_);
    if (company_) {
      mailName_ = "info" + number;
      line({"N:;;;;"});
      line({"FN:", escaped(companyName_)});
    } else if (han_) {
      const auto name = hanName(random_);
      mailName_ = "mail" + number;
      line({"N:", name.family, ";", name.given, ";;;"});
      line({"FN:", name.family, name.given});
    } else {
      const auto family = random_.of(region_->family);
      const auto given = random_.of(region_->given);
      const auto middle = random_.chance(15) ? random_.of(region_->given) : std::string();
      const std::string title = random_.chance(6) ? (random_.chance(50) ? "Dr." : "Prof.") : "";
      mailName_ = asciiOf(given) + "." + asciiOf(family) + number;
      line({"N:", family, ";", given, ";", middle, ";", title, ";"});
      line({"FN:", (title.empty() ? "" : title + " "), given, " ",
            (middle.empty() ? "" : middle + " "), family});
    }
  }

  void addWork() {
    const auto& t = tables();
    if (company_ || random_.chance(70)) {
      const auto department = random_.chance(40) ? escaped(random_.of(t.departments)) : "";
      line({"ORG:", escaped(companyName_), ";", department});
    }
    if (!company_ && random_.chance(50)) {
      line({"TITLE:", escaped(random_.of(han_ ? t.hanTitles : t.titles))});
    }
  }

  // The line, or one in that many hundred with a label of the owner's own.
  void addLabelled(unsigned percent, const std::string& plain, const std::string& labelled) {
    if (!random_.chance(percent)) return line({plain});
    const auto item = "item" + std::to_string(++items_);
    line({item, ".", labelled});
    line({item, ".X-ABLabel:", escaped(random_.of(tables().customLabels))});
  }

  void addPhones() {
    static constexpr std::array kKinds = {"CELL",     "WORK,VOICE", "HOME,VOICE",
                                          "WORK,FAX", "HOME,FAX",   "CELL,pref"};
    static constexpr std::array kCounts = {1, 1, 2, 2, 2, 3};
    for (auto left = kCounts[random_.below(kCounts.size())]; left > 0; --left) {
      const auto number = joined({dialling_, " ", std::to_string(10 + random_.below(990)), " ",
                                  std::to_string(1'000'000 + random_.below(9'000'000))});
      const std::string kind = kKinds[random_.below(kKinds.size())];
      addLabelled(8, joined({"TEL;TYPE=", kind, ":", number}), joined({"TEL:", number}));
    }
  }

  void addMails() {
    const std::string place = random_.chance(50) ? "HOME" : "WORK";
    line({"EMAIL;TYPE=INTERNET,", place, ":", mailName_, "@example.", topDomain_});
    if (!random_.chance(40)) return;
    const auto site = std::to_string(index_ % 89);
    addLabelled(15, joined({"EMAIL;TYPE=INTERNET,WORK:", mailName_, "@firm", site, ".example.com"}),
                joined({"EMAIL;TYPE=INTERNET:", mailName_, "@post.example.net"}));
  }

  void addAddress() {
    if (!random_.chance(50)) return;
    const auto& t = tables();
    const std::string start = random_.chance(50) ? "ADR;TYPE=HOME:;;" : "ADR;TYPE=WORK:;;";
    const auto house = std::to_string(1 + random_.below(400));
    if (han_) {
      const auto city = random_.below(t.hanCities.size());
      line({start, random_.of(t.hanStreets), house, "号;", t.hanCities[city], ";",
            t.hanDistricts[city], ";", std::to_string(100'000 + random_.below(700'000)), ";中国"});
      return;
    }
    auto street = joined({random_.of(t.streets), " ", house});
    if (random_.chance(20)) {
      street += joined({"\n", std::to_string(1 + random_.below(9)), "th floor, back"});
    }
    line({start, escaped(street), ";", random_.of(region_->cities), ";;",
          std::to_string(10'000 + random_.below(89'000)), ";", region_->country});
  }

  void addDates() {
    if (random_.chance(40)) line({"BDAY:", date(1938, 70)});
  }

  void addWebAndNote() {
    if (random_.chance(30)) {
      line({"URL:https://", mailName_, ".example.", topDomain_,
            "/people/card?id=", std::to_string(index_), "&view=full"});
    }
    if (!random_.chance(30)) return;
    static constexpr std::array kLengths = {4, 8, 17, 42};
    std::string note;
    const auto length = kLengths[random_.below(kLengths.size())];
    const bool lines = random_.chance(40);
    for (int word = 0; word < length; ++word) {
      if (word > 0) note += lines && word % (length / 2) == 0 ? "\n" : " ";
      note += random_.of(tables().noteWords);
    }
    line({"NOTE:", escaped(note)});
  }

  void addServices() {
    const auto draw = random_.below(100);
    if (draw < 12) {
      line({"X-AIM;TYPE=HOME:", mailName_});
    } else if (draw < 20) {
      line({"IMPP;X-SERVICE-TYPE=Jabber;TYPE=WORK:xmpp:", mailName_, "@talk.example.org"});
    }
    if (!random_.chance(60)) return;
    static constexpr std::array kCounts = {1, 1, 1, 2, 3};
    std::string list;
    for (auto left = kCounts[random_.below(kCounts.size())]; left > 0; --left) {
      list += joined({list.empty() ? "" : ",", escaped(random_.of(tables().categories))});
    }
    line({"CATEGORIES:", list});
  }

  std::string& out_;
  Random& random_;
  std::size_t index_;
  bool han_ = false;
  bool company_ = false;
  const Region* region_ = nullptr;
  std::string dialling_, topDomain_, companyName_, mailName_;
  int items_ = 0;
};

}  // namespace

std::string contactCards(std::size_t count, std::uint64_t seed) {
  Random random(seed);
  const PhotoPool photos(random);
  std::string cards;
  cards.reserve(count * 950);
  for (std::size_t i = 0; i < count; ++i) CardMaker(cards, random, i).make(photos);
  return cards;
}

std::vector<std::string> chineseNames(std::size_t count, std::uint64_t seed) {
  Random random(seed);
  std::vector<std::string> names;
  names.reserve(count);
  for (std::size_t i = 0; i < count; ++i) {
    const auto name = hanName(random);
    names.push_back(name.family + name.given);
  }
  return names;
}

}  // namespace ox::bench
