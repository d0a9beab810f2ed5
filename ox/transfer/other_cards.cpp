#include "ox/transfer/other_cards.hpp"

#include <cassert>

#include "ox/formats/ldif/directory_source.hpp"
#include "ox/formats/table/table_source.hpp"

namespace ox::vcard {

std::unique_ptr<formats::CardSource> cardSourceOf(FileFormat format, ByteSource& source,
                                                  const std::string& charset) {
  assert(format == FileFormat::Csv || format == FileFormat::Ldif);
  if (format == FileFormat::Ldif)
    return std::make_unique<formats::DirectorySource>(source, charset);
  return std::make_unique<formats::TableSource>(source, charset);
}

}  // namespace ox::vcard
