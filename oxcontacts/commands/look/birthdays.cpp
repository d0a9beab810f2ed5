// birthdays: the days of persons that come round, the next one first.
#include <algorithm>
#include <charconv>
#include <chrono>
#include <iostream>

#include "ox/OxMacAddressBookSDK/ground/one_moment.hpp"
#include "oxcontacts/calendar.hpp"
#include "oxcontacts/choice.hpp"
#include "oxcontacts/commands/commands.hpp"
#include "oxcontacts/output/json.hpp"
#include "oxcontacts/output/name_and_id.hpp"
#include "oxcontacts/output/order.hpp"
#include "oxcontacts/output/shown_value.hpp"
#include "oxcontacts/output/table.hpp"

namespace ox::program {
namespace {

using std::chrono::sys_days;
using std::chrono::year_month_day;

struct Arguments {
  Choice choice;
  int days = 365;
  std::string from;
};

struct Return {
  std::shared_ptr<_ABPerson> person;
  std::string what;
  Date date;
  year_month_day day;
  std::int64_t inDays = 0;
  std::optional<int> years;  // since then; missing without a year, or when it is yet to be
};

year_month_day firstDay(const std::string& text) {
  if (text.empty()) return today();
  const auto date = Date::fromText(text);
  if (!date || !date->year || !date->month || !date->day || date->secondOfDay) {
    throw CommandError(kUsage, "--from: \"" + text + "\" is no day; write 2026-12-31");
  }
  return {std::chrono::year(*date->year), std::chrono::month(*date->month),
          std::chrono::day(*date->day)};
}

class Returns {
 public:
  Returns(year_month_day from, int days) : from_(from), days_(days) {}

  void add(const std::shared_ptr<_ABPerson>& person, const std::string& what, const Object& value) {
    const auto* date = value.as<Date>();
    if (date == nullptr) return;
    const auto day = nextReturn(*date, from_);
    if (!day) return;
    Return each{person, what, *date, *day, (sys_days(*day) - sys_days(from_)).count(), {}};
    if (each.inDays > days_) return;
    const int years = date->year ? static_cast<int>(day->year()) - *date->year : -1;
    if (years >= 0) each.years = years;
    list_.push_back(std::move(each));
  }

  // Those of one day in the order in which they were added.
  std::vector<Return> nextFirst() {
    std::ranges::stable_sort(list_, {}, &Return::inDays);
    return std::move(list_);
  }

 private:
  year_month_day from_;
  int days_;
  std::vector<Return> list_;
};

std::vector<Return> returnsOf(const Context& context, const Arguments& arguments) {
  Returns returns(firstDay(arguments.from), arguments.days);
  const auto birthday = OxProperty::propertyWithName(OxProPertyBirthday);
  const auto dates = OxProperty::propertyWithName(OxProPertyDate);
  for (const auto& person :
       inOrder(chosenPersons(context, arguments.choice), "name", false).persons) {
    if (const auto value = singleOf(person->valueByProperty(birthday))) {
      returns.add(person, birthday->displayName(), value->value());
    }
    const auto others = multipleOf(person->valueByProperty(dates));
    for (std::uint64_t i = 0; others && i < others->count(); ++i) {
      const auto element = others->valueAtIndex(i);
      const auto& label = element->label();
      auto what = label ? labelWords(label->displayName().value_or("")) : std::string();
      returns.add(person, what.empty() ? dates->displayName() : what, element->value());
    }
  }
  return returns.nextFirst();
}

Json returnJson(const Return& each) {
  return {{"ID", jsonOf(each.person->ID())},
          {"displayName", jsonOf(each.person->displayName())},
          {"what", each.what},
          {"date", each.date.toText()},
          {"next", textOf(each.day)},
          {"inDays", each.inDays},
          {"years", each.years ? Json(*each.years) : Json()}};
}

std::string distance(std::int64_t days) {
  if (days == 0) return "today";
  if (days == 1) return "tomorrow";
  return "in " + std::to_string(days) + " days";
}

void listBirthdays(const Context& context, Arguments& arguments) {
  prepare(context, arguments.choice);
  const OneMoment moment;
  const auto returns = returnsOf(context, arguments);
  if (context.json) {
    JsonList list;
    for (const auto& each : returns) list.add(returnJson(each));
    return list.close();
  }
  if (returns.empty()) return context.tell("nobody has a birthday in these days");
  constexpr auto kLeft = Table::Align::Left;
  Table table({{"DAY"},
               {"WHEN"},
               {"NAME", kLeft, Table::Room::MayCut},
               {"WHAT", kLeft, Table::Room::MayCut},
               {"YEARS", Table::Align::Right}});
  for (const auto& each : returns) {
    table.addRow({textOf(each.day), distance(each.inDays), nameOrId(*each.person), each.what,
                  each.years ? std::to_string(*each.years) : ""});
  }
  table.print(context);
}

}  // namespace

void declareBirthdays(CLI::App& program, const Context& context) {
  auto* command = program.add_subcommand(
      "birthdays", "List birthdays and other days that come round, the next one first");
  const auto arguments = std::make_shared<Arguments>();
  declareWords(*command, arguments->choice);
  declareChoice(*command, arguments->choice);
  command->add_option("--days", arguments->days, "Those of the next so many days (else a year)")
      ->check(CLI::Range(0, 36500))
      ->type_name("N");
  command->add_option("--from", arguments->from, "Count from that day (else today): 2026-12-31")
      ->type_name("DAY");
  command->footer("Who was born on 29 February has the 28th in other years.");
  command->callback([&context, arguments] { listBirthdays(context, *arguments); });
}

}  // namespace ox::program
