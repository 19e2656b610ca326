#pragma once

#include "platform/Bundle.h"
#include "settings/FormView.h"

#include <QString>
#include <QWidget>

#include <functional>

namespace lumiwren {

/// What the program is: its icon, name, version and description.
class AboutView : public FormView {
  Q_OBJECT

public:
  /// `onClose` is called by the Close button, which is the default of its dialog.
  AboutView(const Bundle &bundle, const std::function<void()> &onClose, QWidget *parent = nullptr);

  static QString appVersion(const Bundle &bundle);
};

}  // namespace lumiwren
