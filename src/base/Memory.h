#pragma once

namespace lumiwren {

/// Gives memory that was freed back to the system, which the C library else keeps for itself in part. Takes
/// some milliseconds; for after something large.
void releaseFreedMemory();

}  // namespace lumiwren
