#include "popup/ExplanationPopupView.h"

#include "base/Unicode.h"
#include "popup/ActivatingTextField.h"
#include "popup/ConversationView.h"
#include "popup/FollowUpFieldFrame.h"
#include "popup/KeyablePanel.h"
#include "popup/SourceTextLabel.h"
#include "ui/BorderedButton.h"
#include "ui/Palette.h"
#include "ui/SymbolButton.h"

#include <QHBoxLayout>
#include <QPainter>
#include <QPainterPath>
#include <QScreen>
#include <QTextBoundaryFinder>
#include <QVBoxLayout>

#include <algorithm>
#include <chrono>
#include <utility>

namespace lumiwren {
namespace {

constexpr int maximumOriginalText = 100;  // grapheme clusters
constexpr std::chrono::milliseconds copiedDuration{2000};
constexpr qreal cornerRadius = 12;
constexpr double materialOpacity = 0.96;

}  // namespace

ExplanationPopupView::ExplanationPopupView(PopupState &state, Pasteboard &pasteboard, MainQueue &mainQueue,
                                           Callbacks callbacks)
    : state_(state), pasteboard_(pasteboard), mainQueue_(mainQueue), callbacks_(std::move(callbacks)) {
  setMinimumSize(300, 200);
  conversation_ = new ConversationView(pasteboard_, mainQueue_, this);
  auto *const stack = new QVBoxLayout(this);
  stack->setContentsMargins(0, 0, 0, 0);
  stack->setSpacing(0);
  header_ = makeHeader();
  followUpRow_ = makeFollowUpRow();
  stack->addWidget(header_);
  stack->addSpacing(1);  // a divider
  stack->addWidget(conversation_, 1);
  stack->addSpacing(1);  // a divider
  stack->addWidget(followUpRow_);
  stack->addWidget(makeFooter());

  frame_.setSingleShot(true);
  frame_.setTimerType(Qt::PreciseTimer);
  connect(&frame_, &QTimer::timeout, this, &ExplanationPopupView::refresh);
  reset();
}

ExplanationPopupView::~ExplanationPopupView() = default;

QWidget *ExplanationPopupView::makeHeader() {
  auto *const header = new QWidget(this);
  auto *const row = new QHBoxLayout(header);
  row->setContentsMargins(16, 12, 14, 12);
  row->setSpacing(8);
  sourceText_ = new SourceTextLabel(header);
  auto *const closeButton = new SymbolButton(
      QStringLiteral("xmark.circle.fill"), 14, QStringLiteral("Close"),
      [](const SemanticColors &colors) { return colors.secondary; }, header);
  closeButton->setToolTip(QStringLiteral("Close (Escape)"));
  connect(closeButton, &QPushButton::clicked, this, [this] { callbacks_.onDismiss(); });
  row->addWidget(sourceText_, 1);
  row->addWidget(closeButton, 0, Qt::AlignVCenter);
  return header;
}

QWidget *ExplanationPopupView::makeFollowUpRow() {
  auto *const container = new QWidget(this);
  auto *const row = new QHBoxLayout(container);
  row->setContentsMargins(16, 10, 14, 10);
  row->setSpacing(6);
  followUpField_ = new ActivatingTextField(container);
  followUpField_->setPlaceholderText(QStringLiteral("Ask a follow-up question..."));
  followUpField_->setAccessibleName(QStringLiteral("Follow-up question"));
  connect(followUpField_, &QLineEdit::textChanged, this, &ExplanationPopupView::updateSending);
  connect(followUpField_, &QLineEdit::returnPressed, this, &ExplanationPopupView::sendFollowUp);
  sendButton_ = new SymbolButton(
      QStringLiteral("arrow.up.circle.fill"), 22, QStringLiteral("Send"),
      [this](const SemanticColors &colors) {
        return sendButton_->isEnabled() ? lumiwrenPurple() : withOpacity(colors.secondary, 0.55);
      },
      container);
  connect(sendButton_, &QPushButton::clicked, this, &ExplanationPopupView::sendFollowUp);
  row->addWidget(new FollowUpFieldFrame(followUpField_, container), 1);
  row->addWidget(sendButton_, 0, Qt::AlignVCenter);
  return container;
}

QWidget *ExplanationPopupView::makeFooter() {
  auto *const footer = new QWidget(this);
  auto *const row = new QHBoxLayout(footer);
  row->setContentsMargins(16, 0, 16, 12);
  copyButton_ = new BorderedButton(footer);
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
    copyButton_->setLabel(QStringLiteral("checkmark"), QStringLiteral("Copied!"));
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

void ExplanationPopupView::paintEvent(QPaintEvent * /*event*/) {
  QPainter painter(this);
  painter.setRenderHint(QPainter::Antialiasing);
  const SemanticColors colors(palette());
  const auto *const panel = qobject_cast<const KeyablePanel *>(window());
  const bool isTranslucent = panel && panel->isTranslucent();
  QPainterPath shape;
  shape.addRoundedRect(rect(), cornerRadius, cornerRadius);
  painter.fillPath(shape, withOpacity(colors.windowBackground, isTranslucent ? materialOpacity : 1));
  painter.save();
  painter.setClipPath(shape);
  painter.fillRect(header_->geometry(), withOpacity(colors.windowBackground, 0.5));
  painter.fillRect(0, header_->geometry().bottom() + 1, width(), 1, colors.separator);
  painter.fillRect(0, followUpRow_->geometry().top() - 1, width(), 1, colors.separator);
  painter.restore();
  painter.setPen(QPen(withOpacity(colors.primary, 0.1), 1));
  painter.drawRoundedRect(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5), cornerRadius - 0.5,
                          cornerRadius - 0.5);
}

}  // namespace lumiwren
