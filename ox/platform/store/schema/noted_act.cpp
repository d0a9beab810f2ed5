#include "ox/platform/store/schema/noted_act.hpp"

#include <string>
#include <string_view>

#include "ox/records/damaged_bytes.hpp"

namespace ox {
namespace {

std::string_view bytesOf(const std::array<std::uint8_t, 16>& name) {
  return {reinterpret_cast<const char*>(name.data()), name.size()};
}

void requireSound(bool isSound, const char* what) {
  if (!isSound) throw DamagedBytes(std::string(what) + " is damaged");
}

bool isOfStore(const SyncedAct& noted, sqlite::Connection& store) {
  auto row = store.prepare("SELECT name, sound FROM store");
  if (!row.step()) return false;
  requireSound(row.integer(1) != 0, "the name of the store");
  return row.blob(0) == bytesOf(noted.store);
}

bool hasForgottenSince(std::int64_t number, sqlite::Connection& store) {
  auto row = store.prepare("SELECT 1 FROM origin WHERE undoes = 0 AND first_act >= ?1");
  row.bind(1, number);
  return row.step();
}

}  // namespace

NotedAct stateOf(const SyncedAct& noted, sqlite::Connection& store) {
  const sqlite::Snapshot moment(store);
  if (!isOfStore(noted, store)) return NotedAct::Unknown;
  const auto number = noted.moment.number;
  auto act = store.prepare("SELECT name, sound FROM act WHERE number = ?1");
  act.bind(1, number);
  if (!act.step()) {
    const auto last = store.queryInteger("SELECT max(number) FROM act");
    return number > last ? NotedAct::IsMissing : NotedAct::Unknown;
  }
  requireSound(act.integer(1) != 0, "an act of the journal");
  if (act.blob(0) == bytesOf(noted.moment.name)) return NotedAct::IsThere;
  return hasForgottenSince(number, store) ? NotedAct::Unknown : NotedAct::IsMissing;
}

}  // namespace ox
