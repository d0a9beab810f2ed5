#pragma once

#include <optional>
#include <set>
#include <string>

#include "ox/formats/card_source.hpp"
#include "ox/formats/ldif/ldif_reader.hpp"
#include "ox/formats/text/text_source.hpp"

namespace ox::formats {

// The persons and groups of an LDIF file. Every card has a UID, made of the name of its entry, by
// which groups name their members.
class DirectorySource : public CardSource {
 public:
  // The source is borrowed. A charset: that of text that is no UTF-8 (TextSource).
  explicit DirectorySource(vcard::ByteSource& source, const std::string& charset = {})
      : text_(source, charset), reader_(text_) {}

  std::optional<vcard::CardResult> next() override;
  std::shared_ptr<const std::vector<PropertyId>> named() const override { return named_; }
  std::uint64_t bytesRead() const override { return text_.bytesRead(); }

 private:
  vcard::CardResult cardOfRecord();
  void remarkAttribute(const std::string& name, std::string_view what);

  TextSource text_;
  LdifReader reader_;
  LdifRecord record_;
  std::shared_ptr<const std::vector<PropertyId>> named_;  // what the entry has
  std::set<std::string> told_;                            // attributes that have no place
};

}  // namespace ox::formats
