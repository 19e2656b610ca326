#pragma once

#include "actions/CustomAction.h"
#include "base/Handle.h"
#include "base/MainQueue.h"
#include "platform/EventMonitors.h"
#include "settings/ActionHotkeyRecorder.h"

#include <QString>
#include <QWidget>

#include <functional>
#include <optional>
#include <string>

class QBoxLayout;

namespace lumiwren {

class BoxedLabel;
class InputTypeButton;
class PushButton;
class TextArea;
class TextField;

/// The form in which an action is made or changed.
class ActionEditorView : public QWidget {
  Q_OBJECT

public:
  struct Callbacks {
    std::function<void(const CustomAction &)> onSave;
    std::function<void()> onCancel;
  };

  /// Without an action: for a new one. Either callback may end the view's life in the next turn of the loop.
  ActionEditorView(std::optional<CustomAction> action, EventMonitors &eventMonitors, MainQueue &mainQueue,
                   Callbacks callbacks, QWidget *parent = nullptr);

  QSize sizeHint() const override;

protected:
  void hideEvent(QHideEvent *event) override;
  void keyPressEvent(QKeyEvent *event) override;

private:
  void addNameField(QBoxLayout &column);
  void addHotkeyRow(QBoxLayout &column);
  void addInputRow(QBoxLayout &column);
  void addPromptField(QBoxLayout &column);
  void addButtons(QBoxLayout &column);

  QString hotkeyDisplayString() const;
  void updateHotkeyRow();
  void startRecordingHotkey();
  void saveRecordedHotkey();
  void stopRecordingHotkey();
  void setInputType(CustomAction::InputType inputType);
  std::string prompt() const;
  void updateSaving();
  void save();

  const std::optional<CustomAction> action_;
  const Callbacks callbacks_;
  CustomAction::HotkeyCombo hotkey_;
  CustomAction::InputType inputType_ = CustomAction::InputType::TextSelection;
  std::string shownPrompt_;  // the stored one as the text area gives it back
  bool isRecordingHotkey_ = false;
  ActionHotkeyRecorder hotkeyRecorder_;

  TextField *nameField_ = nullptr;
  BoxedLabel *hotkeyBox_ = nullptr;
  PushButton *changeHotkey_ = nullptr;
  PushButton *saveHotkey_ = nullptr;
  PushButton *cancelHotkey_ = nullptr;
  InputTypeButton *textSelection_ = nullptr;
  InputTypeButton *screenCapture_ = nullptr;
  TextArea *promptArea_ = nullptr;
  PushButton *save_ = nullptr;
  Handle recordedCombo_;
};

}  // namespace lumiwren
