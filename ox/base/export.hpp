#pragma once

// Marks what the shared library offers to hosts; everything else stays inside it. It stands before
// the name of each class, and before each function and constant, that a public header declares and
// a source defines.
#define OX_EXPORT __attribute__((visibility("default")))
