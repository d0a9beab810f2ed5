// Writes generated contacts to a file: bench_make_contacts COUNT FILE.
#include <cstdio>
#include <cstdlib>
#include <fstream>

#include "bench/contacts.hpp"

int main(int argc, char** argv) {
  if (argc != 3) {
    std::fprintf(stderr, "usage: %s COUNT FILE\n", argv[0]);
    return 2;
  }
  std::ofstream file(argv[2], std::ios::binary);
  file << ox::bench::contactCards(std::strtoull(argv[1], nullptr, 10));
  return file.flush() ? 0 : 1;
}
