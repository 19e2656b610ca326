#include "settings/ActionEditorView.h"

#include "platform/KeyCodes.h"
#include "settings/InputTypeButton.h"
#include "ui/AccessibleRole.h"
#include "ui/Announcement.h"
#include "ui/BoxedLabel.h"
#include "ui/Fonts.h"
#include "ui/PushButton.h"
#include "ui/Spacing.h"
#include "ui/TextArea.h"
#include "ui/TextField.h"
#include "ui/TextLabel.h"

#include <QAccessible>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QTextDocument>
#include <QVBoxLayout>

#include <algorithm>
#include <limits>
#include <utility>

namespace lumiwren {
namespace {

constexpr CustomAction::HotkeyCombo hotkeyOfNewActions{keyCode::one, modifier::option | modifier::shift};
constexpr int editorWidth = 432;
constexpr int hotkeyBoxWidth = 130;
constexpr int promptLines = 5;
constexpr int promptPadding = 14;  // above and below the lines, together
constexpr int smallestPromptHeight = 44;

/// A column for a field under its title.
QVBoxLayout &addField(QBoxLayout &column, const QString &title) {
  auto *const field = new QVBoxLayout;
  field->setSpacing(spacing::tiny);
  field->addWidget(new TextLabel(title, TextStyle::Subheadline, &SemanticColors::secondary));
  column.addLayout(field);
  return *field;
}

/// The text of a document as it was typed. QTextDocument::toPlainText() makes plain spaces of those that do
/// not break.
std::string typedText(const QTextDocument &document) {
  QString text = document.toRawText();
  text.replace(QChar::ParagraphSeparator, QLatin1Char('\n'));
  text.replace(QChar::LineSeparator, QLatin1Char('\n'));
  return text.toStdString();
}

/// What is pasted can have several lines; a name has one.
void keepOnOneLine(QLineEdit &field, QString text) {
  const auto endsLine = [](QChar character) {
    return character == QLatin1Char('\n') || character == QLatin1Char('\r') ||
           character == QChar::LineSeparator || character == QChar::ParagraphSeparator;
  };
  if (std::any_of(text.cbegin(), text.cend(), endsLine)) {
    const int cursor = field.cursorPosition();
    std::replace_if(text.begin(), text.end(), endsLine, QLatin1Char(' '));
    field.setText(text);
    field.setCursorPosition(cursor);
  }
}

}  // namespace

ActionEditorView::ActionEditorView(std::optional<CustomAction> action, EventMonitors &eventMonitors,
                                   MainQueue &mainQueue, Callbacks callbacks, QWidget *parent)
    : QWidget(parent),
      action_(std::move(action)),
      callbacks_(std::move(callbacks)),
      hotkey_(action_ ? action_->hotkey : hotkeyOfNewActions),
      hotkeyRecorder_(eventMonitors, mainQueue) {
  const QString title = action_ ? QStringLiteral("Edit Action") : QStringLiteral("New Action");
  setAccessibleRole(*this, QAccessible::Dialog);
  setAccessibleName(title);
  auto *const column = new QVBoxLayout(this);
  column->setContentsMargins(spacing::extraLarge, spacing::large, spacing::extraLarge, spacing::extraLarge);
  column->setSpacing(spacing::medium);
  column->addWidget(new TextLabel(title, TextStyle::Title2));
  addNameField(*column);
  addHotkeyRow(*column);
  addInputRow(*column);
  addPromptField(*column);
  addButtons(*column);
  setFocusProxy(nameField_);
  setInputType(action_ ? action_->inputType : CustomAction::InputType::TextSelection);
  updateHotkeyRow();
  updateSaving();
  recordedCombo_ = hotkeyRecorder_.recordedComboChanged.observe([this] { updateHotkeyRow(); });
}

void ActionEditorView::addNameField(QBoxLayout &column) {
  nameField_ = new TextField(QStringLiteral("Name"));
  nameField_->setMaxLength(std::numeric_limits<int>::max());  // What is stored is kept, however long it is.
  nameField_->setPlaceholderText(QStringLiteral("Action name"));
  nameField_->setText(action_ ? QString::fromStdString(action_->name) : QString());
  connect(nameField_, &TextField::textEdited, this,
          [this](const QString &text) { keepOnOneLine(*nameField_, text); });
  addField(column, QStringLiteral("Name")).addWidget(nameField_);
}

void ActionEditorView::addHotkeyRow(QBoxLayout &column) {
  hotkeyBox_ = new BoxedLabel(QString(), TextStyle::Label,
                              {spacing::small, spacing::tiny, spacing::small, spacing::tiny});
  hotkeyBox_->setAccessibleDescription(QStringLiteral("Hotkey"));
  hotkeyBox_->setMinimumWidth(scaledSize(hotkeyBoxWidth));
  hotkeyBox_->setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Expanding);
  const auto button = [](const QString &label) {
    auto *const result = new PushButton(PushButton::Kind::Bordered, label);
    result->setAccessibleDescription(QStringLiteral("Hotkey"));
    return result;
  };
  changeHotkey_ = button(QStringLiteral("Change"));
  saveHotkey_ = button(QStringLiteral("Save"));
  cancelHotkey_ = button(QStringLiteral("Cancel"));
  connect(changeHotkey_, &PushButton::clicked, this, &ActionEditorView::startRecordingHotkey);
  connect(saveHotkey_, &PushButton::clicked, this, &ActionEditorView::saveRecordedHotkey);
  connect(cancelHotkey_, &PushButton::clicked, this, &ActionEditorView::stopRecordingHotkey);
  auto *const row = new QHBoxLayout;
  row->setSpacing(spacing::small);
  row->addWidget(hotkeyBox_);
  row->addWidget(changeHotkey_);
  row->addWidget(saveHotkey_);
  row->addWidget(cancelHotkey_);
  row->addStretch();
  addField(column, QStringLiteral("Hotkey")).addLayout(row);
}

void ActionEditorView::addInputRow(QBoxLayout &column) {
  using InputType = CustomAction::InputType;
  textSelection_ = new InputTypeButton(QStringLiteral("Text Selection"), QStringLiteral("text.cursor"),
                                       QStringLiteral("Uses currently highlighted text from any application"),
                                       [this] { setInputType(InputType::TextSelection); });
  screenCapture_ = new InputTypeButton(QStringLiteral("Screen Capture"), QStringLiteral("camera.viewfinder"),
                                       QStringLiteral("Captures a screen region and extracts text using OCR"),
                                       [this] { setInputType(InputType::ScreenCapture); });
  auto *const row = new QHBoxLayout;
  row->setSpacing(spacing::small);
  row->addWidget(textSelection_, 1);
  row->addWidget(screenCapture_, 1);
  addField(column, QStringLiteral("Input")).addLayout(row);
}

void ActionEditorView::addPromptField(QBoxLayout &column) {
  promptArea_ = new TextArea(QStringLiteral("Prompt"));
  promptArea_->setMinimumHeight(scaledSize(smallestPromptHeight));
  promptArea_->setPlainText(action_ ? QString::fromStdString(action_->prompt) : QString());
  shownPrompt_ = typedText(*promptArea_->document());
  connect(promptArea_, &TextArea::textChanged, this, &ActionEditorView::updateSaving);
  auto &field = addField(column, QStringLiteral("Prompt"));
  field.addWidget(promptArea_, 1);
  const QString hint = QStringLiteral("Use {text} where the selected text should be inserted");
  promptArea_->setAccessibleDescription(hint);
  field.addWidget(new TextLabel(hint, TextStyle::Caption, &SemanticColors::secondary));
  column.setStretch(column.count() - 1, 1);
}

void ActionEditorView::addButtons(QBoxLayout &column) {
  auto *const cancel = new PushButton(PushButton::Kind::Bordered, QStringLiteral("Cancel"));
  save_ = new PushButton(PushButton::Kind::Prominent, QStringLiteral("Save"));
  connect(cancel, &PushButton::clicked, this, [this] { callbacks_.onCancel(); });
  connect(save_, &PushButton::clicked, this, &ActionEditorView::save);
  auto *const row = new QHBoxLayout;
  row->setSpacing(spacing::small);
  row->addStretch();
  row->addWidget(cancel);
  row->addWidget(save_);
  column.addSpacing(spacing::tiny);
  column.addLayout(row);
  for (auto *const button : findChildren<PushButton *>()) {
    button->setAutoDefault(true);  // Return presses what has the keyboard.
  }
}

QSize ActionEditorView::sizeHint() const {
  const int promptHeight = promptLines * promptArea_->fontMetrics().lineSpacing() + promptPadding;
  return {scaledSize(editorWidth),
          QWidget::sizeHint().height() - promptArea_->sizeHint().height() + promptHeight};
}

QString ActionEditorView::hotkeyDisplayString() const {
  if (!isRecordingHotkey_) {
    return QString::fromStdString(hotkey_.displayString());
  }
  const auto &recorded = hotkeyRecorder_.recordedCombo();
  return recorded ? QString::fromStdString(recorded->displayString()) : QStringLiteral("Press keys...");
}

void ActionEditorView::updateHotkeyRow() {
  const bool hasRecorded = isRecordingHotkey_ && hotkeyRecorder_.recordedCombo();
  const QString text = hotkeyDisplayString();
  if (isRecordingHotkey_ && hotkeyBox_->text() != text && QAccessible::isActive()) {
    announce(*hotkeyBox_, text);
  }
  hotkeyBox_->setText(text);
  hotkeyBox_->setColor(isRecordingHotkey_ ? &SemanticColors::secondary : &SemanticColors::primary);
  hotkeyBox_->setActive(isRecordingHotkey_);

  // The keyboard stays in the row while its buttons come and go, on what is next to be pressed.
  const QWidget *const focused = window()->focusWidget();
  const bool hasFocus = focused == changeHotkey_ || focused == saveHotkey_ || focused == cancelHotkey_;
  PushButton *const next = !isRecordingHotkey_ ? changeHotkey_ : hasRecorded ? saveHotkey_ : cancelHotkey_;
  if (next->isHidden()) {
    next->show();
    if (hasFocus) {
      next->setFocus(Qt::OtherFocusReason);
    }
  }
  changeHotkey_->setVisible(!isRecordingHotkey_);
  saveHotkey_->setVisible(hasRecorded);
  cancelHotkey_->setVisible(isRecordingHotkey_);
}

void ActionEditorView::startRecordingHotkey() {
  isRecordingHotkey_ = true;
  hotkeyRecorder_.startRecording();
}

void ActionEditorView::saveRecordedHotkey() {
  hotkey_ = hotkeyRecorder_.recordedCombo().value_or(hotkey_);
  stopRecordingHotkey();
}

void ActionEditorView::stopRecordingHotkey() {
  isRecordingHotkey_ = false;
  hotkeyRecorder_.stopRecording();
}

void ActionEditorView::setInputType(CustomAction::InputType inputType) {
  inputType_ = inputType;
  textSelection_->setSelected(inputType == CustomAction::InputType::TextSelection);
  screenCapture_->setSelected(inputType == CustomAction::InputType::ScreenCapture);
}

std::string ActionEditorView::prompt() const {
  // The document has its own idea of line ends; a prompt that nobody has changed stays as it was.
  const std::string typed = typedText(*promptArea_->document());
  return action_ && typed == shownPrompt_ ? action_->prompt : typed;
}

void ActionEditorView::updateSaving() {
  save_->setEnabled(!promptArea_->document()->isEmpty());
}

void ActionEditorView::save() {
  const std::string name = nameField_->text().toStdString();
  // Saving makes an action of the user's own even of one that came with the program.
  callbacks_.onSave({.id = action_ ? action_->id : UUID::random(),
                     .name = name.empty() ? "Untitled Action" : name,
                     .hotkey = hotkey_,
                     .prompt = prompt(),
                     .inputType = inputType_,
                     .isDefault = false});
}

void ActionEditorView::hideEvent(QHideEvent *event) {
  stopRecordingHotkey();
  QWidget::hideEvent(event);
}

void ActionEditorView::keyPressEvent(QKeyEvent *event) {
  const bool isReturn = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
  if (isReturn && save_->isEnabled()) {
    save();
  } else if (event->key() == Qt::Key_Escape && isRecordingHotkey_) {
    stopRecordingHotkey();
  } else {
    QWidget::keyPressEvent(event);
  }
}

}  // namespace lumiwren
