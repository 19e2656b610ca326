#include "settings/KeyForm.h"

#include "ui/Announcement.h"
#include "ui/Spacing.h"

#include <QAccessible>
#include <QHBoxLayout>

#include <utility>

namespace lumiwren {
namespace {

constexpr int eyeSize = 16;
constexpr int resultSymbolSize = 14;

QHBoxLayout *addRow(QWidget &row, int distance) {
  auto *const layout = new QHBoxLayout(&row);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->setSpacing(distance);
  return layout;
}

}  // namespace

KeyForm::KeyForm(const KeyFormServices &services, AfterError afterError, EyeToolTip eyeToolTip,
                 std::function<void()> dismiss)
    : services_(services),
      afterError_(afterError),
      eyeToolTip_(eyeToolTip),
      dismiss_(std::move(dismiss)),
      keyRow_(new QWidget),
      field_(new SecureField(QStringLiteral("API Key"))),
      eye_(new SymbolButton(QStringLiteral("eye"), eyeSize, {}, &SemanticColors::secondary)),
      resultRow_(new QWidget),
      resultSymbol_(
          new SymbolView(QStringLiteral("checkmark.circle.fill"), resultSymbolSize, &SemanticColors::green)),
      resultText_(new TextLabel({}, TextStyle::Caption)),
      testButton_(new PushButton(PushButton::Kind::Bordered, QStringLiteral("Test Connection"))) {
  field_->setPlaceholderText(QStringLiteral("sk-..."));
  auto *const keyLayout = addRow(*keyRow_, spacing::small);
  keyLayout->addWidget(field_);
  keyLayout->addWidget(eye_);
  resultText_->setWordWrap(true);
  auto *const resultLayout = addRow(*resultRow_, spacing::tiny + 2);
  resultLayout->addWidget(resultSymbol_, 0, Qt::AlignTop);
  resultLayout->addWidget(resultText_, 1);
  connect(field_, &QLineEdit::textChanged, this, [this] {
    refresh();
    Q_EMIT keyEdited();
  });
  connect(eye_, &QPushButton::clicked, this, &KeyForm::toggleShowKey);
  connect(testButton_, &QPushButton::clicked, this, &KeyForm::runTest);
  refresh();
}

void KeyForm::loadStoredKey() {
  isLoading_ = true;
  services_.keychain.getAPIKey([weak = anchor_.weak()](const std::optional<Secret> &key) {
    if (auto *const self = weak.get()) {
      self->storedKeyArrived(key);
    }
  });
}

void KeyForm::storedKeyArrived(const std::optional<Secret> &key) {
  isLoading_ = false;
  if (key && !field_->isModified()) {
    field_->setSecret(*key);
  }
  if (std::exchange(savesWhenLoaded_, false)) {
    save();
  }
}

void KeyForm::save() {
  if (isLoading_ && !field_->isModified()) {
    // The field is empty only because the keyring is slow: that must not cost the key it holds.
    savesWhenLoaded_ = true;
    return;
  }
  if (std::exchange(isSaving_, true)) {
    return;
  }
  services_.keychain.saveAPIKey(field_->secret(), [weak = anchor_.weak()](bool saved) {
    auto *const self = weak.get();
    if (!self) {
      return;
    }
    self->isSaving_ = false;
    if (saved) {
      self->dismiss_();
    }
  });
}

void KeyForm::clear() {
  field_->setSecret({});
  field_->setModified(true);  // A stored key that arrives only now has been removed.
  testResult_.reset();
  refresh();
}

void KeyForm::toggleShowKey() {
  field_->setMasked(!field_->isMasked());
  refresh();
}

void KeyForm::runTest() {
  if (isEmpty() || isTesting_) {
    return;
  }
  if (testButton_->window()->focusWidget() == testButton_) {
    field_->setFocus();  // A button that is disabled hands the keyboard to whatever comes next.
  }
  isTesting_ = true;
  testResult_.reset();
  refresh();
  testConnection(services_, field_->secret(), afterError_, [weak = anchor_.weak()](const TestResult &result) {
    if (auto *const self = weak.get()) {
      self->tested(result);
    }
  });
}

void KeyForm::tested(const TestResult &result) {
  testResult_ = result;
  isTesting_ = false;
  refresh();
  if (QAccessible::isActive()) {
    announce(*resultText_, resultText_->text());
  }
}

void KeyForm::refresh() {
  const QString action = field_->isMasked() ? QStringLiteral("Show API Key") : QStringLiteral("Hide API Key");
  eye_->setSymbol(field_->isMasked() ? QStringLiteral("eye") : QStringLiteral("eye.slash"), action);
  if (eyeToolTip_ == EyeToolTip::NamesTheAction) {
    eye_->setToolTip(action);
  }
  const bool isSuccess = testResult_ && testResult_->outcome == TestResult::Case::Success;
  resultRow_->setVisible(testResult_.has_value());
  resultSymbol_->setSymbol(
      isSuccess ? QStringLiteral("checkmark.circle.fill") : QStringLiteral("xmark.circle.fill"),
      isSuccess ? &SemanticColors::green : &SemanticColors::red);
  resultText_->setText(isSuccess     ? QStringLiteral("Connection successful!")
                       : testResult_ ? QString::fromStdString(testResult_->message)
                                     : QString());
  testButton_->setBusy(isTesting_);
  testButton_->setEnabled(!isEmpty() && !isTesting_);
  // The toolkit lets a change rise through nested layouts one event after the other; the form would be seen
  // in a window that is still too small for it.
  for (QWidget *widget = resultRow_; widget != nullptr; widget = widget->parentWidget()) {
    if (widget->layout() != nullptr) {
      widget->layout()->activate();
    }
  }
}

}  // namespace lumiwren
