// What all books of the process share: the plain book, the version gates, the registry queue.
#include "ox/OxMacAddressBookSDK/OxMacAddressBook.hpp"
#include "ox/OxMacAddressBookSDK/registry/version_gate.hpp"
#include "ox/base/serial_queue.hpp"

namespace ox {

std::shared_ptr<OxMacAddressBook> OxMacAddressBook::ShareAddressBook() {
  static const auto& addressBook = *new std::shared_ptr<OxMacAddressBook>(init());
  return addressBook;
}

bool OxMacAddressBook::SystemVersionAbove10_11() {
  static VersionGate b{10};
  return b.answer();
}

bool OxMacAddressBook::SystemVersionAbove10_13() {
  static VersionGate b{12};
  return b.answer();
}

SerialQueue& OxMacAddressBook::addressArrayQueue() {
  static auto& g_addArrayQueue = *new SerialQueue;
  return g_addArrayQueue;
}

void OxMacAddressBook::resetGAddressArray(const ProgressCallback& /*callback*/) {}

}  // namespace ox
