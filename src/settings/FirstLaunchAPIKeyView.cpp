#include "settings/FirstLaunchAPIKeyView.h"

#include "ui/PushButton.h"
#include "ui/Spacing.h"
#include "ui/SymbolView.h"
#include "ui/TextLabel.h"

#include <QHBoxLayout>
#include <QVBoxLayout>

#include <utility>

namespace lumiwren {
namespace {

constexpr int welcomeWidth = 450;
constexpr int bookSize = 48;
constexpr char keysPage[] = "https://platform.openai.com/api-keys";

QVBoxLayout *makeWelcome() {
  auto *const welcome = new QVBoxLayout;
  welcome->setSpacing(spacing::medium);
  welcome->addWidget(
      new SymbolView(QStringLiteral("character.book.closed.fill"), bookSize, &SemanticColors::accent), 0,
      Qt::AlignHCenter);
  welcome->addWidget(new TextLabel(QStringLiteral("Welcome to Lumiwren"), TextStyle::Title), 0,
                     Qt::AlignHCenter);
  auto *const explanation = new TextLabel(
      QStringLiteral("To get started, enter your OpenAI API key. This key is stored securely in "
                     "your macOS Keychain and is only used to communicate with the OpenAI API."),
      TextStyle::Body, &SemanticColors::secondary);
  explanation->setWordWrap(true);
  explanation->setAlignment(Qt::AlignHCenter);
  welcome->addWidget(explanation);
  return welcome;
}

}  // namespace

FirstLaunchAPIKeyView::FirstLaunchAPIKeyView(const KeyFormServices &services, Workspace &workspace,
                                             std::function<void()> dismiss, QWidget *parent)
    : FormView(welcomeWidth, parent),
      form_(services, AfterError::KeepTestedKey, KeyForm::EyeToolTip::None, std::move(dismiss)) {
  auto *const link = new PushButton(PushButton::Kind::Link, QStringLiteral("Get an API key from OpenAI"));
  auto *const saveButton = new PushButton(PushButton::Kind::Prominent, QStringLiteral("Save & Continue"));
  saveButton->setDefault(true);
  auto *const key = new QVBoxLayout;
  key->setSpacing(spacing::small);
  key->addWidget(new TextLabel(QStringLiteral("API Key"), TextStyle::Subheadline));
  key->addWidget(form_.keyRow());
  key->addWidget(link, 0, Qt::AlignLeft);
  auto *const buttons = new QHBoxLayout;
  buttons->setSpacing(spacing::small);
  buttons->addWidget(form_.testButton());
  buttons->addStretch();
  buttons->addWidget(saveButton);
  auto *const layout = new QVBoxLayout(this);
  layout->setContentsMargins(spacing::page, spacing::page, spacing::page, spacing::page);
  layout->setSpacing(spacing::section);
  layout->addStretch();  // The window may be higher than the form.
  layout->addLayout(makeWelcome());
  layout->addLayout(key);
  layout->addWidget(form_.resultRow());
  layout->addLayout(buttons);
  layout->addStretch();

  connect(link, &QPushButton::clicked, this, [&workspace] { workspace.openURL(keysPage); });
  connect(saveButton, &QPushButton::clicked, &form_, &KeyForm::save);
  const auto enableSave = [this, saveButton] { saveButton->setEnabled(!form_.isEmpty()); };
  connect(&form_, &KeyForm::keyEdited, this, enableSave);
  enableSave();
}

}  // namespace lumiwren
