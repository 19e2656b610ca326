#pragma once

#include "platform/AccessibilityTrust.h"
#include "platform/ApplicationWindows.h"
#include "platform/Bundle.h"
#include "platform/ChildProcesses.h"
#include "platform/DesktopAppearance.h"
#include "platform/EventMonitors.h"
#include "platform/HTTPClient.h"
#include "platform/Image.h"
#include "platform/LoginItem.h"
#include "platform/PanelWindows.h"
#include "platform/Pasteboard.h"
#include "platform/ScreenRecording.h"
#include "platform/Screens.h"
#include "platform/SecretStore.h"
#include "platform/SelectionCopy.h"
#include "platform/TextRecognizer.h"
#include "platform/UpdateUserDriver.h"
#include "platform/Updater.h"
#include "platform/UserDefaults.h"
#include "platform/Workspace.h"

#include <memory>

namespace lumiwren {

/// What this desktop session offers. Each facility is always there; what the session cannot do is an object
/// that answers accordingly.
class Platform {
public:
  virtual ~Platform() = default;

  virtual EventMonitors &eventMonitors() = 0;
  virtual Pasteboard &pasteboard() = 0;
  virtual SelectionCopy &selectionCopy() = 0;
  virtual AccessibilityTrust &accessibilityTrust() = 0;
  virtual Screens &screens() = 0;
  virtual PanelWindows &panelWindows() = 0;
  virtual ApplicationWindows &applicationWindows() = 0;
  virtual ScreenRecording &screenRecording() = 0;
  virtual ImageDecoder &imageDecoder() = 0;
  virtual TextRecognizer &textRecognizer() = 0;
  virtual HTTPClient &httpClient() = 0;
  virtual SecretStore &secretStore() = 0;
  virtual UserDefaults &userDefaults() = 0;
  virtual LoginItem &loginItem() = 0;
  virtual DesktopAppearance &desktopAppearance() = 0;
  virtual ChildProcesses &childProcesses() = 0;
  virtual Workspace &workspace() = 0;
  virtual const Bundle &bundle() = 0;

  /// The updater, which shows by `driver` what it does. Once. It is gone before the platform and the driver.
  virtual std::unique_ptr<Updater> makeUpdater(UpdateUserDriver &driver) = 0;
};

}  // namespace lumiwren
