#include "ox/platform/store/committed/contact_store.hpp"

#include <cassert>
#include <string>
#include <utility>
#include <vector>

#include "ox/platform/store/committed/store_transaction.hpp"
#include "ox/records/card_uid.hpp"

namespace ox {

template <typename Step>
void ContactStore::write(StoreFile::Outlive outlive, Step step) {
  file_.guarded([&] {
    auto& file = file_.connection();
    file_.letCommits(outlive);
    sqlite::Transaction transaction(file);
    // Inside the write lock nobody else commits: what is read now stays true to the end.
    committed_.refresh(CommittedRecords::Look::Now);
    auto& next = file_.statement(Sql::NextRecord);
    const auto firstRow = next.step() ? next.integer(0) : 0;
    next.reset();
    StoreTransaction writing(file_, committed_, firstRow);
    const auto changesBefore = file.totalChanges();
    try {
      step(writing);
      assert(writing.nextRow() >= firstRow);
      if (writing.nextRow() != firstRow) {
        file_.statement(Sql::SetNextRecord).bind(1, writing.nextRow()).run();
      }
      transaction.commit();
    } catch (...) {
      // What was read in between is what was to be written, and now never was.
      committed_.forgetUncommitted();
      file_.forgetCustomProperties();
      throw;
    }
    // A commit that wrote nothing has synced nothing either.
    if (file.totalChanges() != changesBefore) {
      file_.noteCommit();
      committed_.noteCommit();
    }
    committed_.follow(writing.written());
  });
}

bool ContactStore::execute(SaveRequest& request) {
  try {
    write(StoreFile::Outlive::Kill, [&](StoreTransaction& writing) {
      settleOutdated(request);
      const bool leavesOut = request.whenOutdated == SaveRequest::WhenOutdated::LeaveOut;
      for (const auto& container : request.newContainers) writing.addContainer(container);
      for (auto& record : request.additions) {
        if (!record.leftOut) writing.addRecord(record);
      }
      for (auto& record : request.replacements) {
        record.leftOut = leavesOut && !writing.find(record.key);
        if (!record.leftOut) writing.replaceRecord(record);
      }
      for (const auto& link : request.removedLinks) writing.removeLink(link);
      for (auto& link : request.links) {
        const auto refused = writing.addLink({link.group, link.child});
        if (!refused.empty() && !leavesOut) throw RefusedRequest(refused);
        link.leftOut = !refused.empty();
      }
      for (const auto& removal : request.removedContainers) writing.removeContainer(removal);
    });
    if (request.moment) request.moment = committed_.moment();
    return true;
  } catch (const RefusedRequest& refused) {
    request.reason = refused.what();
    return false;
  }
}

SaveReport ContactStore::commit(RecordChanges& changes) {
  SaveReport report;
  const auto noteDropped = [&report](std::string why, const RecordKey& record) {
    if (why.empty()) return;
    report.dropped.push_back({FailureKind::Refused, std::move(why), record.text()});
  };
  try {
    write(StoreFile::Outlive::PowerCut, [&](StoreTransaction& writing) {
      for (auto& record : changes.additions) writing.addRecord(record);
      for (const auto& edit : changes.edits) noteDropped(writing.applyEdit(edit), edit.key);
      for (const auto& link : changes.removedLinks) writing.removeLink(link);
      for (const auto& link : changes.addedLinks) noteDropped(writing.addLink(link), link.group);
      for (const auto& key : changes.removals) {
        if (const auto entry = writing.find(key)) writing.removeRecord(*entry);
      }
    });
  } catch (const RefusedRequest& refused) {
    return {false, {FailureKind::Refused, refused.what(), {}}, {}};
  }
  // When every edit was dropped nothing was committed, and creations before it may still wait.
  sync();
  report.done = true;
  return report;
}

// A request that was made from what the store held is matched once more against what it holds now.
// Others may have committed between both, and only the write lock, under which this runs, keeps
// them from doing so again. Nothing is looked at when the moment is still the same, so an import
// that is alone pays one comparison a request; and no two imports that run at once add one card
// twice.
void ContactStore::settleOutdated(SaveRequest& request) {
  request.outdated = request.moment && *request.moment != committed_.moment();
  if (!request.outdated) return;
  if (request.whenOutdated == SaveRequest::WhenOutdated::Refuse) {
    throw RefusedRequest("the store was changed meanwhile");
  }
  // Before anything is added: what one request adds is not compared with itself.
  const std::span additions(request.additions);
  for (std::size_t first = 0, next = 0; first < additions.size(); first = next) {
    while (next < additions.size() && additions[next].kind == additions[first].kind &&
           additions[next].container == additions[first].container) {
      ++next;
    }
    leaveOutStored(additions.subspan(first, next - first));
  }
}

// Of one kind in one container.
void ContactStore::leaveOutStored(std::span<NewRecord> additions) {
  std::vector<SoughtRecord> sought;
  std::vector<NewRecord*> records;
  for (auto& record : additions) {
    record.leftOut = false;
    const auto* uid = record.properties.text(property_id::kCardUid);
    const bool hasUid = uid != nullptr && !uidKey(*uid).empty();
    if (!hasUid && record.kind != RecordKind::Person) continue;
    sought.push_back(hasUid ? SoughtRecord{*uid}
                            : SoughtRecord{{}, fingerprintOf(record, pictureOf(record))});
    records.push_back(&record);
  }
  if (sought.empty()) return;
  const auto& any = additions.front();
  const auto found = committed_.matches(any.container, any.kind, sought);
  for (std::size_t i = 0; i < records.size(); ++i) records[i]->leftOut = !found[i].empty();
}

}  // namespace ox
