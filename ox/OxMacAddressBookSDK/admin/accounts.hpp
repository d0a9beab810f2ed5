#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "ox/base/export.hpp"
#include "ox/base/record_key.hpp"
#include "ox/platform/Contacts/CNContainer.hpp"

// The accounts of the contact store, for whoever administers it. An account is a container; a book
// stands for one. What is done here is committed at once, for every process. Unlike the operations
// of books these throw StoreError when the store fails. Safe from any thread.

namespace ox {

// An account that cannot be added or removed as it was asked for; nothing was changed.
class OX_EXPORT AccountRefused : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// The local ones first, then in the order in which they were added.
OX_EXPORT std::vector<CNContainerPtr> accounts();
// By identifier, else the one account whose standard id equals the text; null when there is none.
OX_EXPORT CNContainerPtr accountNamed(std::string_view identifier);
// The committed records of an account (its identifier or standard id), in creation order; none when
// there is no such account.
OX_EXPORT std::vector<RecordKey> recordsOfAccount(std::string_view identifier, RecordKind kind);

// Without an identifier the account gets a new one. Throws AccountRefused when there is an account
// of the same standard id already, or when that would be empty.
OX_EXPORT CNContainerPtr addAccount(const std::string& name, CNContainerType type,
                                    const std::string& identifier = {});

enum class WithRecords : std::uint8_t { No, Yes };
// Removes an account (its identifier or standard id): with its records and the tags of its persons,
// or only if it holds none. Throws AccountRefused for the local account, for one that holds records
// that must not go, and when there is no such account. False, and noticed, when tags are left, or a
// power cut may bring them back.
OX_EXPORT bool removeAccount(std::string_view identifier, WithRecords withRecords);

}  // namespace ox
