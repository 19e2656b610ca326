#pragma once

#include "platform/Workspace.h"
#include "settings/ConnectionTest.h"
#include "settings/TransientFormWindow.h"

namespace lumiwren {

/// The window with FirstLaunchAPIKeyView.
class WelcomeWindow : public TransientFormWindow {
public:
  WelcomeWindow(const KeyFormServices &services, Workspace &workspace, ApplicationWindows &windows);
};

}  // namespace lumiwren
