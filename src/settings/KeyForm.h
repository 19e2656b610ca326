#pragma once

#include "base/Weak.h"
#include "settings/ConnectionTest.h"
#include "settings/TestResult.h"
#include "ui/PushButton.h"
#include "ui/SecureField.h"
#include "ui/SymbolButton.h"
#include "ui/SymbolView.h"
#include "ui/TextLabel.h"

#include <QObject>
#include <QWidget>

#include <functional>
#include <optional>

namespace lumiwren {

/// What the forms for the API key have in common: the field with the button that shows and hides the key, the
/// connection test and its result. The form that owns it lays its parts out.
class KeyForm : public QObject {
  Q_OBJECT

public:
  enum class EyeToolTip { None, NamesTheAction };

  /// `dismiss` closes the form; it is called when the key has been saved.
  KeyForm(const KeyFormServices &services, AfterError afterError, EyeToolTip eyeToolTip,
          std::function<void()> dismiss);

  QWidget *keyRow() { return keyRow_; }
  QWidget *resultRow() { return resultRow_; }
  PushButton *testButton() { return testButton_; }
  SecureField &field() { return *field_; }

  bool isEmpty() const { return field_->text().isEmpty(); }
  const std::optional<TestResult> &testResult() const { return testResult_; }
  bool isTesting() const { return isTesting_; }

  /// Copies the stored key into the field, unless something has been typed before it is there.
  void loadStoredKey();
  /// Stores the key as it was typed, and dismisses the form when that has succeeded.
  void save();
  void clear();

Q_SIGNALS:
  void keyEdited();

private:
  void toggleShowKey();
  void runTest();
  void storedKeyArrived(const std::optional<Secret> &key);
  void tested(const TestResult &result);
  void refresh();

  const KeyFormServices services_;
  const AfterError afterError_;
  const EyeToolTip eyeToolTip_;
  const std::function<void()> dismiss_;
  QWidget *const keyRow_;
  SecureField *const field_;
  SymbolButton *const eye_;
  QWidget *const resultRow_;
  SymbolView *const resultSymbol_;
  TextLabel *const resultText_;
  PushButton *const testButton_;
  bool isTesting_ = false;
  std::optional<TestResult> testResult_;
  bool isLoading_ = false;  // the stored key is on its way
  bool isSaving_ = false;
  bool savesWhenLoaded_ = false;
  WeakAnchor<KeyForm> anchor_{this};
};

}  // namespace lumiwren
