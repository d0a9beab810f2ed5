#include "tests/oxcontacts/store_content.hpp"

#include <filesystem>

#include "ox/base/sqlite/connection.hpp"
#include "tests/support/store_environment.hpp"

namespace ox::program_tests {
namespace {

void addRows(sqlite::Connection& file, const char* query, std::string& text) {
  auto rows = file.prepare(query);
  while (rows.step()) text += std::string(rows.text(0)) + "\n";
}

}  // namespace

std::string contactsContent() {
  const auto& environment = support::StoreEnvironment::instance();
  std::string text;
  {
    sqlite::Connection store(environment.contactStore(), sqlite::Connection::Mode::ReadWrite);
    addRows(store,
            "SELECT 'account ' || id || ' ' || identifier || ' ' || name || ' ' || type "
            "FROM container ORDER BY id",
            text);
    addRows(store,
            "SELECT 'record ' || r.id || ' ' || hex(r.uid) || ' ' || r.kind || ' ' || r.container "
            "|| ' ' || ifnull(c.card_uid, '-') || ' ' || c.fingerprint || ' ' || hex(c.properties) "
            "|| ' ' || ifnull(i.checksum || ' ' || hex(i.data), '-') FROM record r "
            "LEFT JOIN content c ON c.record = r.id LEFT JOIN image i ON i.id = c.image "
            "ORDER BY r.id",
            text);
    addRows(store, "SELECT 'link ' || id || ' ' || parent || ' ' || child FROM link ORDER BY id",
            text);
  }
  return text;
}

std::string storeContent() {
  const auto& environment = support::StoreEnvironment::instance();
  auto text = contactsContent();
  if (std::filesystem::exists(environment.tagStore())) {
    sqlite::Connection tags(environment.tagStore(), sqlite::Connection::Mode::ReadWrite);
    // The order of a person's tags counts, not their numbers.
    addRows(tags,
            "SELECT 'tag ' || manager || ' ' || person || ' ' || tag FROM tag "
            "ORDER BY manager, person, position",
            text);
  }
  return text;
}

}  // namespace ox::program_tests
