#include "settings/ActionRow.h"

#include "ui/AccessibleRole.h"
#include "ui/BorderedButton.h"
#include "ui/BoxedLabel.h"
#include "ui/ElidedLabel.h"
#include "ui/FocusRing.h"
#include "ui/PixelGrid.h"
#include "ui/Spacing.h"
#include "ui/SymbolButton.h"
#include "ui/SymbolView.h"

#include <QHBoxLayout>
#include <QKeyEvent>
#include <QPainter>
#include <QVBoxLayout>

#include <utility>

namespace lumiwren {
namespace {

constexpr int rowIconSize = 10;
constexpr int deleteSymbolSize = 12;
constexpr int lineSpacing = 2;
constexpr QMargins badgePadding{5, 2, 5, 2};
constexpr QMargins hotkeyPadding{7, 2, 7, 2};
constexpr qsizetype longestInQuestion = 300;
constexpr double hoverOpacity = 0.05;

QString iconOf(CustomAction::InputType inputType) {
  return inputType == CustomAction::InputType::ScreenCapture ? QStringLiteral("camera.viewfinder")
                                                             : QStringLiteral("text.cursor");
}

QString titleOf(CustomAction::InputType inputType) {
  const auto title = CustomAction::rawValue(inputType);
  return QString::fromUtf8(title.data(), static_cast<qsizetype>(title.size()));
}

/// The name as it is asked about: on one line, and of a length that leaves the buttons on the screen.
QString inQuestion(const CustomAction &action) {
  QString name = QString::fromStdString(action.name).replace(QLatin1Char('\n'), QLatin1Char(' '));
  if (name.size() > longestInQuestion) {
    name.truncate(longestInQuestion - (name.at(longestInQuestion - 1).isHighSurrogate() ? 1 : 0));
    name += QStringLiteral("…");
  }
  return name;
}

/// Keys that move through a list, whatever in a row has the keyboard.
bool movesThroughList(int key) {
  return key == Qt::Key_Up || key == Qt::Key_Down;
}

}  // namespace

ActionRow::ActionRow(const CustomAction &action, Callbacks callbacks, QWidget *parent)
    : QWidget(parent), action_(action), callbacks_(std::move(callbacks)) {
  setAccessibleRole(*this, QAccessible::ListItem);
  auto *const row = new QHBoxLayout(this);
  row->setContentsMargins(spacing::medium, spacing::small, spacing::small, spacing::small);
  row->setSpacing(spacing::small);
  addTexts(*row);
  addButtons(*row);
  setTabStop(false);
  showAction();
}

void ActionRow::addTexts(QBoxLayout &row) {
  name_ = new ElidedLabel(QString(), TextStyle::Label);
  badge_ =
      new BoxedLabel(QStringLiteral("Default"), TextStyle::Badge, badgePadding, &SemanticColors::secondary);
  badge_->setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
  icon_ = new SymbolView(QString(), rowIconSize, &SemanticColors::secondary);
  inputType_ = new TextLabel(QString(), TextStyle::Caption, &SemanticColors::secondary);
  hotkey_ = new BoxedLabel(QString(), TextStyle::Label, hotkeyPadding);
  hotkey_->setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
  auto *const firstLine = new QHBoxLayout;
  firstLine->setSpacing(spacing::small);
  firstLine->addWidget(name_);
  firstLine->addWidget(badge_);
  firstLine->addStretch();
  auto *const secondLine = new QHBoxLayout;
  secondLine->setSpacing(spacing::tiny);
  secondLine->addWidget(icon_);
  secondLine->addWidget(inputType_);
  secondLine->addStretch();
  auto *const lines = new QVBoxLayout;
  lines->setSpacing(lineSpacing);
  lines->addLayout(firstLine);
  lines->addLayout(secondLine);
  row.addLayout(lines, 1);
  row.addWidget(hotkey_);
}

void ActionRow::addButtons(QBoxLayout &row) {
  edit_ = new BorderedButton;
  edit_->setLabel(QStringLiteral("pencil"), QStringLiteral("Edit"));
  delete_ = new SymbolButton(QStringLiteral("trash"), deleteSymbolSize, QStringLiteral("Delete"),
                             [](const SemanticColors &colors) { return colors.secondary; });
  connect(edit_, &BorderedButton::clicked, this, [this] {
    Q_EMIT entered();
    callbacks_.onEdit(action_);
  });
  connect(delete_, &SymbolButton::clicked, this, [this] {
    Q_EMIT entered();
    showDeleteConfirmation();
  });
  for (QPushButton *const button : {static_cast<QPushButton *>(edit_), static_cast<QPushButton *>(delete_)}) {
    button->setAutoDefault(true);  // Return presses what has the keyboard.
    button->installEventFilter(this);
    row.addWidget(button);
  }
}

void ActionRow::setAction(const CustomAction &action) {
  if (action == action_) {
    return;
  }
  action_ = action;
  showAction();
}

void ActionRow::showAction() {
  const QString name = QString::fromStdString(action_.name);
  const QString hotkey = QString::fromStdString(action_.hotkey.displayString());
  name_->setText(name);
  badge_->setVisible(action_.isDefault);
  icon_->setSymbol(iconOf(action_.inputType), &SemanticColors::secondary);
  inputType_->setText(titleOf(action_.inputType));
  hotkey_->setText(hotkey);
  setAccessibleName(name);
  setAccessibleDescription(QStringLiteral("%1, %2").arg(hotkey, inputType_->text()));
  edit_->setAccessibleDescription(name);
  delete_->setAccessibleDescription(name);
}

void ActionRow::setTabStop(bool isTabStop) {
  setFocusPolicy(isTabStop ? Qt::StrongFocus : Qt::ClickFocus);
  edit_->setFocusPolicy(isTabStop ? Qt::TabFocus : Qt::NoFocus);
  delete_->setFocusPolicy(isTabStop ? Qt::TabFocus : Qt::NoFocus);
}

void ActionRow::followInTabOrder(QWidget &previous) {
  setTabOrder(&previous, this);
  setTabOrder(this, edit_);
  setTabOrder(edit_, delete_);
}

void ActionRow::showDeleteConfirmation() {
  if (deleteConfirmation_) {
    return;
  }
  deleteConfirmation_ = new Alert(QStringLiteral("Delete Action"),
                                  QStringLiteral("Are you sure you want to delete \"") + inQuestion(action_) +
                                      QStringLiteral("\"? This action cannot be undone."),
                                  callbacks_.activation, this);
  const int confirm = deleteConfirmation_->addButton(QStringLiteral("Delete"), Alert::Role::Destructive);
  deleteConfirmation_->addButton(QStringLiteral("Cancel"), Alert::Role::Cancel);
  deleteConfirmation_->ask([this, confirm](int answer) {
    if (answer == confirm) {
      callbacks_.onDelete(action_);
    }
  });
}

bool ActionRow::eventFilter(QObject *watched, QEvent *event) {
  if (event->type() == QEvent::KeyPress && movesThroughList(static_cast<QKeyEvent *>(event)->key())) {
    event->ignore();  // Buttons would go to the next button; the list is asked instead.
    return true;
  }
  if (event->type() == QEvent::FocusIn) {
    Q_EMIT entered();
  }
  return QWidget::eventFilter(watched, event);
}

void ActionRow::enterEvent(QEnterEvent *event) {
  update();
  QWidget::enterEvent(event);
}

void ActionRow::leaveEvent(QEvent *event) {
  update();
  QWidget::leaveEvent(event);
}

void ActionRow::focusInEvent(QFocusEvent *event) {
  Q_EMIT entered();
  QWidget::focusInEvent(event);
}

void ActionRow::focusOutEvent(QFocusEvent *event) {
  update();
  QWidget::focusOutEvent(event);
}

void ActionRow::keyPressEvent(QKeyEvent *event) {
  switch (event->key()) {
    case Qt::Key_Return:
    case Qt::Key_Enter:
      callbacks_.onEdit(action_);
      break;
    case Qt::Key_Delete:
    case Qt::Key_Backspace:
      showDeleteConfirmation();
      break;
    default:
      QWidget::keyPressEvent(event);
  }
}

void ActionRow::mousePressEvent(QMouseEvent * /*event*/) {
  // The press is for the row; the window is moved by what is behind the rows.
}

void ActionRow::paintEvent(QPaintEvent * /*event*/) {
  QPainter painter(this);
  painter.setRenderHint(QPainter::Antialiasing);
  if (underMouse()) {
    painter.setPen(Qt::NoPen);
    painter.setBrush(withOpacity(SemanticColors(palette()).primary, hoverOpacity));
    painter.drawRoundedRect(rectOnPixels(painter, rect()), radius::control, radius::control);
  }
  if (showsFocus(*this)) {
    drawFocusRing(painter, *this, rect());
  }
}

}  // namespace lumiwren
