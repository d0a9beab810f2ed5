#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "ox/base/export.hpp"
#include "ox/platform/store/values/store_error.hpp"
#include "ox/transfer/file_format.hpp"

namespace ox::vcard {

// What becomes of the CATEGORIES of a person: tags of hers, or groups of the container that she is
// a member of.
enum class CategoriesAs : std::uint8_t { Tags, Groups };

// A card that an import would read: where it stands, what it is called, and the charset that its
// text was taken to be in when it did not tell; empty when it did. Borrowed for the call.
struct PreviewedCard {
  const std::string& file;
  std::size_t line;
  bool isGroup;
  std::string name;
  const std::string& charset;
};

struct ImportOptions {
  // A card whose UID is known with other content replaces that content instead of being skipped.
  bool update = false;
  // A card that would have to be mended is refused instead.
  bool strict = false;
  // A charset that utf8FromCharset knows: text that names none is read in it, whatever it looks
  // like; empty: UTF-8, or what the bytes look like. A byte order mark comes before it.
  std::string charset;
  // Set: nothing is written or looked up, each card is shown instead. The report counts persons as
  // added.
  std::function<void(const PreviewedCard&)> preview;
  CategoriesAs categories = CategoriesAs::Tags;
  FileFormat format = FileFormat::ByName;
  // (bytes read, bytes in all; the latter 0 when it is not known), about once for a batch.
  std::function<void(std::uint64_t, std::uint64_t)> progress;
  // Set from elsewhere: what was read so far is committed, nothing more is read. Borrowed.
  const std::atomic<bool>* stop = nullptr;
};

struct ImportProblem {
  std::string file;
  std::size_t line = 0;  // of the file; 0 when the file as a whole is meant
  std::string reason;

  bool operator==(const ImportProblem&) const = default;
};

// A card that an import did not write, because the person is there already.
struct SkippedCard {
  std::size_t file = 0;  // in ImportReport::files
  std::size_t line = 0;  // of its BEGIN
  bool differs = false;  // from the person with the same UID
};

// What an import did. Every card is in exactly one of added, updated, skipped, refused and groups;
// what is counted is committed.
struct OX_EXPORT ImportReport {
  std::uint64_t cards = 0;
  std::uint64_t added = 0;
  std::uint64_t updated = 0;
  std::uint64_t skipped = 0;   // there already, with the same content or without leave to update
  std::uint64_t refused = 0;   // could not be read
  std::uint64_t groups = 0;    // group cards, whether the group was there or not
  std::uint64_t repaired = 0;  // of all these, how many had to be mended
  std::uint64_t categoryGroups = 0;  // no cards: new groups that CategoriesAs::Groups has made

  static constexpr std::size_t kProblemsKept = 100'000;
  std::vector<std::string> files;         // that were to be imported
  std::size_t filesRead = 0;              // of them, to their end, with cards
  std::vector<SkippedCard> skippedCards;  // all of them, in the order of the files
  std::vector<ImportProblem> problems;    // the first ones, in the order of the files
  std::uint64_t problemCount = 0;         // all of them
  std::uint64_t strayLines = 0;           // text outside of any card
  std::vector<std::string> uselessFiles;  // cannot be read, or hold no card; why, naming the file

  bool interrupted = false;
  // The store failed, and why; what was committed before stays.
  std::string failure;
  std::optional<StoreError::Kind> failureKind;

  // A file with which nothing could be done; counts as a problem of its own.
  void addUseless(const std::string& file, std::string reason);
  void addProblem(const std::string& file, std::size_t line, std::string reason);
  // Adds what was counted apart from this, and empties that.
  void takeCounts(ImportReport& batch);
};

// Imports files of vCards, tables and LDIF into a container, which must exist (its identifier, or
// standard id). All files are looked at first: when one cannot be opened, or is a file of the store
// itself, nothing is imported. Cards are committed in batches, groups and their members at the end
// in one request, so that members may stand in any file and in any order. A card whose UID is in
// the container, or one without UID whose content is, is not added again, also when others write
// meanwhile. Returns when everything would survive a power cut. Several may run at once.
OX_EXPORT ImportReport importFiles(const std::vector<std::string>& paths,
                                   const std::string& container, const ImportOptions& options);

// True for a charset that text of cards may be in: one that is known, and whose bytes below 80 are
// those of ASCII.
OX_EXPORT bool isCharsetOfCards(const std::string& charset);

}  // namespace ox::vcard
