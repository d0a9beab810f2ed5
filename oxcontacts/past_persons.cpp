#include "oxcontacts/past_persons.hpp"

#include <vector>

#include "ox/base/failures.hpp"
#include "ox/base/text/composed.hpp"
#include "ox/platform/AddressBook/ABAddressBook.hpp"
#include "ox/platform/journal/journal.hpp"
#include "oxcontacts/find.hpp"
#include "oxcontacts/output/past_values.hpp"

namespace ox::program {
namespace {

constexpr std::size_t kAll = SIZE_MAX;

// Whole, without its ending, or as much of it as people are shown.
bool isIdOf(const std::string& text, const RecordKey& key) {
  if (key.text() == text) return true;
  if (text.size() < RecordKey::kShortTextSize) return false;
  const auto range = RecordKey::rangeOf(text, RecordKind::Person);
  return range && range->first.bytes() <= key.bytes() && key.bytes() <= range->second.bytes();
}

}  // namespace

RecordKey findPersonOfAnyTime(const Context& context, const std::string& text) {
  const failures::Watch watch;
  try {
    return findPersonByWholeName(context, text)->key();
  } catch (const CommandError& error) {
    if (error.code() != kNotFound || watch.hasFailures()) throw;
  }
  std::vector<RecordKey> found;
  std::string identifiers;
  for (const auto& removed : journal::removedRecords(kAll)) {
    const auto& record = removed.record;
    const auto identifier = record.key.text();
    const bool isMeant =
        isIdOf(text, record.key) || composed(nameIn(record.properties)) == composed(text);
    if (record.kind != RecordKind::Person || !isMeant) continue;
    found.push_back(record.key);
    identifiers += (identifiers.empty() ? "" : ", ") + identifier;
  }
  if (found.empty()) throw CommandError(kNotFound, "there is and was no person \"" + text + "\"");
  if (found.size() > 1) {
    throw CommandError(kUsage, "\"" + text + "\" may be any of " + std::to_string(found.size()) +
                                   " persons that are gone; name one by its ID: " + identifiers);
  }
  return found.front();
}

std::string nameOfAnyTime(const RecordKey& key) {
  auto identifier = key.text();
  const auto record = ABAddressBook::sharedAddressBook()->recordForKey(key);
  if (const auto person = hostPerson(record)) return person->displayName().value_or(identifier);
  if (const auto group = hostGroup(record)) return group->displayName().value_or(identifier);
  for (const auto& change : journal::historyOf(key, kAll)) {
    if (change.kind != JournalChange::Kind::Removed) continue;
    const auto name = nameIn(change.before);
    return name.empty() ? identifier : name;
  }
  return identifier;
}

}  // namespace ox::program
