#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "ox/base/replacement_file.hpp"
#include "oxcontacts/interruption.hpp"

namespace ox::program {

// Where a command's data goes: the standard output ("-", or its name in /dev), or a file that is
// put in its place once everything is in it, and of which nothing is left before that. A link is
// followed unless another user has planted it; a file of this user's that was there keeps its mode,
// any other is for this user alone. Pipes, devices and the error stream by its names in /dev are
// written straight into. What goes to a terminal is made safe for it, everything else stays exact.
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

  // Each throws a CommandError or std::system_error.
  void write(std::string_view bytes);
  // Of a file, which this must be: over the first bytes, as many as these.
  void replaceStart(std::string_view bytes) { file_->replaceStart(bytes); }
  void commit();
  // Puts a file, which this must be, beside its place instead, where an earlier one stays: under
  // its name with ".partial" after it. The result is that name.
  std::string commitBeside();

 private:
  // As they are, to the stream or the standard output.
  void writeOut(std::string_view bytes);
  void writeToStream(std::string_view bytes);

  std::string path_;
  std::optional<GoesWhenInterrupted> guard_;
  std::optional<ReplacementFile> file_;  // missing: the standard output or a stream
  int stream_ = -1;                      // open when it is one
  bool isTerminal_ = false;
  std::string line_;   // for a terminal: what its last line break is still to end
  unsigned mode_ = 0;  // of the file that was there; 0: there was none
};

}  // namespace ox::program
