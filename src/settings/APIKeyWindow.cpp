#include "settings/APIKeyWindow.h"

#include "settings/APIKeyInputView.h"

#include <memory>

namespace lumiwren {

APIKeyWindow::APIKeyWindow(const KeyFormServices &services, ApplicationWindows &windows)
    : TransientFormWindow(QStringLiteral("OpenAI API Key"), /*smallestHeight=*/0, windows,
                          [services](const Dismiss &dismiss) {
                            return std::make_unique<APIKeyInputView>(services, dismiss);
                          }) {}

}  // namespace lumiwren
