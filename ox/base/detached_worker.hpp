#pragma once

#include <functional>

namespace ox {

// Runs the task on a new thread that nobody waits for, and returns at once. The task owns what it
// works on, for it may outlive its caller and even main. What it throws is contained and noticed
// as a failure, by the watches of the caller (failures.hpp). Throws std::system_error when no
// thread can be started; the task is then not run.
void runDetached(std::function<void()> task);

}  // namespace ox
