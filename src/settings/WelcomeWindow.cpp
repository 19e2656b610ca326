#include "settings/WelcomeWindow.h"

#include "settings/FirstLaunchAPIKeyView.h"

#include <memory>
#include <utility>

namespace lumiwren {
namespace {

constexpr int smallestWelcomeHeight = 400;

}  // namespace

WelcomeWindow::WelcomeWindow(const KeyFormServices &services, Workspace &workspace,
                             ApplicationWindows &windows)
    : TransientFormWindow(QStringLiteral("Welcome to Lumiwren"), smallestWelcomeHeight, windows,
                          [services, &workspace](Dismiss dismiss) {
                            return std::make_unique<FirstLaunchAPIKeyView>(services, workspace,
                                                                           std::move(dismiss));
                          }) {}

}  // namespace lumiwren
