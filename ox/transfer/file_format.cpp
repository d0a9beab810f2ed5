#include "ox/transfer/file_format.hpp"

#include <array>
#include <filesystem>

#include "ox/vcard/lines/ascii.hpp"

namespace ox::vcard {
namespace {

struct NameRow {
  std::string_view ending;  // upper case
  FileFormat format;
};
constexpr std::array kNames = {
    NameRow{".CSV", FileFormat::Csv},
    NameRow{".TSV", FileFormat::Csv},
    NameRow{".LDIF", FileFormat::Ldif},
    NameRow{".LDF", FileFormat::Ldif},
};

}  // namespace

FileFormat formatOfFile(const std::string& path, FileFormat wanted) {
  if (wanted != FileFormat::ByName) return wanted;
  const auto ending = std::filesystem::path(path).extension().string();
  for (const auto& row : kNames) {
    if (isWord(ending, row.ending)) return row.format;
  }
  return FileFormat::VCard;
}

}  // namespace ox::vcard
