#pragma once

#include <cstdint>
#include <string>

#include "ox/base/export.hpp"

namespace ox::vcard {

// What a file that is imported holds. ByName: a table when its name ends in .csv or .tsv, LDIF when
// it ends in .ldif or .ldf, else vCards.
enum class FileFormat : std::uint8_t { ByName, VCard, Csv, Ldif };

// Never ByName.
OX_EXPORT FileFormat formatOfFile(const std::string& path, FileFormat wanted);

}  // namespace ox::vcard
