#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "ox/base/replacement_file.hpp"
#include "oxcontacts/interruption.hpp"

namespace ox::program {

// Where a command's data goes: the standard output ("-", or its name in /dev), or a file that is
// put in its place once everything is in it, and of which nothing is left before that. A link is
// followed; a file that was there keeps its mode, a new one is for this user alone. Pipes, devices
// and the error stream by its names in /dev are written straight into.
class OutputFile {
 public:
  // Waits for the reader of a named pipe. Throws a CommandError for a file of the store,
  // std::system_error when it cannot be written.
  explicit OutputFile(const std::string& path);
  OutputFile(const OutputFile&) = delete;
  OutputFile& operator=(const OutputFile&) = delete;
  ~OutputFile();

  static bool isStandardOutput(const std::string& path);
  // Whether that is there and written straight into.
  static bool isStream(const std::string& path);

  // Both throw a CommandError or std::system_error.
  void write(std::string_view bytes);
  void commit();

 private:
  void writeToStream(std::string_view bytes);

  std::string path_;
  std::optional<GoesWhenInterrupted> guard_;
  std::optional<ReplacementFile> file_;  // missing: the standard output or a stream
  int stream_ = -1;                      // open when it is one
  unsigned mode_ = 0;                    // of the file that was there; 0: there was none
};

}  // namespace ox::program
