// What SQLite alone does with the rows of a store, as a whole program: bench_plain_store list STORE
// reads every record into memory; write STORE reads all rows and writes them to a new file beside
// it.
#include <filesystem>
#include <string>
#include <string_view>

#include "bench/plain_sqlite.hpp"

int main(int argc, char** argv) {
  using namespace ox::bench;
  const std::string_view what = argc == 3 ? argv[1] : "";
  if (what == "list") return plain::listRecords(argv[2]) == 0 ? 1 : 0;
  if (what == "write") {
    const auto rows = plain::readRows(argv[2]);
    const auto copy = std::string(argv[2]) + "-plain";
    for (const char* ending : {"", "-wal", "-shm"}) std::filesystem::remove(copy + ending);
    plain::writeRows(rows, copy);
    return 0;
  }
  std::fprintf(stderr, "usage: %s list|write STORE\n", argv[0]);
  return 2;
}
