#include "app/AppearanceController.h"

#include "ui/Fonts.h"
#include "ui/LookPalettes.h"
#include "ui/Motion.h"
#include "ui/Palette.h"

#include <QApplication>
#include <QEvent>
#include <QFontDatabase>
#include <QScreen>

#include <algorithm>

namespace lumiwren {

AppearanceController::AppearanceController(DesktopAppearance &appearance) : appearance_(appearance) {
  qApp->installEventFilter(this);
  connect(qApp, &QGuiApplication::primaryScreenChanged, this, &AppearanceController::watchPrimaryScreen);
  watchPrimaryScreen();
  observation_ = appearance_.observe([this](const Appearance &changed) { apply(changed); });
}

void AppearanceController::watchPrimaryScreen() {
  disconnect(screenConnection_);
  if (const QScreen *const screen = QGuiApplication::primaryScreen()) {
    // With the device pixel ratio the size in points changes, too; of the ratio itself nobody tells.
    screenConnection_ = connect(screen, &QScreen::geometryChanged, this,
                                [this] { applyTextScale(appearance_.current().textScale); });
  }
  apply(appearance_.current());
}

bool AppearanceController::eventFilter(QObject *receiver, QEvent *event) {
  if (receiver == qApp) {
    // The toolkit has another palette or font by itself, because the user chose another theme.
    if (event->type() == QEvent::ApplicationPaletteChange && !hasOwnPalette_) {
      scheme_ = ColorScheme::NoPreference;
      applyColorScheme(appearance_.current().colorScheme);
    } else if (event->type() == QEvent::ApplicationFontChange) {
      applyTextScale(appearance_.current().textScale);
    }
  }
  return false;
}

void AppearanceController::apply(const Appearance &appearance) {
  applyColorScheme(appearance.colorScheme);
  applyTextScale(appearance.textScale);
  setReducesMotion(appearance.reducesMotion);
}

void AppearanceController::applyColorScheme(ColorScheme scheme) {
  if (scheme == scheme_) {
    return;
  }
  scheme_ = scheme;
  if (hasOwnPalette_) {
    QApplication::setPalette(QPalette());
    hasOwnPalette_ = false;
  }
  const bool isDark = SemanticColors(QApplication::palette()).isDark;
  if (scheme != ColorScheme::NoPreference && isDark != (scheme == ColorScheme::Dark)) {
    hasOwnPalette_ = true;
    QApplication::setPalette(scheme == ColorScheme::Dark ? darkPalette() : lightPalette());
  }
}

void AppearanceController::applyTextScale(double desktopTextScale) {
  const QScreen *const screen = QGuiApplication::primaryScreen();
  const double remaining =
      remainingTextScale(desktopTextScale, screen != nullptr ? screen->devicePixelRatio() : 1);
  QFont font = QFontDatabase::systemFont(QFontDatabase::GeneralFont);
  const double points = font.pointSizeF();
  if (remaining != fontScale_) {
    // What the toolkit draws by itself, menus and alerts, follows the application's font.
    fontScale_ = remaining;
    if (points > 0) {
      font.setPointSizeF(points * remaining);
    } else {
      font.setPixelSize(qRound(font.pixelSize() * remaining));
    }
    QApplication::setFont(font);
  }
  setTextScale(std::clamp(remaining * textScaleOfFont(points), Appearance::minimumTextScale,
                          Appearance::maximumTextScale));
}

}  // namespace lumiwren
