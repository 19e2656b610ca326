#include "settings/APIKeyInputView.h"

#include "ui/Divider.h"
#include "ui/Spacing.h"
#include "ui/TextLabel.h"

#include <QHBoxLayout>
#include <QVBoxLayout>

namespace lumiwren {
namespace {

constexpr int keyFormWidth = 400;

QVBoxLayout *makeHeader() {
  auto *const header = new QVBoxLayout;
  header->setSpacing(spacing::tiny);
  header->addWidget(new TextLabel(QStringLiteral("OpenAI API Key"), TextStyle::Headline));
  auto *const explanation = new TextLabel(
      QStringLiteral("Enter your OpenAI API key to use Lumiwren. Your key is stored securely in "
                     "the macOS Keychain."),
      TextStyle::Caption, &SemanticColors::secondary);
  explanation->setWordWrap(true);
  header->addWidget(explanation);
  return header;
}

}  // namespace

APIKeyInputView::APIKeyInputView(const KeyFormServices &services, const std::function<void()> &dismiss,
                                 QWidget *parent)
    : FormView(keyFormWidth, parent),
      keychain_(services.keychain),
      form_(services, AfterError::RestorePreviousKey, KeyForm::EyeToolTip::NamesTheAction, dismiss),
      removeButton_(new PushButton(PushButton::Kind::Destructive, QStringLiteral("Remove Key"))) {
  auto *const cancelButton = new PushButton(PushButton::Kind::Bordered, QStringLiteral("Cancel"));
  auto *const saveButton = new PushButton(PushButton::Kind::Prominent, QStringLiteral("Save"));
  saveButton->setDefault(true);
  auto *const buttons = new QHBoxLayout;
  buttons->setSpacing(spacing::small);
  buttons->addWidget(removeButton_);
  buttons->addStretch();
  buttons->addWidget(cancelButton);
  buttons->addWidget(saveButton);
  auto *const layout = new QVBoxLayout(this);
  layout->setContentsMargins(spacing::section, spacing::section, spacing::section, spacing::section);
  layout->setSpacing(spacing::extraLarge);
  layout->addLayout(makeHeader());
  layout->addWidget(form_.keyRow());
  layout->addWidget(form_.resultRow());
  layout->addWidget(form_.testButton(), 0, Qt::AlignLeft);
  layout->addWidget(new Divider);
  layout->addLayout(buttons);

  connect(removeButton_, &QPushButton::clicked, this, &APIKeyInputView::removeKey);
  connect(cancelButton, &QPushButton::clicked, this, dismiss);
  connect(saveButton, &QPushButton::clicked, &form_, &KeyForm::save);
  observation_ = keychain_.observe([this] { refresh(); });
  refresh();
  form_.loadStoredKey();
}

void APIKeyInputView::removeKey() {
  form_.field().setFocus();  // The button may be about to vanish; the keyboard is not for what comes next.
  isRemoving_ = true;
  refresh();
  keychain_.deleteAPIKey([weak = anchor_.weak()] {
    if (auto *const self = weak.get()) {
      self->isRemoving_ = false;
      self->refresh();
    }
  });
  form_.clear();
}

void APIKeyInputView::refresh() {
  removeButton_->setVisible(keychain_.holdsKey());
  removeButton_->setEnabled(!isRemoving_);
}

}  // namespace lumiwren
