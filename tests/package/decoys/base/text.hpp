#pragma once

// A host's own header; nothing of the SDK's may take it for one of its own.
inline int decoyText() {
  return 1;
}
