#pragma once

#include "settings/ConnectionTest.h"
#include "settings/TransientFormWindow.h"

namespace lumiwren {

/// The window with APIKeyInputView.
class APIKeyWindow : public TransientFormWindow {
public:
  APIKeyWindow(const KeyFormServices &services, ApplicationWindows &windows);
};

}  // namespace lumiwren
