#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "ox/base/data.hpp"
#include "ox/base/record_key.hpp"
#include "ox/platform/store/values/container_info.hpp"
#include "ox/platform/store/values/spill_file.hpp"
#include "ox/platform/store/values/store_moment.hpp"
#include "ox/platform/store/values/sync_rows.hpp"
#include "ox/platform/store/values/unsaved_changes.hpp"
#include "ox/records/encoded_values.hpp"
#include "ox/records/property_bag.hpp"
#include "ox/records/tag_change.hpp"

namespace ox {

// A request that must not be carried out as it stands. Nothing of it is written.
class RefusedRequest : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// The wish to remove a container.
struct ContainerRemoval {
  std::string identifier;
  bool withRecords = false;  // false: refused while the container holds records
};

struct NewRecord {
  RecordKey key;
  RecordKind kind = RecordKind::Person;
  std::string container;  // identifier or standard id
  PropertyBag properties;
  Data image;
  // contentFingerprint of both, for whoever has worked it out already.
  std::optional<std::uint64_t> fingerprint = std::nullopt;
  bool leftOut = false;  // see SaveRequest
  // The picture when it was put aside; image is null then.
  std::optional<SpillableData> spilledImage = std::nullopt;
  // Instead of it, asked when it is written.
  std::function<Data()> readImage = {};
  // Instead of the properties, with the fingerprint, from whoever has encoded them already.
  std::optional<EncodedValues> encoded = std::nullopt;
  // The bytes of those, when they were put aside; asked when they are written.
  std::function<std::string()> readBytes = {};
};

// Of a record that is to be added: its picture, wherever it lies, the UID of its card, and its
// fingerprint as its sender worked it out or worked out now.
Data pictureOf(const NewRecord& record);
TextView cardUidOf(const NewRecord& record);
std::uint64_t fingerprintOf(const NewRecord& record, const Data& picture);

// Replaces all values of a committed record.
struct ReplacedRecord {
  RecordKey key;
  PropertyBag properties;
  Data image;
  bool leftOut = false;  // see SaveRequest
  // contentFingerprint that the record must still have.
  std::optional<std::uint64_t> expected = std::nullopt;
  bool keepsImage = false;  // the stored picture stays, whatever `image` says
  // The picture when it was put aside; image is null then.
  std::optional<SpillableData> spilledImage = std::nullopt;
};

// The picture that it brings, wherever that lies.
Data pictureOf(const ReplacedRecord& record);

struct RecordRemoval {
  RecordKey key;
  // contentFingerprint that the record must still have; missing: it goes whatever it says, and one
  // that is not there is left out.
  std::optional<std::uint64_t> expected = std::nullopt;
  bool leftOut = false;
};

struct NewLink {
  RecordKey group;
  RecordKey child;
  bool leftOut = false;  // see SaveRequest
};

// One request of the container view: committed as one transaction, in the order of the lists.
struct SaveRequest {
  std::vector<ContainerInfo> newContainers;
  std::vector<NewRecord> additions;
  std::vector<ReplacedRecord> replacements;
  std::vector<Link> removedLinks;  // one that is not there is left alone
  std::vector<RecordRemoval> removals = {};
  std::vector<NewLink> links;  // one that exists already is left alone
  std::vector<ContainerRemoval> removedContainers;
  // For the journal, and for the tag file to follow; without those of records that are left out.
  std::vector<TagChange> tags = {};
  // A card may be that of one of the additions, by the key that this has in the request. One that
  // is stored keeps its record where it names none, or one that is gone.
  SyncRows sync = {};
  // Whether it brings what stands in a book elsewhere, and so changes a container that is read-only
  // too.
  bool bringsFromElsewhere = false;
  // Whether it is waited for until it would outlive a power cut, and not the process alone.
  bool outlivesPowerCut = false;

  // For a request that was put together from what the store held: from before it was looked at.
  // The moment after the request once that is written.
  std::optional<StoreMoment> moment = std::nullopt;
  // Answers whether others had committed since.
  bool outdated = false;
  // What then becomes of it. LeaveOut: additions are left out that are there by now (by the UID of
  // their card; a person without one by its content), and in any case replacements of records that
  // are gone and links that cannot be made. All of these are marked, the rest is written.
  enum class WhenOutdated : std::uint8_t { Refuse, LeaveOut };
  WhenOutdated whenOutdated = WhenOutdated::Refuse;

  std::string reason;  // why nothing was written, when execute answers false
  // Then those records that are not as `expected` any more, or that a new card names and that are
  // gone: to be read and planned anew.
  std::vector<RecordKey> outdatedRecords = {};

  // Additions and links alone, put together without a look at the store.
  bool onlyCreates() const {
    return newContainers.empty() && replacements.empty() && removedLinks.empty() &&
           removals.empty() && removedContainers.empty() && tags.empty() && sync.empty() && !moment;
  }
};

}  // namespace ox
