#include "oxcontacts/files.hpp"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <system_error>

#include "base/store_location.hpp"
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
  const auto size = sizeOf(path);
  if (size > atMost) fail(path, "is too large (" + std::to_string(size) + " bytes)");
  return bytesOf(path, size);
}

std::string readStart(const std::string& path, std::uint64_t count) {
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

std::string placeOf(const std::string& path) {
  constexpr int kMostLinks = 40;
  std::error_code error;
  auto place = std::filesystem::absolute(path, error);
  if (error) return path;
  const auto status = std::filesystem::status(place, error);
  if (std::filesystem::exists(status) && !std::filesystem::is_regular_file(status)) return path;
  for (int i = 0; i < kMostLinks && std::filesystem::is_symlink(place, error); ++i) {
    place = place.parent_path() / std::filesystem::read_symlink(place, error);
    if (error) return path;
  }
  auto whole = std::filesystem::weakly_canonical(place, error);
  return error ? path : whole.string();
}

void refuseStoreFile(const std::string& path) {
  const auto place = placeOf(path);
  for (const auto& own : {contactStorePath(), contactStorePath() + ".tags", tagStorePath()}) {
    for (const auto* ending : {"", "-wal", "-shm", "-journal"}) {
      const auto file = placeOf(own) + ending;
      std::error_code error;
      if (file != place && (!std::filesystem::equivalent(place, file, error) || error)) continue;
      throw CommandError(kFailed, path + ": is a file of the store itself");
    }
  }
}

}  // namespace ox::program
