#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace ox::sync {

using XmlAttributes = std::vector<std::pair<std::string, std::string>>;  // names without namespace

// What is told of a document as it comes. Names are "{namespace}local".
class XmlHandler {
 public:
  XmlHandler() = default;
  XmlHandler(const XmlHandler&) = delete;
  XmlHandler& operator=(const XmlHandler&) = delete;
  virtual ~XmlHandler() = default;

  virtual void beginElement(std::string_view name, const XmlAttributes& attributes) = 0;
  virtual void text(std::string_view part) = 0;
  virtual void endElement() = 0;
};

// Reads one document from parts of any length, and keeps none of it. Throws RemoteError (Protocol)
// for what is ill-formed, has a document type (which could define entities), is nested deeper than
// 32, has a name above 1 KiB or a text above 64 MiB in one element; what the handler throws comes
// through. After that it takes nothing more.
class XmlReader {
 public:
  explicit XmlReader(XmlHandler& handler);  // borrowed
  XmlReader(const XmlReader&) = delete;
  XmlReader& operator=(const XmlReader&) = delete;
  ~XmlReader();

  void take(std::string_view part);
  // There is nothing more: throws when the document is not whole.
  void finish();

 private:
  class Parser;
  std::unique_ptr<Parser> parser_;
};

}  // namespace ox::sync
