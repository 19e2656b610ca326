#pragma once

#include "platform/linux/FileDescriptor.h"

namespace lumiwren {

enum class HolderEnds { WithTheProgram, WithTheOwnership };

/// Puts on the clipboard what comes through `socket`, and serves it. Returns when the X server goes, when
/// nothing has been held for 10 s, and, once the other end of the socket is closed, as `ends` says: at once,
/// or when somebody else has taken the clipboard.
void runPasteboardHolder(const FileDescriptor &socket, HolderEnds ends);

}  // namespace lumiwren
