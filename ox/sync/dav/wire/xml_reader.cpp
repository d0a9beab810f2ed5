#include "ox/sync/dav/wire/xml_reader.hpp"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <exception>
#include <expat.h>
#include <new>

#include "ox/sync/remote/remote_error.hpp"

namespace ox::sync {

namespace {

constexpr std::size_t kMostDepth = 32;
constexpr std::size_t kMostName = 1024;
constexpr std::size_t kMostText = std::size_t{64} << 20;
constexpr std::size_t kMostUntold = std::size_t{2} << 20;
constexpr std::size_t kMostAtOnce = std::size_t{1} << 20;  // expat counts in int

// Stands between namespace and local name in what expat tells; a namespace that holds it is refused
// by expat.
constexpr char kSeparator = '}';

[[noreturn]] void refuse(const std::string& why) {
  throw RemoteError(RemoteFailure::Protocol, "The XML of the answer cannot be read: " + why + ".");
}

}  // namespace

// No exception may pass through expat, which is C: the first one stops it and waits.
class XmlReader::Parser {
 public:
  explicit Parser(XmlHandler& handler) : handler_(handler) {
    parser_ = XML_ParserCreateNS(nullptr, kSeparator);
    if (!parser_) throw std::bad_alloc();
    XML_SetUserData(parser_, this);
    XML_SetElementHandler(parser_, onBegin, onEnd);
    XML_SetCharacterDataHandler(parser_, onText);
    XML_SetStartDoctypeDeclHandler(parser_, onDocumentType);
  }
  Parser(const Parser&) = delete;
  Parser& operator=(const Parser&) = delete;
  ~Parser() { XML_ParserFree(parser_); }

  void take(std::string_view part, bool isLast) {
    if (isOver_) refuse("there was an error before");
    do {
      const auto now = part.substr(0, kMostAtOnce);
      part.remove_prefix(now.size());
      untold_ += now.size();
      const auto ends = isLast && part.empty();
      const auto status = XML_Parse(parser_, now.data(), static_cast<int>(now.size()), ends);
      if (status == XML_STATUS_OK && untold_ > kMostUntold) {
        isOver_ = true;
        refuse("a tag or a comment is longer than 2 MiB");
      }
      if (status == XML_STATUS_OK) continue;
      isOver_ = true;
      if (failure_) std::rethrow_exception(failure_);
      refuse(XML_ErrorString(XML_GetErrorCode(parser_)));
    } while (!part.empty());
  }

 private:
  template <typename Step>
  void guarded(const Step& step) {
    if (failure_) return;  // expat may tell a little more before it stops
    untold_ = 0;
    try {
      step();
    } catch (...) {
      failure_ = std::current_exception();
      XML_StopParser(parser_, XML_FALSE);
    }
  }

  static Parser& of(void* data) { return *static_cast<Parser*>(data); }

  static void onBegin(void* data, const XML_Char* name, const XML_Char** attributes) {
    auto& self = of(data);
    self.guarded([&] { self.begin(name, attributes); });
  }

  static void onEnd(void* data, const XML_Char*) {
    auto& self = of(data);
    self.guarded([&] {
      self.textBytes_.pop_back();
      self.handler_.endElement();
    });
  }

  static void onText(void* data, const XML_Char* text, int length) {
    auto& self = of(data);
    self.guarded([&] {
      const std::string_view part(text, static_cast<std::size_t>(length));
      self.textBytes_.back() += part.size();
      if (self.textBytes_.back() > kMostText) refuse("one element holds more than 64 MiB");
      self.handler_.text(part);
    });
  }

  static void onDocumentType(void* data, const XML_Char*, const XML_Char*, const XML_Char*, int) {
    of(data).guarded([] { refuse("it has a document type"); });
  }

  // In braces, as our names are written; one without a namespace stays bare.
  static std::string nameOf(const XML_Char* name) {
    if (std::strlen(name) > kMostName) refuse("a name is longer than 1 KiB");
    const std::string text(name);
    return text.find(kSeparator) == std::string::npos ? text : '{' + text;
  }

  void begin(const XML_Char* name, const XML_Char** attributes) {
    if (textBytes_.size() >= kMostDepth) refuse("it is nested deeper than 32");
    textBytes_.push_back(0);
    XmlAttributes read;
    for (; *attributes; attributes += 2) {
      const std::string attribute = nameOf(attributes[0]);
      read.emplace_back(attribute.substr(attribute.find(kSeparator) + 1), attributes[1]);
    }
    handler_.beginElement(nameOf(name), read);
  }

  XmlHandler& handler_;
  XML_Parser parser_ = nullptr;
  std::vector<std::size_t> textBytes_;  // of each open element, its children's not counted
  std::size_t untold_ = 0;              // bytes since expat last told anything, which it keeps
  std::exception_ptr failure_;
  bool isOver_ = false;
};

XmlReader::XmlReader(XmlHandler& handler) : parser_(std::make_unique<Parser>(handler)) {}
XmlReader::~XmlReader() = default;

void XmlReader::take(std::string_view part) {
  if (!part.empty()) parser_->take(part, false);
}

void XmlReader::finish() {
  parser_->take({}, true);
}

}  // namespace ox::sync
