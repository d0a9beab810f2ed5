#pragma once

#include <string>
#include <string_view>

namespace ox::images {

// True when the first directory of the TIFF file (6.0, section 2) lies wholly in it, and the values
// of its entries are not larger than the file. The library copies the value of every entry, known
// or not, as soon as it opens a file, and thousands of entries may point to the same bytes. False
// sets a reason.
bool isDirectorySound(std::string_view bytes, std::string& reason);

}  // namespace ox::images
