#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "ox/base/text.hpp"

namespace ox {

// Appends JSON to one growing text, without a tree of values. The caller keeps the grammar: a value
// after each name, an end for each begin. Ill-formed UTF-8 in texts becomes U+FFFD.
class JsonWriter {
 public:
  void beginObject() { begin('{'); }
  void endObject() { end('}'); }
  void beginArray() { begin('['); }
  void endArray() { end(']'); }
  // The name must be valid UTF-8.
  void writeName(std::string_view name);

  void writeNull();
  void writeBoolean(bool value);
  void writeInteger(std::int64_t number);
  // Always with a point or an exponent, so that it is read back as a real; not for what is not
  // finite.
  void writeReal(double number);
  void writeText(std::string_view text);

  void writeMember(std::string_view name, std::string_view value);
  void writeMember(std::string_view name, const std::string& value) {
    writeMember(name, std::string_view(value));
  }
  void writeMember(std::string_view name, const char* value) {
    writeMember(name, std::string_view(value));
  }
  // Left out when missing.
  void writeMember(std::string_view name, const Text& value);
  void writeMember(std::string_view name, std::int64_t value);

  void endLine();
  // So far, between two lines; and begun anew, in the same room.
  std::string_view text() const { return out_; }
  void clear() { out_.clear(); }

 private:
  void begin(char mark);
  void end(char mark);
  void separate();
  void quote(std::string_view text);

  std::string out_;
  bool first_ = true;  // nothing stands before the next value in its container
};

}  // namespace ox
