#pragma once

#include <memory>
#include <string>
#include <utility>

#include "ox/base/export.hpp"
#include "ox/base/text.hpp"

namespace ox {

// An instant-message service. Immutable; safe from any thread. Compare by name().
class OX_EXPORT OxInstantMessageServer {
  struct Key {
    explicit Key() = default;
  };

 public:
  // The service of that name, as a store writes it. Common services are always the same object; any
  // other name, the empty one too, gives a new descriptor of that very name. A missing name gives
  // null.
  static std::shared_ptr<const OxInstantMessageServer> serverWithName(TextView name);

  const std::string& name() const { return name_; }

  OxInstantMessageServer(Key, std::string name) : name_(std::move(name)) {}

 private:
  friend struct CommonServers;

  std::string name_;
};

}  // namespace ox
