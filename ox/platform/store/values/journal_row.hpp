#pragma once

#include <cstdint>

#include "ox/platform/store/values/store_moment.hpp"

namespace ox {

// What one row of the journal tells, and what its columns hold. Records that an act adds have no
// row: the act itself tells their rows.
enum class ChangeKind : std::uint8_t {
  // record, container; before and after: the properties that changed, encoded as a bag each. One
  // that is missing in either was not there.
  Values = 1,
  // The same, and the picture: other is the image it had (missing: none), which this row owns from
  // now on, place the checksum of the one it has (0: none).
  ValuesAndPicture = 2,
  // record, container; place: its kind; other: its image, owned by this row; before: all of its
  // properties; after: its identifier. The links that went with it stand before this.
  Removed = 3,
  // record, container: a removed record is there again, in the row it had.
  Restored = 4,
  // record: a group; container; after: the links to what came into it, in the order in which they
  // were made (ox/records/link_list.hpp). Each link is a change with a number: the row has that of
  // the first one, and the next row that behind the last one.
  Linked = 5,
  // Likewise before: the links to what left it.
  Unlinked = 6,
  // record: the row of the container; place: its type; before: its name; after: its identifier.
  ContainerAdded = 7,
  ContainerRemoved = 8,
  // before: a TagChange; record: the person, where that is known.
  Tags = 9,
};

// An act as its row tells it: the moment, and where its additions, links and changes end.
struct ActRow {
  StoreMoment moment;
  std::int64_t nextRecord = 1;
  std::int64_t nextLink = 1;
  std::int64_t nextChange = 1;
  std::int64_t bytes = 0;
};

}  // namespace ox
