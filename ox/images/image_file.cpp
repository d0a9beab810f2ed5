#include "ox/images/image_file.hpp"

#include <filesystem>
#include <fstream>
#include <string_view>

#include "ox/images/image_codec.hpp"

namespace ox::images {

ImagePtr imageWithContentsOfFile(const std::string& path) {
  constexpr std::uintmax_t kMaxFileSize = std::uintmax_t{64} << 20U;
  // A name ends at its first NUL for the system; the rest must not be ignored.
  if (path.find('\0') != std::string::npos) return nullptr;
  std::error_code error;
  // Looked at first: opening a pipe would wait for its writer.
  if (!std::filesystem::is_regular_file(path, error)) return nullptr;
  const auto size = std::filesystem::file_size(path, error);
  if (error || size > kMaxFileSize) return nullptr;
  std::ifstream file(path, std::ios::binary);
  std::string bytes(static_cast<std::size_t>(size), '\0');
  if (!file.read(bytes.data(), static_cast<std::streamsize>(bytes.size()))) return nullptr;
  return decodeImage(bytes);
}

}  // namespace ox::images
