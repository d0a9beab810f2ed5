#pragma once

// The words between the read switch, which is loaded into a process, and whoever starts it: names
// of environment variables.

namespace ox::faults {

// The switch counts reads of files below this folder; without it nothing is counted.
inline constexpr const char* kReadFolderVariable = "OX_READ_FOLDER";
// That read fails with EIO, the first one being 1.
inline constexpr const char* kReadAtVariable = "OX_READ_AT";
// Empty, or every read after it fails too.
inline constexpr const char* kReadOnVariable = "OX_READ_ON";
// Made, empty, when it came to that read.
inline constexpr const char* kReadMarkVariable = "OX_READ_MARK";

}  // namespace ox::faults
