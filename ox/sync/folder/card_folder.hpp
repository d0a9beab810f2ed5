#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "ox/sync/folder/file_etag.hpp"

namespace ox::sync {

// Whether a file of that name is a card: "ann.vcf", but neither hidden nor in another folder.
bool isCardName(std::string_view name);

// A descriptor that is closed with this object.
class OpenFile {
 public:
  explicit OpenFile(int file = -1) : file_(file) {}
  OpenFile(const OpenFile&) = delete;
  OpenFile& operator=(const OpenFile&) = delete;
  ~OpenFile();
  int number() const { return file_; }

 private:
  int file_;
};

// A folder of vCards that stays the same one for as long as this lives, whatever is mounted over
// its path meanwhile. Names are those of files directly in it; links are not followed. Failures
// are std::system_error that name the file, unless another kind is told.
class CardFolder {
 public:
  // Throws RemoteError (Away) where no folder is at that path, or none that can be read.
  explicit CardFolder(std::string path);

  const std::string& path() const { return path_; }
  int number() const { return folder_.number(); }
  std::string pathOf(const std::string& name) const;
  // Whether files can be made and removed in it.
  bool isWritable() const;

  // Of all that lies in it, sorted.
  std::vector<std::string> names() const;
  // Of the cards, sorted: those that are files, and links, which are nobody's to read.
  std::vector<std::string> cardNames() const;
  // Missing when nothing is there. Waits a tick of the clock for a file that was just changed.
  std::optional<FileFacts> facts(const std::string& name) const;

  struct Content {
    std::string text;
    FileFacts facts;  // of this text
    std::string etag() const;
  };
  // Missing when nothing is there.
  std::optional<Content> content(const std::string& name) const;
  // As a listing gives it; missing when nothing is there.
  std::optional<std::string> etag(const std::string& name) const;
  // Whether the file is what that ETag was given for.
  bool isStill(const std::string& name, const std::string& etag) const;
  // Returns when the names in it would outlive a power cut.
  void sync() const;

 private:
  std::string path_;
  OpenFile folder_;
};

}  // namespace ox::sync
