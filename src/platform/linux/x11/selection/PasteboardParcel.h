#pragma once

#include "platform/Pasteboard.h"
#include "platform/linux/FileDescriptor.h"

#include <cstdint>
#include <optional>

namespace lumiwren {

/// Contents in anonymous memory, in which they pass from one process to another. Throws std::system_error
/// when there is no memory.
FileDescriptor packParcel(const PasteboardContents &contents);
/// Throws std::runtime_error for what is no parcel.
PasteboardContents unpackParcel(const FileDescriptor &parcel);

/// A message between the program and the holder of its pasteboard: a parcel with a number, and the number
/// back once its contents are on the pasteboard.
struct ParcelMessage {
  std::uint64_t number = 0;
  FileDescriptor parcel;
};

/// The two ends of a connection for such messages.
struct ParcelSockets {
  FileDescriptor program, holder;
};
ParcelSockets makeParcelSockets();
/// False when the other end has gone. Does not wait.
bool sendMessage(const FileDescriptor &socket, std::uint64_t number, const FileDescriptor &parcel = {});
/// Empty when no message has come, or none will. Does not wait.
std::optional<ParcelMessage> receiveMessage(const FileDescriptor &socket);

}  // namespace lumiwren
