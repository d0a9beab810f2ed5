#pragma once

#include <cstddef>
#include <memory>
#include <span>
#include <string_view>
#include <vector>

#include "ox/base/data.hpp"
#include "ox/platform/store/values/container_info.hpp"
#include "ox/platform/store/values/many_records.hpp"
#include "ox/platform/store/values/record_keys.hpp"
#include "ox/platform/store/values/save_request.hpp"
#include "ox/platform/store/values/store_error.hpp"
#include "ox/platform/store/values/tag_debts.hpp"
#include "ox/records/property_bag.hpp"

namespace ox {

// What the container view, import and export ask of the store below them: committed rows, whatever
// this process has not saved, and the records that its running acts have created (RunningAct).
// Every operation is safe from any thread and throws StoreError when the store itself fails.
class ContainerSource {
 public:
  ContainerSource() = default;
  ContainerSource(const ContainerSource&) = delete;
  ContainerSource& operator=(const ContainerSource&) = delete;
  virtual ~ContainerSource() = default;

  virtual std::vector<ContainerPtr> containers() = 0;
  // Null when no container holds such a record.
  virtual ContainerPtr containerOf(std::string_view identifier, RecordKind kind) = 0;
  virtual ContainerPtr containerOf(const RecordKey& key, RecordKind kind) = 0;
  // By exact identifier, else the one container whose standard id equals the text; else null.
  virtual ContainerPtr containerNamed(std::string_view identifier) = 0;
  virtual RecordKeys recordsIn(std::string_view containerIdentifier, RecordKind kind) = 0;
  // Whether nothing of the kind is committed in the container. Reads no list of what is.
  virtual bool isEmpty(std::string_view containerIdentifier, RecordKind kind) = 0;
  // Null when there is no such record.
  virtual std::shared_ptr<const PropertyBag> committedValues(const RecordKey& key) = 0;
  virtual Data committedImage(const RecordKey& key) = 0;
  // Values and pictures of the first of these records: as many as come to about that many bytes,
  // and at least one. A damaged one ends the answer before it; the first one throws DamagedRecord
  // or ImageReadError.
  virtual std::vector<RecordContent> committedContents(std::span<const RecordKey> keys,
                                                       std::size_t bytes) = 0;
  // The same for whoever decodes on a thread of its own: what is damaged is told by decodedValues.
  virtual std::vector<EncodedContent> encodedContents(std::span<const RecordKey> keys,
                                                      std::size_t bytes) = 0;
  // The members or sub-groups of a group, or of each of some groups.
  virtual RecordKeysPtr committedChildren(const RecordKey& group, RecordKind kind) = 0;
  virtual std::vector<RecordKeysPtr> committedChildren(std::span<const RecordKey> groups,
                                                       RecordKind kind) = 0;
  // How far the store has come, looked for now.
  virtual StoreMoment moment() = 0;
  // How many records the store has ever held: no fewer than it holds. Costs one look.
  virtual std::size_t mostRecords() = 0;
  // See PinnedMoment.
  virtual void pinMoment() = 0;
  virtual void unpinMoment() = 0;
  // As moment(), of the last commit whatever is pinned: a pinned moment ends.
  virtual StoreMoment lastMoment() = 0;
  // Whole, but for what the request lets be left out, or not at all. Additions whose identifier is
  // taken get a new one, written into the request. False with a reason in the request when nothing
  // was written. A request of additions and links alone, without a moment, that a thread makes
  // while an act runs on it is carried out for this process only, until the act is saved; every
  // other one is committed at once, act or not.
  virtual bool execute(SaveRequest& request) = 0;
  // For each of the sought, in creation order: the records of the container that came from a card
  // with that UID, with or without "urn:uuid:", else the one that an export gives that UID because
  // it has no other (uidOfRecord); without a UID those whose content has that fingerprint
  // (ox/records/fingerprint.hpp).
  virtual std::vector<FoundRecords> matches(std::string_view containerIdentifier, RecordKind kind,
                                            std::span<const SoughtRecord> sought) = 0;
  // Whether the tag file has anything to follow: one look at a table that is nearly always empty.
  virtual bool owesTags() = 0;
  // What it has to follow.
  virtual TagDebts tagDebts() = 0;
  // The tag file has followed every act up to this one.
  virtual void noteFollowedTags(std::int64_t number) = 0;
  // Returns when everything committed so far would survive a power cut.
  virtual void checkpoint() = 0;
};

}  // namespace ox
