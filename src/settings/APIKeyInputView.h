#pragma once

#include "settings/ConnectionTest.h"
#include "settings/FormView.h"
#include "settings/KeyForm.h"
#include "settings/TestResult.h"
#include "ui/PushButton.h"

#include <QWidget>

#include <functional>

namespace lumiwren {

/// The form of the settings for the API key: shows the stored key, tests, saves and removes it. Made anew for
/// each showing. Return saves, Escape cancels (see QDialog, in which it stands).
class APIKeyInputView : public FormView {
  Q_OBJECT

public:
  using TestResult = lumiwren::TestResult;

  /// `dismiss` closes the form; it may delete it.
  APIKeyInputView(const KeyFormServices &services, const std::function<void()> &dismiss,
                  QWidget *parent = nullptr);

  const KeyForm &form() const { return form_; }

private:
  void removeKey();
  void refresh();

  KeychainQueue &keychain_;
  KeyForm form_;
  PushButton *const removeButton_;
  bool isRemoving_ = false;
  Handle observation_;
  WeakAnchor<APIKeyInputView> anchor_{this};
};

}  // namespace lumiwren
