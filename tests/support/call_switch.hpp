#pragma once

// The words between the call switch, which is loaded into a process (LD_PRELOAD), and whoever
// starts it: names and values of environment variables.

namespace ox::support::call_switch {

// The switch counts calls on files below this folder; without it nothing is counted.
inline constexpr const char* kFolder = "OX_SWITCH_FOLDER";

// What it counts.
inline constexpr const char* kCalls = "OX_SWITCH_CALLS";
inline constexpr const char* kReads = "reads";
inline constexpr const char* kWrites = "writes";
inline constexpr const char* kChanges = "changes";      // writes, syncs, sizes and names
inline constexpr const char* kTransfers = "transfers";  // reads and writes
inline constexpr const char* kOpens = "opens";
inline constexpr const char* kThreads = "threads";  // that are started, whatever the folder

// That call is struck, the first one being 1.
inline constexpr const char* kAt = "OX_SWITCH_AT";
// Empty, or every call after it is struck too.
inline constexpr const char* kOn = "OX_SWITCH_ON";
// Made, empty, when it came to that call.
inline constexpr const char* kMark = "OX_SWITCH_MARK";

// What becomes of a call that is struck.
inline constexpr const char* kFault = "OX_SWITCH_FAULT";
inline constexpr const char* kBroken = "broken";  // EIO
// ENOSPC; where every later call is struck too, the first write takes what still fits.
inline constexpr const char* kFull = "full";
inline constexpr const char* kHalf = "half";                 // half of a transfer is made
inline constexpr const char* kNone = "none";                 // EMFILE, or EAGAIN of a thread
inline constexpr const char* kDeath = "death";               // the process ends before the call
inline constexpr const char* kDeathWithin = "death within";  // or when half of a write is made

// A file to which every change is added that was made below the folder: what it was (one letter),
// the length of its path and the path, a place or a size, the length of its bytes and the bytes;
// numbers are of 8 bytes. A new name of a file is its bytes; a folder that was synced is a path.
inline constexpr const char* kLog = "OX_SWITCH_LOG";
inline constexpr char kCreated = 'c';
inline constexpr char kWritten = 'w';
inline constexpr char kResized = 't';
inline constexpr char kSynced = 's';
inline constexpr char kFolderSynced = 'f';
inline constexpr char kRenamed = 'r';
inline constexpr char kRemoved = 'd';

// A process that hangs is ended by SIGALRM after that many seconds.
inline constexpr int kSeconds = 60;

}  // namespace ox::support::call_switch
