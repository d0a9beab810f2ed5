// The table that a list of keys is read as: a virtual table that every connection knows without
// being told and that no statement can write.
#include "ox/base/sqlite/key_list.hpp"

#include <new>
#include <sqlite3.h>

namespace ox::sqlite {
namespace {

enum Column : int { KeyColumn, ListColumn };

struct Cursor : sqlite3_vtab_cursor {
  const KeyList* list = nullptr;
  std::size_t place = 0;
};

Cursor& cursorOf(sqlite3_vtab_cursor* cursor) {
  return *static_cast<Cursor*>(cursor);
}

int connect(sqlite3* database, void*, int, const char* const*, sqlite3_vtab** table, char**) {
  const int result = sqlite3_declare_vtab(database, "CREATE TABLE keys(key, list HIDDEN)");
  if (result != SQLITE_OK) return result;
  *table = new (std::nothrow) sqlite3_vtab{};
  return *table != nullptr ? SQLITE_OK : SQLITE_NOMEM;
}

int disconnect(sqlite3_vtab* table) {
  delete table;
  return SQLITE_OK;
}

// The list is the table's argument, and there is one way to read it: from its beginning.
int bestIndex(sqlite3_vtab*, sqlite3_index_info* info) {
  for (int i = 0; i < info->nConstraint; ++i) {
    const auto& constraint = info->aConstraint[i];
    if (constraint.iColumn != ListColumn || constraint.op != SQLITE_INDEX_CONSTRAINT_EQ) continue;
    if (constraint.usable == 0) return SQLITE_CONSTRAINT;
    info->aConstraintUsage[i].argvIndex = 1;
    info->aConstraintUsage[i].omit = 1;
    constexpr double kFewEnough = 1000;
    info->estimatedCost = kFewEnough;
    info->estimatedRows = static_cast<sqlite3_int64>(kFewEnough);
    // The keys come in the order of their places, and nothing needs to be sorted by these.
    constexpr int kRowId = -1;
    info->orderByConsumed =
        info->nOrderBy == 1 && info->aOrderBy[0].iColumn == kRowId && info->aOrderBy[0].desc == 0;
    return SQLITE_OK;
  }
  return SQLITE_CONSTRAINT;
}

int open(sqlite3_vtab*, sqlite3_vtab_cursor** cursor) {
  *cursor = new (std::nothrow) Cursor();
  return *cursor != nullptr ? SQLITE_OK : SQLITE_NOMEM;
}

int close(sqlite3_vtab_cursor* cursor) {
  delete &cursorOf(cursor);
  return SQLITE_OK;
}

int filter(sqlite3_vtab_cursor* cursor, int, const char*, int, sqlite3_value** arguments) {
  auto& state = cursorOf(cursor);
  state.list = static_cast<const KeyList*>(sqlite3_value_pointer(arguments[0], kKeyListPointer));
  state.place = 0;
  return SQLITE_OK;
}

int next(sqlite3_vtab_cursor* cursor) {
  ++cursorOf(cursor).place;
  return SQLITE_OK;
}

// What was bound to something else than a list is an empty one.
int isAtEnd(sqlite3_vtab_cursor* cursor) {
  const auto& state = cursorOf(cursor);
  return state.list == nullptr || state.place >= state.list->size() ? 1 : 0;
}

int column(sqlite3_vtab_cursor* cursor, sqlite3_context* context, int which) {
  if (which != KeyColumn) return SQLITE_OK;
  const auto& state = cursorOf(cursor);
  const auto& key = (*state.list)[state.place];
  // A null pointer would give NULL: an empty text is a value.
  const auto* bytes = key.bytes.empty() ? "" : key.bytes.data();
  switch (key.type) {
    case KeyList::Type::Number:
      sqlite3_result_int64(context, key.number);
      break;
    case KeyList::Type::Text:
      sqlite3_result_text64(context, bytes, key.bytes.size(), SQLITE_STATIC, SQLITE_UTF8);
      break;
    case KeyList::Type::Blob:
      sqlite3_result_blob64(context, bytes, key.bytes.size(), SQLITE_STATIC);
      break;
  }
  return SQLITE_OK;
}

int rowid(sqlite3_vtab_cursor* cursor, sqlite3_int64* place) {
  *place = static_cast<sqlite3_int64>(cursorOf(cursor).place);
  return SQLITE_OK;
}

// Without xCreate: it is there without a statement that makes it, and none can.
sqlite3_module makeModule() {
  sqlite3_module module{};
  module.xConnect = connect;
  module.xBestIndex = bestIndex;
  module.xDisconnect = disconnect;
  module.xOpen = open;
  module.xClose = close;
  module.xFilter = filter;
  module.xNext = next;
  module.xEof = isAtEnd;
  module.xColumn = column;
  module.xRowid = rowid;
  return module;
}

}  // namespace

int registerKeyLists(sqlite3* database) {
  static const sqlite3_module module = makeModule();
  return sqlite3_create_module(database, "keys", &module, nullptr);
}

}  // namespace ox::sqlite
