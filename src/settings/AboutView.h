#pragma once

#include "platform/Bundle.h"

#include <QString>
#include <QWidget>

#include <functional>

namespace lumiwren {

/// What the program is: its icon, name, version and description.
class AboutView : public QWidget {
  Q_OBJECT

public:
  /// `onClose` is called by the Close button, which is the default of its dialog.
  AboutView(const Bundle &bundle, const std::function<void()> &onClose, QWidget *parent = nullptr);

  static QString appVersion(const Bundle &bundle);

protected:
  void changeEvent(QEvent *event) override;
};

}  // namespace lumiwren
