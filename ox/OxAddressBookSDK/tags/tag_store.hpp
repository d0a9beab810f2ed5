#pragma once

#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "ox/OxAddressBookSDK/tags/tag_file.hpp"
#include "ox/OxAddressBookSDK/tags/tag_hold.hpp"
#include "ox/base/export.hpp"

namespace ox {

// The tags as this process shares them: the tag file, opened when first needed and made when the
// first tag is written, and over it what is held on any thread. Throws FailureError, sqlite::Error
// or std::system_error when the file cannot be used; the next call tries again. Safe from any
// thread.
class OX_EXPORT TagStore {
 public:
  using Tags = TagFile::Tags;

  static TagStore& shared();

  Tags tags(std::string_view manager, std::string_view person);
  // Of each person who has any, by one question.
  TagFile::TagsOfPersons tagsUnder(std::string_view manager);
  // True when nobody has any.
  bool isEmpty();
  // The edits are held when the thread holds tags.
  void add(std::string_view manager, std::string_view person, std::string_view tag);
  void remove(std::string_view manager, std::string_view person, std::string_view tag);
  // The tags must hold none twice.
  void replace(std::string_view manager, std::string_view person, const Tags& tags);
  // Removes and then adds, many at the cost of one.
  void change(std::string_view manager, std::string_view person, const Tags& removed,
              const Tags& added);
  // Holds that the person has no tags under any manager; the thread must hold tags.
  void holdWithoutTags(std::string_view person);

  // See TagFile. The file is made when there is none.
  void follow(std::string_view store, const std::vector<TagAct>& acts,
              const TagFile::LastAct& lastAct);

  // The last act of that store that the tags have followed; 0 without any.
  std::int64_t lastFollowed(std::string_view store);

  // Between both, what is read is of one moment, that of the first reading; a write of this process
  // ends it, and the next reading begins another one. May be nested.
  void pinMoment();
  void unpinMoment();
  // For whoever writes what belongs to the tags, or to their file, otherwise.
  void leaveMoment();

  // One line for each problem that the file has; empty when there is no file.
  Tags problems();
  // Syncs what this process has committed; does nothing when that is synced already.
  void makeDurable();
  // The same for what other processes have committed.
  void makeAllDurable();

 private:
  friend class TagHold;

  void begin(TagHold& hold);
  void end(TagHold& hold);
  void join(TagHold& hold, TagHold& outer);
  std::vector<TagChange> changesOfThread();
  void forgetThoseOfThread();

  // Opens the file, which is closed again when the process ends: the last one brings its log into
  // it.
  void open(const std::string& path);
  static void letGoAtExit();

  // The open file, for reading; null when there is none.
  TagFile* existing();
  // The open file, made when there was none.
  TagFile& existingOrNew();
  // What a person has for everybody in this process, and without what other threads hold: that may
  // be forgotten, so it spares this thread no change of its own.
  struct Views {
    Tags seen;
    Tags own;
  };
  Views views(std::string_view manager, std::string_view person);
  // Holds that the person is to have these tags; the thread must hold tags.
  void holdTags(std::string_view manager, std::string_view person, const Views& views,
                const Tags& tags);

  std::mutex mutex_;
  std::unique_ptr<TagFile> file_;
  int openedBy_ = 0;  // the process
  bool unsynced_ = false;
  int pins_ = 0;
  bool pinnedWithoutFile_ = false;  // there was none at that moment
  std::vector<TagHold*> holds_;     // of all threads, an outer one before those in it
};

}  // namespace ox
