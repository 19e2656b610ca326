#pragma once

#include "base/MainQueue.h"
#include "platform/Platform.h"

#include <memory>

namespace lumiwren {

/// The platform of the session that the toolkit is connected to. Made once, on the main thread, after the
/// application object. What the session cannot do is an object that says so.
std::unique_ptr<Platform> makeLinuxPlatform(MainQueue &mainQueue);

/// The keyring alone, for commands that need no session.
std::unique_ptr<SecretStore> makeSecretStore();

}  // namespace lumiwren
