#pragma once

#include <memory>

#include "ox/base/export.hpp"

namespace ox {

class ABRecord;
class IOxGroup;
class IOxPerson;
class _ABGroup;
class _ABPerson;

// The ways between the three faces of a record: the record database's, the model's, and the class
// that is both. No host needs a cast.

// The record as the person or the group that it is; null for one of the other kind and for a
// missing one.
OX_EXPORT std::shared_ptr<_ABPerson> hostPerson(std::shared_ptr<ABRecord> record);
OX_EXPORT std::shared_ptr<_ABGroup> hostGroup(std::shared_ptr<ABRecord> record);

// The record of the store that a person or group of the model is; null for a host's own, which lies
// in no store, and for a missing one.
OX_EXPORT std::shared_ptr<_ABPerson> recordOf(const std::shared_ptr<IOxPerson>& person);
OX_EXPORT std::shared_ptr<_ABGroup> recordOf(const std::shared_ptr<IOxGroup>& group);

}  // namespace ox
