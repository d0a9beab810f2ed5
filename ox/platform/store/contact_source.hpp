#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "ox/base/record_key.hpp"
#include "ox/platform/store/values/record_entry.hpp"
#include "ox/platform/store/values/save_request.hpp"
#include "ox/platform/store/values/store_error.hpp"
#include "ox/records/property_bag.hpp"

namespace ox {

// What is known of a stored record without its values.
struct RecordInfo {
  RecordKey key;
  RecordKind kind = RecordKind::Person;
  ContainerPtr container;
};

// Everything that the two views ask of the store that lies below them. The record view sees
// committed rows and this process's unsaved changes; the container view sees committed rows only.
// Every operation is safe from any thread and throws StoreError when the store itself fails; a
// refused edit is counted (ox/base/failures.hpp) and answers false.
class ContactSource {
 public:
  ContactSource() = default;
  ContactSource(const ContactSource&) = delete;
  ContactSource& operator=(const ContactSource&) = delete;
  virtual ~ContactSource() = default;

  // --- the record view ---
  virtual RecordKeys records(RecordKind kind) = 0;
  // Missing when there is no such record or it was removed, unsaved removals included.
  virtual std::optional<RecordInfo> record(std::string_view identifier) = 0;
  // A removed record keeps its values until the save; a missing object afterwards.
  virtual PropertyValue value(const RecordKey& key, PropertyId property) = 0;
  virtual bool setValue(const RecordKey& key, RecordKind kind, PropertyId property,
                        PropertyValue value) = 0;
  // Null without an image. May throw ImageReadError.
  virtual Data imageData(const RecordKey& key) = 0;
  virtual bool setImageData(const RecordKey& key, Data image) = 0;
  virtual RecordKeysPtr children(const RecordKey& group, RecordKind kind) = 0;
  virtual RecordKeysPtr parents(const RecordKey& record) = 0;
  // Refused: a link that exists already, crosses containers or closes a circle.
  virtual bool link(const RecordKey& group, const RecordKey& child, RecordKind childKind) = 0;
  virtual bool unlink(const RecordKey& group, const RecordKey& child, RecordKind childKind) = 0;
  virtual bool remove(const RecordKey& key, RecordKind kind) = 0;
  // The record as text, for people and for finding the store file it lies in.
  virtual std::string description(const RecordKey& key, RecordKind kind) = 0;
  virtual SaveReport save() = 0;
  virtual UnsavedChanges unsavedChanges() = 0;
  virtual void revert() = 0;

  // --- the container view ---
  virtual std::vector<ContainerPtr> containers() = 0;
  // Null when no container holds such a record.
  virtual ContainerPtr containerOf(std::string_view identifier, RecordKind kind) = 0;
  // By exact identifier, else the one container whose standard id equals the text; else null.
  virtual ContainerPtr containerNamed(std::string_view identifier) = 0;
  virtual RecordKeys recordsIn(std::string_view containerIdentifier, RecordKind kind) = 0;
  // The committed values; null when there is no such record.
  virtual std::shared_ptr<const PropertyBag> committedValues(const RecordKey& key) = 0;
  virtual Data committedImage(const RecordKey& key) = 0;
  // contentFingerprint of the committed values and picture, without reading them; 0 when there is
  // no such record.
  virtual std::uint64_t committedFingerprint(const RecordKey& key) = 0;
  // How far the store has come, looked for now.
  virtual StoreMoment moment() = 0;
  // Whole, but for what the request lets be left out, or not at all. Additions whose identifier is
  // taken get a new one, written into the request. False with a reason in the request when nothing
  // was written.
  virtual bool execute(SaveRequest& request) = 0;
  // Committed records of a container that came from a card with that UID, with or without
  // "urn:uuid:", in creation order; else the one that an export gives that UID because it has no
  // other (uidOfRecord).
  virtual RecordKeys recordsWithCardUid(std::string_view containerIdentifier, RecordKind kind,
                                        std::string_view uid) = 0;
  // Those whose content has that fingerprint (ox/records/fingerprint.hpp), in creation order.
  virtual RecordKeys recordsWithFingerprint(std::string_view containerIdentifier, RecordKind kind,
                                            std::uint64_t fingerprint) = 0;
  // Returns when everything committed so far would survive a power cut.
  virtual void checkpoint() = 0;
};

// The source that both views use. Unless one was installed, the store at contactStorePath(), opened
// when first needed.
ContactSource& contactSource();

// Puts another source in place, for the life of the process or until the next call. To be called
// before any record is handed out.
void installContactSource(std::shared_ptr<ContactSource> source);

}  // namespace ox
