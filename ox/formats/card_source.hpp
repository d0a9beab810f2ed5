#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "ox/records/property_types.hpp"
#include "ox/vcard/read/card.hpp"
#include "ox/vcard/source/byte_source.hpp"

namespace ox::formats {

// Why a file is none of the format; what() says it in words that follow the file's name.
class FormatError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// The persons and groups of a file as cards, in its order. One thread at a time.
class CardSource {
 public:
  CardSource() = default;
  CardSource(const CardSource&) = delete;
  CardSource& operator=(const CardSource&) = delete;
  virtual ~CardSource() = default;

  // The next card, or why it is none; nullopt at the end. Throws FormatError before the first one,
  // SourceError when the file cannot be read further.
  virtual std::optional<vcard::CardResult> next() = 0;
  // The properties that the file tells of the person that was given last, also by saying nothing.
  virtual std::shared_ptr<const std::vector<PropertyId>> named() const = 0;
  // Of the file, for a progress bar.
  virtual std::uint64_t bytesRead() const = 0;
  // What there is to tell beside single cards, once.
  std::vector<vcard::Problem> takeRemarks() { return std::exchange(remarks_, {}); }

 protected:
  void remark(std::size_t line, std::string what) { remarks_.push_back({line, std::move(what)}); }

 private:
  std::vector<vcard::Problem> remarks_;
};

}  // namespace ox::formats
