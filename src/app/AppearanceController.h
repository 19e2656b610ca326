#pragma once

#include "base/Handle.h"
#include "platform/DesktopAppearance.h"

#include <QObject>

namespace lumiwren {

/// Has the whole program look as the user has told the desktop, at once and while windows are open: light or
/// dark, the size of text, motion. Where the toolkit's own palette is not what the user prefers, one of ours
/// takes its place. Main thread; after the application object is made, and gone before it ends.
class AppearanceController : public QObject {
public:
  explicit AppearanceController(DesktopAppearance &appearance);

protected:
  bool eventFilter(QObject *receiver, QEvent *event) override;

private:
  void watchPrimaryScreen();
  void apply(const Appearance &appearance);
  void applyColorScheme(ColorScheme scheme);
  void applyTextScale(double desktopTextScale);

  DesktopAppearance &appearance_;
  ColorScheme scheme_ = ColorScheme::NoPreference;
  bool hasOwnPalette_ = false;
  double fontScale_ = 1;  // of the application's font, against the desktop's
  QMetaObject::Connection screenConnection_;
  Handle observation_;
};

}  // namespace lumiwren
