#pragma once

// The words between the kill switch, which is loaded into a process, and whoever starts it: names
// of environment variables.

namespace ox::kills {

// The switch counts changes to files below this folder; without it nothing is counted.
inline constexpr const char* kFolderVariable = "OX_KILL_FOLDER";
// The process dies by SIGKILL at that change, the first one being 1.
inline constexpr const char* kAtVariable = "OX_KILL_AT";
// When it is "half", only writes of more than one byte are counted, and the one at which the
// process dies is half done; else the process dies before the change.
inline constexpr const char* kHowVariable = "OX_KILL_HOW";

}  // namespace ox::kills
