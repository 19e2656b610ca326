#include "popup/ExplanationPopupView.h"

#include "base/Unicode.h"
#include "popup/ActivatingTextField.h"
#include "popup/ConversationView.h"
#include "popup/FollowUpFieldFrame.h"
#include "popup/KeyablePanel.h"
#include "popup/SourceTextLabel.h"
#include "ui/BorderedButton.h"
#include "ui/DevicePixels.h"
#include "ui/Palette.h"
#include "ui/SymbolButton.h"

#include <QHBoxLayout>
#include <QPainter>
#include <QPainterPath>
#include <QScreen>
#include <QTextBoundaryFinder>
#include <QVBoxLayout>
#include <QWidgetItem>

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <iterator>
#include <utility>

namespace lumiwren {
namespace {

constexpr int maximumOriginalText = 100;  // grapheme clusters
constexpr std::chrono::milliseconds copiedDuration{2000};
constexpr double materialOpacity = 0.96;
constexpr double headerOpacity = 0.5;
constexpr double popupOutlineOpacity = 0.1;
constexpr int symbolPadding = 2;  // that a symbol's button adds around it, to be hit more easily

/// A button in the place of its symbol: what the button is larger does not move anything else.
class SymbolItem : public QWidgetItem {
public:
  explicit SymbolItem(SymbolButton *button) : QWidgetItem(button) {}

  QSize sizeHint() const override { return symbolSize(); }
  QSize minimumSize() const override { return symbolSize(); }
  QSize maximumSize() const override { return {symbolSize().width(), QWIDGETSIZE_MAX}; }
  Qt::Orientations expandingDirections() const override { return {}; }
  void setGeometry(const QRect &rect) override {
    const QSize size = widget()->sizeHint();
    widget()->setGeometry(rect.x() + (rect.width() - size.width()) / 2,
                          rect.y() + (rect.height() - size.height()) / 2, size.width(), size.height());
  }

private:
  QSize symbolSize() const {
    const QMargins padding(symbolPadding, symbolPadding, symbolPadding, symbolPadding);
    return widget()->sizeHint().shrunkBy(padding);
  }
};

}  // namespace

ExplanationPopupView::ExplanationPopupView(PopupState &state, Pasteboard &pasteboard, MainQueue &mainQueue,
                                           Callbacks callbacks)
    : state_(state), pasteboard_(pasteboard), mainQueue_(mainQueue), callbacks_(std::move(callbacks)) {
  setMinimumSize(300, 200);
  auto *const stack = new QVBoxLayout(this);
  stack->setContentsMargins(0, 0, 0, 0);
  stack->setSpacing(0);
  // In the order in which they are read aloud.
  header_ = makeHeader();
  conversation_ = new ConversationView(pasteboard_, mainQueue_, this);
  followUpRow_ = makeFollowUpRow();
  stack->addWidget(header_);
  stack->addSpacing(1);  // a divider
  stack->addWidget(conversation_, 1);
  stack->addSpacing(1);  // a divider
  stack->addWidget(followUpRow_);
  stack->addWidget(makeFooter());
  QWidget *const order[] = {closeButton_, conversation_, followUpField_, sendButton_, copyButton_};
  for (std::size_t index = 1; index < std::size(order); ++index) {
    setTabOrder(order[index - 1], order[index]);
  }

  frame_.setSingleShot(true);
  frame_.setTimerType(Qt::PreciseTimer);
  connect(&frame_, &QTimer::timeout, this, &ExplanationPopupView::refresh);
  reset();
}

ExplanationPopupView::~ExplanationPopupView() = default;

QWidget *ExplanationPopupView::makeHeader() {
  auto *const header = new QWidget(this);
  auto *const row = new QHBoxLayout(header);
  row->setContentsMargins(16, 12, 16, 12);
  row->setSpacing(8);
  sourceText_ = new SourceTextLabel(header);
  closeButton_ = new SymbolButton(
      QStringLiteral("xmark.circle.fill"), 14, QStringLiteral("Close"),
      [](const SemanticColors &colors) { return colors.secondary; }, header);
  closeButton_->setAutoDefault(true);  // Return presses it too.
  closeButton_->setToolTip(QStringLiteral("Close (Escape)"));
  connect(closeButton_, &QPushButton::clicked, this, [this] { callbacks_.onDismiss(); });
  row->addWidget(sourceText_, 1);
  row->addItem(new SymbolItem(closeButton_));
  return header;
}

QWidget *ExplanationPopupView::makeFollowUpRow() {
  auto *const container = new QWidget(this);
  auto *const row = new QHBoxLayout(container);
  row->setContentsMargins(16, 10, 16, 10);
  row->setSpacing(8);
  followUpField_ = new ActivatingTextField(container);
  followUpField_->setPlaceholderText(QStringLiteral("Ask a follow-up question..."));
  followUpField_->setAccessibleName(QStringLiteral("Follow-up question"));
  connect(followUpField_, &QLineEdit::textChanged, this, &ExplanationPopupView::updateSending);
  connect(followUpField_, &ActivatingTextField::copyElsewhere, this,
          [this] { conversation_->copySelection(); });
  connect(followUpField_, &QLineEdit::returnPressed, this, &ExplanationPopupView::sendFollowUp);
  auto *const frame = new FollowUpFieldFrame(followUpField_, container);
  sendButton_ = new SymbolButton(
      QStringLiteral("arrow.up.circle.fill"), 22, QStringLiteral("Send"),
      [this](const SemanticColors &colors) {
        return sendButton_->isEnabled() ? colors.accent : colors.secondary;
      },
      container);
  sendButton_->setAutoDefault(true);
  connect(sendButton_, &QPushButton::clicked, this, &ExplanationPopupView::sendFollowUp);
  row->addWidget(frame, 1);
  row->addItem(new SymbolItem(sendButton_));
  return container;
}

QWidget *ExplanationPopupView::makeFooter() {
  auto *const footer = new QWidget(this);
  auto *const row = new QHBoxLayout(footer);
  row->setContentsMargins(16, 0, 16, 12);
  copyButton_ = new BorderedButton(footer);
  copyButton_->setAutoDefault(true);
  connect(copyButton_, &QPushButton::clicked, this, &ExplanationPopupView::copyAll);
  row->addWidget(copyButton_);
  row->addStretch();
  return footer;
}

QString ExplanationPopupView::truncatedOriginalText(const std::string &originalText) {
  // A text of many megabytes must not be converted for the sake of its first characters. A cluster may be
  // long, but not this long on average.
  constexpr std::size_t enough = std::size_t{64} * maximumOriginalText;
  auto text =
      QString::fromUtf8(originalText.data(), static_cast<qsizetype>(std::min(originalText.size(), enough)));
  QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, text);
  for (int count = 0; count < maximumOriginalText; ++count) {
    if (finder.toNextBoundary() < 0) {
      return text;
    }
  }
  return finder.position() == text.size() ? text : text.left(finder.position()) + QStringLiteral("...");
}

std::string ExplanationPopupView::allContent(const std::vector<ConversationMessage> &history) {
  std::string content;
  for (const auto &message : history) {
    if (message.role == "assistant") {
      content += "\n\n" + message.content;
    }
  }
  return std::string(unicode::trimWhitespace(content));
}

void ExplanationPopupView::stateChanged() {
  if (frame_.isActive()) {
    return;
  }
  const qreal rate = screen() ? screen()->refreshRate() : 60;
  const auto frameDuration = static_cast<qint64>(1000 / std::max(rate, 1.0));
  frame_.start(static_cast<int>(std::max<qint64>(0, frameDuration - sinceRefresh_.elapsed())));
}

void ExplanationPopupView::refresh() {
  frame_.stop();
  sinceRefresh_.start();
  sourceText_->setText(truncatedOriginalText(state_.originalText()));
  conversation_->setState(state_);
  followUpField_->setDisabledWhileBusy(state_.isLoading());
  updateSending();
}

void ExplanationPopupView::reset() {
  followUpField_->clear();
  setCopied(false);
  conversation_->reset();
  updateSending();
}

void ExplanationPopupView::updateSending() {
  sendButton_->setEnabled(!followUpField_->text().isEmpty() && !state_.isLoading());
  followUpRow_->update();
}

void ExplanationPopupView::sendFollowUp() {
  if (followUpField_->text().isEmpty() || state_.isLoading()) {
    return;
  }
  followUpField_->commitPreedit();
  if (sendButton_->hasFocus()) {
    followUpField_->setFocus(Qt::OtherFocusReason);  // The button is about to be disabled.
  }
  const auto question = followUpField_->text().toStdString();
  followUpField_->clear();
  callbacks_.onSendFollowUp(question);
}

void ExplanationPopupView::copyAll() {
  pasteboard_.setString(allContent(state_.conversationHistory()), PasteboardLifetime::Lasting);
  setCopied(true);
  mainQueue_.postAfter(copiedDuration, [weak = weak_.weak(), showing = showing_] {
    if (auto *const self = weak.get(); self && self->showing_ == showing) {
      self->setCopied(false);
    }
  });
}

void ExplanationPopupView::setCopied(bool copied) {
  if (copied) {
    copyButton_->setLabel(QStringLiteral("checkmark"), QStringLiteral("Copied!"), LabelChange::CrossFade);
  } else {
    copyButton_->setLabel(QStringLiteral("doc.on.doc"), QStringLiteral("Copy Result"));
  }
}

void ExplanationPopupView::showEvent(QShowEvent *event) {
  ++showing_;
  observation_ = state_.observe([this] { stateChanged(); });
  refresh();
  QWidget::showEvent(event);
}

void ExplanationPopupView::hideEvent(QHideEvent *event) {
  observation_.reset();
  frame_.stop();
  QWidget::hideEvent(event);
}

bool ExplanationPopupView::focusNextPrevChild(bool next) {
  // Texts in the conversation take the focus by a click; the keyboard goes on from the conversation.
  const auto *const focused = window()->focusWidget();
  if (focused != conversation_ && conversation_->isAncestorOf(focused)) {
    conversation_->setFocus(next ? Qt::TabFocusReason : Qt::BacktabFocusReason);
    if (!next) {
      return true;
    }
  }
  return QWidget::focusNextPrevChild(next);
}

void ExplanationPopupView::paintEvent(QPaintEvent * /*event*/) {
  QPainter painter(this);
  const SemanticColors colors(palette());
  const auto *const panel = qobject_cast<const KeyablePanel *>(window());
  const bool isTranslucent = panel && panel->isTranslucent();
  const DevicePixels device(painter);
  const int line = device.hairline();
  const QRect bounds = device.rect(rect());
  const auto strip = [&](int top, int bottom) {
    QRect result = device.rect(QRectF(0, top, width(), bottom - top));
    return QRect(bounds.left(), result.top(), bounds.width(), result.height());
  };
  const auto divider = [&](int y) {
    QRect result = strip(y, y + 1);
    result.setHeight(line);
    return result;
  };
  const double radius = KeyablePanel::cornerRadius * device.scale();
  QPainterPath inner;
  inner.addRoundedRect(bounds.adjusted(line, line, -line, -line), radius - line, radius - line);
  QPainterPath shape;
  if (isTranslucent) {
    shape.addRoundedRect(bounds, radius, radius);
  } else {
    // The corners are cut to whole pixels; the outline's colour reaches into all that may be left there.
    shape.addRect(bounds);
  }
  QPainterPath outline = shape;
  outline.addPath(inner);

  painter.setRenderHint(QPainter::Antialiasing);
  painter.fillPath(shape, withOpacity(colors.windowBackground, isTranslucent ? materialOpacity : 1));
  painter.save();
  painter.setClipPath(shape);
  painter.fillRect(strip(0, header_->geometry().bottom() + 1),
                   withOpacity(colors.windowBackground, headerOpacity));
  painter.fillRect(divider(header_->geometry().bottom() + 1), colors.separator);
  painter.fillRect(divider(followUpRow_->geometry().top() - 1), colors.separator);
  painter.restore();
  painter.fillPath(outline, withOpacity(colors.primary, popupOutlineOpacity));
}

}  // namespace lumiwren
