#pragma once

#include "platform/Workspace.h"
#include "settings/ConnectionTest.h"
#include "settings/FormView.h"
#include "settings/KeyForm.h"

#include <QWidget>

#include <functional>

namespace lumiwren {

/// The form that welcomes a user who has no API key yet.
class FirstLaunchAPIKeyView : public FormView {
  Q_OBJECT

public:
  /// `dismiss` closes the form; it may delete it.
  FirstLaunchAPIKeyView(const KeyFormServices &services, Workspace &workspace, std::function<void()> dismiss,
                        QWidget *parent = nullptr);

  const KeyForm &form() const { return form_; }

private:
  KeyForm form_;
};

}  // namespace lumiwren
