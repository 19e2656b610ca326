#pragma once

#include "platform/Platform.h"
#include "platform/testing/FakeAccessibilityTrust.h"
#include "platform/testing/FakeApplicationWindows.h"
#include "platform/testing/FakeBundle.h"
#include "platform/testing/FakeChildProcesses.h"
#include "platform/testing/FakeDesktopAppearance.h"
#include "platform/testing/FakeEventMonitors.h"
#include "platform/testing/FakeHTTPClient.h"
#include "platform/testing/FakeImageDecoder.h"
#include "platform/testing/FakeLoginItem.h"
#include "platform/testing/FakePanelWindows.h"
#include "platform/testing/FakePasteboard.h"
#include "platform/testing/FakeScreenRecording.h"
#include "platform/testing/FakeScreens.h"
#include "platform/testing/FakeSecretStore.h"
#include "platform/testing/FakeSelectionCopy.h"
#include "platform/testing/FakeTextRecognizer.h"
#include "platform/testing/FakeUpdater.h"
#include "platform/testing/FakeUserDefaults.h"
#include "platform/testing/FakeWorkspace.h"

#include <memory>

namespace lumiwren::testing {

/// Every fake at once.
class FakePlatform : public Platform {
public:
  FakeEventMonitors &eventMonitors() override { return eventMonitors_; }
  FakePasteboard &pasteboard() override { return pasteboard_; }
  FakeSelectionCopy &selectionCopy() override { return selectionCopy_; }
  FakeAccessibilityTrust &accessibilityTrust() override { return accessibilityTrust_; }
  FakeScreens &screens() override { return screens_; }
  FakePanelWindows &panelWindows() override { return panelWindows_; }
  FakeHTTPClient &httpClient() override { return httpClient_; }
  FakeSecretStore &secretStore() override { return secretStore_; }
  FakeUserDefaults &userDefaults() override { return userDefaults_; }
  FakeDesktopAppearance &desktopAppearance() override { return desktopAppearance_; }
  FakeApplicationWindows &applicationWindows() override { return applicationWindows_; }
  FakeLoginItem &loginItem() override { return loginItem_; }
  FakeScreenRecording &screenRecording() override { return screenRecording_; }
  FakeImageDecoder &imageDecoder() override { return imageDecoder_; }
  FakeTextRecognizer &textRecognizer() override { return textRecognizer_; }
  FakeChildProcesses &childProcesses() override { return childProcesses_; }
  FakeWorkspace &workspace() override { return workspace_; }
  FakeBundle &bundle() override { return bundle_; }
  std::unique_ptr<Updater> makeUpdater(UpdateUserDriver & /*driver*/) override {
    return std::make_unique<FakeUpdater>();
  }

private:
  FakeEventMonitors eventMonitors_;
  FakePasteboard pasteboard_;
  FakeSelectionCopy selectionCopy_;
  FakeAccessibilityTrust accessibilityTrust_;
  FakeScreens screens_;
  FakePanelWindows panelWindows_;
  FakeHTTPClient httpClient_;
  FakeSecretStore secretStore_;
  FakeUserDefaults userDefaults_;
  FakeDesktopAppearance desktopAppearance_;
  FakeApplicationWindows applicationWindows_;
  FakeLoginItem loginItem_;
  FakeScreenRecording screenRecording_;
  FakeImageDecoder imageDecoder_;
  FakeTextRecognizer textRecognizer_;
  FakeChildProcesses childProcesses_;
  FakeWorkspace workspace_;
  FakeBundle bundle_;
};

}  // namespace lumiwren::testing
