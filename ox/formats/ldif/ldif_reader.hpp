#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "ox/formats/text/text_source.hpp"

namespace ox::formats {

struct LdifAttribute {
  std::string name;  // in lower case, without options
  std::string value;
};

// An entry of a directory, or why its lines are none.
struct LdifRecord {
  std::size_t line = 0;  // where it begins, from 1
  std::string dn;
  std::vector<LdifAttribute> attributes;
  std::string refusal;                  // empty for an entry
  std::vector<std::string> references;  // attributes whose values stand in files elsewhere

  const std::string* find(std::string_view name) const;
  bool has(std::string_view name, std::string_view lowerValue) const;
};

// Reads the entries of an LDIF file (RFC 2849): folded lines, comments, base64. Records that tell
// of changes are refused.
class LdifReader {
 public:
  static constexpr std::size_t kMostBytes = 64U << 20U;  // of a record

  // The source is borrowed.
  explicit LdifReader(TextSource& source) : source_(source) {}

  // False at the end. Throws FormatError when the file does not begin as LDIF does.
  bool next(LdifRecord& record);
  // Whether there was anything at all but comments.
  bool hasBegun() const { return hasBegun_; }

 private:
  // One unfolded line; false at the end. An empty line ends a record.
  bool readLine(std::string& line);
  void readPhysicalLine(std::string& line);
  void readAttribute(std::string_view line, LdifRecord& record);
  void takeValue(std::string name, std::string value, LdifRecord& record);

  TextSource& source_;
  std::size_t line_ = 1;
  std::size_t lineStart_ = 1;  // of the line that was read
  bool hasBegun_ = false;
};

}  // namespace ox::formats
