#pragma once

#include "ox/base/export.hpp"
#include "ox/platform/store/values/origin.hpp"

namespace ox {

// Tells the journal who writes: every later act of this process bears this origin. Until then it is
// the name of the program's file, and each act stands for itself. Safe from any thread.
OX_EXPORT void setOrigin(Origin origin);
OX_EXPORT Origin processOrigin();

}  // namespace ox
