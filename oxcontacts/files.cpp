#include "oxcontacts/files.hpp"

#include <filesystem>
#include <fstream>
#include <system_error>

#include "base/replacement_file.hpp"
#include "base/store_location.hpp"
#include "oxcontacts/context.hpp"

namespace ox::program {

std::string readFile(const std::string& path, std::uint64_t atMost) {
  const auto fail = [&](const std::string& reason) {
    throw CommandError(kFailed, path + ": " + reason);
  };
  std::error_code error;
  const auto status = std::filesystem::status(path, error);
  if (status.type() == std::filesystem::file_type::not_found) fail("does not exist");
  if (error) fail(error.message());
  if (std::filesystem::is_directory(status)) fail("is a directory");
  if (!std::filesystem::is_regular_file(status)) fail("is not a regular file");
  const auto size = std::filesystem::file_size(path, error);
  if (error) fail(error.message());
  if (size > atMost) fail("is too large (" + std::to_string(size) + " bytes)");
  std::ifstream file(path, std::ios::binary);
  std::string bytes(size, '\0');
  file.read(bytes.data(), static_cast<std::streamsize>(size));
  if (!file) fail("cannot be read");
  return bytes;
}

void writeFile(const std::string& path, std::string_view bytes) {
  refuseStoreFile(path);
  try {
    ReplacementFile file(path);
    file.write(bytes);
    file.commit();
  } catch (const std::system_error& error) {
    throw CommandError(kFailed, error.what());
  }
}

void refuseStoreFile(const std::string& path) {
  for (const auto& own : {contactStorePath(), tagStorePath()}) {
    for (const auto* ending : {"", "-wal", "-shm"}) {
      std::error_code error;
      if (!std::filesystem::equivalent(path, own + ending, error) || error) continue;
      throw CommandError(kFailed, path + ": is a file of the store itself");
    }
  }
}

}  // namespace ox::program
