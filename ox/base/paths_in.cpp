#include "ox/base/paths_in.hpp"

#include <cerrno>
#include <dirent.h>
#include <filesystem>
#include <memory>
#include <string_view>
#include <system_error>

namespace ox {
namespace {

struct Closer {
  void operator()(DIR* folder) const { ::closedir(folder); }
};

[[noreturn]] void fail(const std::string& folder) {
  const std::error_code code(errno, std::generic_category());
  throw std::filesystem::filesystem_error("reading a folder", folder, code);
}

}  // namespace

std::vector<std::string> pathsIn(const std::string& folder) {
  const std::unique_ptr<DIR, Closer> open(::opendir(folder.c_str()));
  if (!open) fail(folder);
  std::vector<std::string> paths;
  for (;;) {
    errno = 0;
    const auto* entry = ::readdir(open.get());
    if (entry == nullptr) break;
    const std::string_view name = entry->d_name;
    if (name != "." && name != "..") paths.push_back(std::filesystem::path(folder) / name);
  }
  if (errno != 0) fail(folder);
  return paths;
}

}  // namespace ox
