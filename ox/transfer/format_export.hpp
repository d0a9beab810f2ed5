#pragma once

#include <cstdint>

#include "ox/base/export.hpp"
#include "ox/transfer/exporter.hpp"

namespace ox::formats {

// What a file beside vCard holds.
enum class Format : std::uint8_t { JCard, JsContact, Csv, Ldif };

// As exportCards, of which it takes the cards of version 4.0: the pieces that the sink gets make
// one file of that format when they stand one after the other. CSV has no groups, and reads the
// persons twice, since its header tells how many values there are of each kind.
OX_EXPORT vcard::ExportReport exportAs(Format format, const RecordKeys& persons,
                                       const RecordKeys& groups, const vcard::CardSink& sink,
                                       vcard::Unreadable unreadable = vcard::Unreadable::Fail);

}  // namespace ox::formats
