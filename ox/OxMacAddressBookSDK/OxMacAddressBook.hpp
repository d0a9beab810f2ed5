#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "ox/OxAddressBookSDK/OxAddressBook.hpp"
#include "ox/OxMacAddressBookSDK/ground/book_list.hpp"
#include "ox/OxMacAddressBookSDK/ground/constants.hpp"
#include "ox/OxMacAddressBookSDK/ground/host_records.hpp"
#include "ox/OxMacAddressBookSDK/ground/latest_callback.hpp"
#include "ox/base/export.hpp"

namespace ox {

class ABAddressBook;
class CNContact;
class CNContactStore;
class CNContainer;
class OxAddressBookGeneral;
class SerialQueue;

using CNContactPtr = std::shared_ptr<const CNContact>;
using CNContainerPtr = std::shared_ptr<const CNContainer>;

// One address book of the system contact store: a container (an account, or the local store), or
// all records of one account id. Held in shared pointers. Safe from any thread once it is made;
// what it is never changes afterwards. Whoever asks it for the record database or its container
// includes the header of that class.
class OX_EXPORT OxMacAddressBook final : public OxAddressBook,
                                         public std::enable_shared_from_this<OxMacAddressBook> {
  struct Key {
    explicit Key() = default;
  };

 public:
  // --- finding the books ---

  // The books of the store, found once in the life of the process; the host's normal entry.
  static BookList addressBookArray();
  // The same with progress; the callback may be absent. Every call ends with (100, true), and the
  // callback runs while the list is locked: starting a discovery from it, or whatever looks for the
  // book of a person (tags, a new person), is a std::logic_error and leaves nothing behind.
  // What it throws reaches the caller, and the list is not built.
  static BookList addressBookArrayWithProgressBlock(const ProgressCallback& progress);
  // The same list, built by walking the containers. The callback is required by the call that
  // builds the list: std::invalid_argument without.
  static BookList addressBookArrayWithProgressBlock2(const ProgressCallback& progress);
  // Two further ways of building, each with a list of its own. Where an iCloud book is found, an
  // empty local book is left out.
  static BookList addressBookArray2();
  static BookList addressBookArray3();

  // A book without ID, name or container, for the host; always the same object.
  static std::shared_ptr<OxMacAddressBook> ShareAddressBook();
  // Whether the system's major number is above 9 and its minor number above 10, or 12. Asked once.
  static bool SystemVersionAbove10_11();
  static bool SystemVersionAbove10_13();
  // The queue on which the shared list is built and read.
  static SerialQueue& addressArrayQueue();
  // Does nothing: lists that were built stay.
  static void resetGAddressArray(const ProgressCallback& callback);

  // --- containers and accounts ---

  // The text without every ":ABAccount"; missing for a missing one.
  static Text standID(TextView identifier);
  // The text with ":ABPerson" appended unless it contains it.
  static Text standABPersonID(TextView identifier);
  // Whether the container is worth listing: the first of its groups, or without groups of its
  // contacts, that is known to the record database or bears its suffix must be known to it.
  static bool needAddAdreessBook_ab_store(const CNContainerPtr& container,
                                          const std::shared_ptr<ABAddressBook>& ab,
                                          const std::shared_ptr<CNContactStore>& store);
  // Whether the book belongs to one of the containers; the local book always does.
  static bool hasContainerArray_addressArray(const std::vector<CNContainerPtr>& containers,
                                             const std::shared_ptr<OxMacAddressBook>& book);
  // Whether one of the books stands for the container; the local one is always represented.
  static bool hasAddress_container(const BookList& books, const CNContainerPtr& container);

  // --- making a book ---

  static std::shared_ptr<OxMacAddressBook> initWithContainer(const CNContainerPtr& container);
  // A book of all records of an account id: no name, no container, no person cache.
  static std::shared_ptr<OxMacAddressBook> initWithID(TextView identifier);
  // The same with a name, as the account is listed: the local one as "On My Mac", any other by its
  // ID.
  static std::shared_ptr<OxMacAddressBook> listedWithID(TextView identifier);
  static std::shared_ptr<OxMacAddressBook> init();
  // Takes name and service type from the container.
  void initNameAndType(const CNContainerPtr& container);

  // --- what it is ---

  std::shared_ptr<ABAddressBook> abAddressBook() const;
  Text ID() const override { return _xxID; }
  Text name() const override { return _xxName; }
  // The container's own identifier; the ID for a book without container.
  Text validContainerID() const;
  const std::shared_ptr<OxTagManager>& tagManager() const override { return _tagManager; }
  // The service behind the book: 0 local, 1 Google, 2 QQ, 3 Facebook, 4 Yahoo, 5 LinkedIn, 6 AOL,
  // 7 Exchange, 8 iCloud, 9 any other.
  std::int32_t serverType() const { return _serverType; }

  bool canCreateGroup() const override;
  bool canCreateSubGroup() const override;
  bool canOprate() const override;
  // Always false.
  bool isInternetAdressBook() const override { return false; }

  // The service's artwork, read from its file at every call; null when it is not installed.
  ImagePtr thumbnail() const override;
  ImagePtr logo1() const override;
  ImagePtr logo2() const override;
  ImagePtr logo3() const override;
  ImagePtr logo4() const override;
  ImagePtr loadImageWithName_type(TextView name, TextView type) const;

  // --- persons and groups ---

  // The live cache, filled from the store while it is empty; null for a book without cache.
  std::shared_ptr<PersonList> allPersons() override;
  // The live cache after appending every person that is stamped with this book's ID; null likewise.
  std::shared_ptr<PersonList> allPersons2();
  // The live cache as it is; null for a book that was not made from a container.
  const std::shared_ptr<PersonList>& allPersonArray() const { return _allPersonArray; }
  std::uint64_t allPersonsCount() override;
  Groups allGroups() const override;
  Groups rootGroups() const override;
  std::uint64_t rootGroupsCount() const override;
  std::shared_ptr<IOxGroup> groupByID(TextView identifier) const override;
  // Of whatever book.
  std::vector<OxRecord> personsForIDs(const std::vector<std::string>& identifiers) const override;

  // --- making and removing records; what they give are records of the store, see recordOf ---

  // What they make is written at once; within an act of the thread (admin/whole_act.hpp) with that.

  // A new person of this book, with every supported property cleared and in the cache; null, and
  // the cache as it was, when the store did not take it.
  std::shared_ptr<IOxPerson> newPerson() override;
  // A new, unnamed group of this book; null when the store did not take it.
  std::shared_ptr<IOxGroup> newGroup() override;
  std::shared_ptr<IOxGroup> addGroupByName(TextView name) override;
  // Takes the persons out of the cache, forgets their tags at once, and removes their records at
  // the next save.
  void removePersons(const Persons& persons) override;
  // Removes the group and everything below it at the next save. Always true.
  bool removeGroup(const std::shared_ptr<IOxGroup>& group) override;
  // The record alone.
  void reallyRemoveOneGroup(const std::shared_ptr<IOxGroup>& group);
  // Writes every unsaved change of the process, in whatever book, as one transaction, but for those
  // of whole acts and loads on other threads. One that fails writes nothing of it and keeps the
  // changes for the next save; a watch tells (ox/base/failures.hpp). Tags are written at once and
  // stay as they are.
  void save() override;
  // Nothing.
  void sync() override {}
  void update() override {}

  // --- copying a person in ---

  // The new person of this book; null for a missing source, when the store did not take it, and
  // when the source had nothing to copy (an empty person is then left in the book).
  std::shared_ptr<IOxPerson> addOneFromOtherPerson(
      const std::shared_ptr<IOxPerson>& source) override;
  // The same of a contact of the container database, whose copy is neither stamped with this book
  // nor put into its cache.
  std::shared_ptr<IOxPerson> addOneFromOtherPerson(const CNContactPtr& source);
  // Clears a single value that holds an empty text or nothing; never the name, the birthday or the
  // tags.
  void needSingValueClearValue_property(const std::shared_ptr<IOxPerson>& person,
                                        const OxPropertyPtr& property);

  // --- the whole book ---

  // The callback of the latest load gets the reports of every load of the book that still runs, and
  // that of the latest save those of every save: of several at once, so it may be called by their
  // threads at the same time.

  // Replaces everything in the book by what the data of a neutral book holds, on a thread of its
  // own; returns at once. The last report is finished: at 0 when the data cannot be read and the
  // book is as it was, else at 100 after the save. A load is one act (admin/whole_act.hpp): this
  // process sees its steps, every other one the old book until all of it is there. One that is cut
  // short, by a lack of memory or room say, or whose save fails, is noticed as a failure and leaves
  // the book as it was; what others have left unsaved stays unsaved. A save or a revert meanwhile,
  // from the callback too, writes and takes back nothing of the load.
  void loadWithData_progressBlock(const Data& data, const ProgressCallback& progress) override;
  // Hands the book to the callback as the data of a neutral book, on a thread of its own; returns
  // at once. The last report is finished and carries the data; none when the save was cut short, by
  // a lack of memory say. What the store does not give is missing in the data, and noticed as a
  // failure: a host that replaces an earlier copy asks its watch first (ox/base/failures.hpp).
  void saveDataBlock(const SaveCallback& progress) override;

  // The steps of both, on the calling thread. They report to the callback of the latest request, or
  // to the one that is set here; to nobody before either.
  void setLoadProgressBlock(const ProgressCallback& progress);
  void setProgressBlock(const SaveCallback& progress);
  void loadThreed(const Data& data);
  void saveDataThreed();
  // Removes every group and person of the book. The removed persons are in the cache afterwards,
  // until the next such call. Required.
  void clearAddressBook();
  void addGroupAndPersonByGeneralAddressBook(const std::shared_ptr<OxAddressBookGeneral>& general);
  void adjustGroupAndPersonRelatedByGeneralAddressBook(
      const std::shared_ptr<OxAddressBookGeneral>& general);

  // --- properties ---

  // Every property that the model knows. Borrowed for the life of the process.
  const std::vector<OxPropertyPtr>& supportProperty() const override;
  // The nine that a host shows first; always the same array.
  static const std::vector<OxPropertyPtr>& CommonProperty();
  const std::vector<OxPropertyPtr>& commonProperty() const override { return CommonProperty(); }

  explicit OxMacAddressBook(Key) {}

 private:
  ImagePtr artwork(std::string_view ending) const;
  // Asks the store for the persons of the container, stamps them with this book's ID and puts them
  // into the cache; the result is what the store gave. For books with container only.
  Persons fillCache();
  // To the callback of the latest request; what it throws ends that report only.
  void reportLoad(double value, bool finished = false);
  // What a load does before its save; false, and noticed, when not all of it could be done.
  bool replaceRecords(const std::shared_ptr<OxAddressBookGeneral>& general);
  void reportSave(bool finished, const Data& data, double value);
  // The book as the data of a neutral book, with a report for each record; missing when it holds
  // what that cannot carry.
  Data collectedData();

  std::shared_ptr<OxTagManager> _tagManager;
  Text _xxID;
  Text _xxName;
  std::int32_t _serverType = 0;
  LatestCallback<SaveCallback> _progressBlock;
  LatestCallback<ProgressCallback> _loadProgressBlock;
  CNContainerPtr _container;
  std::shared_ptr<PersonList> _allPersonArray;  // null unless made from a container
};

}  // namespace ox
