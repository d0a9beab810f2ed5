#pragma once

#include <memory>
#include <string>

#include "ox/formats/card_source.hpp"
#include "ox/transfer/file_format.hpp"
#include "ox/vcard/source/byte_source.hpp"

namespace ox::vcard {

// The persons and groups of a file that holds no vCards, as cards; the source is borrowed. Text
// that is no UTF-8 is read in that charset; in the one that it looks like where none is given.
std::unique_ptr<formats::CardSource> cardSourceOf(FileFormat format, ByteSource& source,
                                                  const std::string& charset = {});

}  // namespace ox::vcard
