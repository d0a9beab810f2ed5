#include "oxcontacts/files.hpp"

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <fstream>
#include <sys/stat.h>
#include <system_error>

#include "ox/base/store_location.hpp"
#include "oxcontacts/context.hpp"
#include "oxcontacts/output_file.hpp"

namespace ox::program {

namespace {

[[noreturn]] void fail(const std::string& path, const std::string& reason) {
  throw CommandError(kFailed, path + ": " + reason);
}

// Anything but a regular file is never opened.
std::uint64_t sizeOf(const std::string& path) {
  std::error_code error;
  const auto status = std::filesystem::status(path, error);
  if (status.type() == std::filesystem::file_type::not_found) fail(path, "does not exist");
  if (error) fail(path, error.message());
  if (std::filesystem::is_directory(status)) fail(path, "is a directory");
  if (!std::filesystem::is_regular_file(status)) fail(path, "is not a regular file");
  const auto size = std::filesystem::file_size(path, error);
  if (error) fail(path, error.message());
  return size;
}

std::string bytesOf(const std::string& path, std::uint64_t count) {
  std::ifstream file(path, std::ios::binary);
  std::string bytes(count, '\0');
  file.read(bytes.data(), static_cast<std::streamsize>(count));
  if (!file) fail(path, "cannot be read");
  return bytes;
}

}  // namespace

std::string readFile(const std::string& path, std::uint64_t atMost) {
  refuseStoreFile(path);
  const auto size = sizeOf(path);
  if (size > atMost) fail(path, "is too large (" + std::to_string(size) + " bytes)");
  return bytesOf(path, size);
}

std::string readStart(const std::string& path, std::uint64_t count) {
  refuseStoreFile(path);
  return bytesOf(path, std::min(sizeOf(path), count));
}

void writeFile(const std::string& path, std::string_view bytes) {
  try {
    OutputFile file(path);
    file.write(bytes);
    file.commit();
  } catch (const std::system_error& error) {
    throw CommandError(kFailed, error.what());
  }
}

void refuseStoreFile(const std::string& path) {
  if (isStoreFile(path)) throw CommandError(kFailed, path + ": is a file of the store itself");
}

bool isMissing(const std::string& path) {
  struct stat status {};
  return ::stat(path.c_str(), &status) != 0 && errno == ENOENT;
}

}  // namespace ox::program
