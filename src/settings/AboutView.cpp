#include "settings/AboutView.h"

#include "ui/AppIconView.h"
#include "ui/Divider.h"
#include "ui/PushButton.h"
#include "ui/Spacing.h"
#include "ui/TextLabel.h"

#include <QVBoxLayout>

namespace lumiwren {
namespace {

constexpr int aboutWidth = 340;
constexpr int aboutIconSize = 128;

}  // namespace

AboutView::AboutView(const Bundle &bundle, const std::function<void()> &onClose, QWidget *parent)
    : FormView(aboutWidth, parent) {
  auto *const description =
      new TextLabel(QStringLiteral("A lightweight macOS menu bar app that explains selected text or screen "
                                   "regions using AI. Supports custom actions with configurable hotkeys and "
                                   "prompts."),
                    TextStyle::Body, &SemanticColors::secondary);
  description->setWordWrap(true);
  description->setAlignment(Qt::AlignHCenter);
  description->setContentsMargins(spacing::small, 0, spacing::small, 0);
  auto *const closeButton = new PushButton(PushButton::Kind::Prominent, QStringLiteral("Close"));
  closeButton->setDefault(true);
  auto *const layout = new QVBoxLayout(this);
  layout->setContentsMargins(spacing::section, spacing::section, spacing::section, spacing::section);
  layout->setSpacing(spacing::large);
  layout->addWidget(new AppIconView(aboutIconSize), 0, Qt::AlignHCenter);
  layout->addWidget(new TextLabel(QStringLiteral("Lumiwren"), TextStyle::Title2), 0, Qt::AlignHCenter);
  layout->addWidget(new TextLabel(appVersion(bundle), TextStyle::Caption, &SemanticColors::secondary), 0,
                    Qt::AlignHCenter);
  layout->addWidget(description);
  layout->addWidget(new Divider);
  layout->addWidget(closeButton, 0, Qt::AlignHCenter);
  connect(closeButton, &QPushButton::clicked, this, onClose);
}

QString AboutView::appVersion(const Bundle &bundle) {
  return QStringLiteral("Version ") +
         QString::fromStdString(bundle.stringForKey("CFBundleShortVersionString").value_or("Unknown"));
}

}  // namespace lumiwren
