#include "ui/Alert.h"

#include "ui/AppIcon.h"
#include "ui/InputGuard.h"
#include "ui/Spacing.h"
#include "ui/SymbolView.h"
#include "ui/TextLabel.h"

#include <QPointer>
#include <QVBoxLayout>

#include <algorithm>
#include <utility>

namespace lumiwren {
namespace {

constexpr int alertSymbolSize = 40;
constexpr int textWidth = 340;
constexpr int textSpacing = 6;

TextLabel *addText(QVBoxLayout &column, const QString &text, TextStyle style, SemanticColor color) {
  auto *const label = new TextLabel(text, style, color);
  label->setWordWrap(true);
  label->setFixedWidth(textWidth);
  label->setVisible(!text.isEmpty());
  column.addWidget(label);
  return label;
}

}  // namespace

Alert::Alert(const QString &message, const QString &informativeText, Activation activation, QWidget *parent)
    : QDialog(parent, Qt::Dialog | Qt::CustomizeWindowHint | Qt::WindowTitleHint | Qt::WindowCloseButtonHint |
                          Qt::WindowStaysOnTopHint),
      activation_(std::move(activation)),
      buttons_(new QHBoxLayout) {
  setWindowTitle(QStringLiteral("Lumiwren"));
  setWindowIcon(appIcon());
  setAccessibleName(message);
  setAccessibleDescription(informativeText);
  new InputGuard(*this);
  auto *const texts = new QVBoxLayout;
  texts->setSpacing(textSpacing);
  addText(*texts, message, TextStyle::Headline, &SemanticColors::primary);
  addText(*texts, informativeText, TextStyle::Body, &SemanticColors::primary);
  texts->addStretch();
  auto *const top = new QHBoxLayout;
  top->setSpacing(spacing::large);
  top->addWidget(new SymbolView(QStringLiteral("exclamationmark.triangle.fill"), alertSymbolSize,
                                &SemanticColors::orange),
                 0, Qt::AlignTop);
  top->addLayout(texts);
  buttons_->setSpacing(spacing::small);
  buttons_->addStretch();
  auto *const layout = new QVBoxLayout(this);
  layout->setContentsMargins(spacing::extraLarge, spacing::extraLarge, spacing::extraLarge, spacing::large);
  layout->setSpacing(spacing::extraLarge);
  layout->addLayout(top);
  layout->addLayout(buttons_);
  layout->setSizeConstraint(QLayout::SetFixedSize);
}

int Alert::addButton(const QString &label, Role role) {
  const int index = static_cast<int>(choices_.size());
  const auto kind = role == Role::Default       ? PushButton::Kind::Prominent
                    : role == Role::Destructive ? PushButton::Kind::Destructive
                                                : PushButton::Kind::Bordered;
  auto *const button = new PushButton(kind, label);
  connect(button, &QPushButton::clicked, this, [this, index] { answer(index); });
  constexpr int afterTheStretch = 1;
  buttons_->insertWidget(afterTheStretch, button);
  choices_.push_back({button, role});
  return index;
}

void Alert::prepare() {
  PushButton *preferred = nullptr;
  for (const auto &[button, role] : choices_) {
    if (role == Role::Default || (role == Role::Cancel && preferred == nullptr)) {
      preferred = button;
    }
  }
  if (preferred != nullptr) {
    preferred->setDefault(true);
    preferred->setFocus();
  }
}

void Alert::answer(int index) {
  const QPointer<QWidget> asking =
      parentWidget() != nullptr && isActiveWindow() ? parentWidget()->window() : nullptr;
  if (asking && asking->isVisible()) {
    activation_.handOver(*asking);
  }
  done(index);
  // Not every window manager leaves the keyboard with the window that has asked, or puts it in front again.
  if (asking && asking->isVisible()) {
    activation_.activate(*asking);
  }
}

int Alert::run() {
  prepare();
  setModal(true);
  return exec();
}

void Alert::ask(std::function<void(int)> answered) {
  prepare();
  setAttribute(Qt::WA_DeleteOnClose);
  connect(this, &QDialog::finished, this, std::move(answered));
  setWindowModality(Qt::WindowModal);
  show();
}

void Alert::reject() {
  const auto cancel = std::find_if(choices_.begin(), choices_.end(),
                                   [](const Choice &choice) { return choice.role == Role::Cancel; });
  answer(cancel == choices_.end() ? -1 : static_cast<int>(cancel - choices_.begin()));
}

void Alert::showEvent(QShowEvent *event) {
  QDialog::showEvent(event);
  activation_.activate(*this);
}

}  // namespace lumiwren
