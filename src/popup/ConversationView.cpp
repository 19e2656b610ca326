#include "popup/ConversationView.h"

#include "markdown/views/MarkdownTextView.h"
#include "ui/ThinScrollBar.h"

#include <QEvent>
#include <QScrollBar>

#include <algorithm>
#include <chrono>

namespace lumiwren {
namespace {

constexpr int padding = 16;
constexpr int rowSpacing = 12;
constexpr int errorPadding = 8;
constexpr std::chrono::milliseconds scrollDelay{100};
constexpr int scrollDuration = 250;  // ms

}  // namespace

ConversationView::ConversationView(MainQueue &mainQueue, QWidget *parent)
    : QScrollArea(parent),
      mainQueue_(mainQueue),
      content_(new QWidget),
      loadingRow_(new LoadingRow(content_)),
      errorRow_(new ErrorRow(content_)) {
  setAccessibleName(QStringLiteral("Conversation"));
  setFrameShape(QFrame::NoFrame);
  setFocusPolicy(Qt::NoFocus);
  setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
  setVerticalScrollBar(new ThinScrollBar(this));
  setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOn);  // Answers keep their width when they outgrow the view.
  setWidget(content_);
  viewport()->setAutoFillBackground(false);
  content_->setAutoFillBackground(false);
  loadingRow_->hide();
  errorRow_->hide();
  scrolling_.setDuration(scrollDuration);
  scrolling_.setStartValue(0.0);
  scrolling_.setEndValue(1.0);
  scrolling_.setEasingCurve(QEasingCurve::InOutQuad);
}

ConversationView::~ConversationView() = default;

void ConversationView::setState(const PopupState &state) {
  const auto &messages = state.conversationHistory();
  const bool lastChanged = setMessages(messages);
  loadingRow_->setVisible(messages.empty() && state.isLoading());
  const bool showsError = state.error() && !loadingRow_->isVisibleTo(content_);
  if (showsError) {
    errorRow_->setText(QString::fromStdString(*state.error()));
    errorRow_->setVerticalPadding(errorPadding, messages.empty() ? errorPadding : 0);
  }
  errorRow_->setVisible(showsError);
  arrange();
  if (!isNew_ && (lastChanged || state.isLoading() != wasLoading_)) {
    scheduleScrolling();
  }
  isNew_ = false;
  wasLoading_ = state.isLoading();
}

bool ConversationView::setMessages(const std::vector<ConversationMessage> &messages) {
  bool lastChanged = rows_.size() != messages.size();
  rows_.resize(std::min(rows_.size(), messages.size()));
  for (std::size_t index = 0; index < messages.size(); ++index) {
    const auto &message = messages[index];
    if (index == rows_.size()) {
      rows_.push_back({});
    }
    auto &row = rows_[index];
    bool changed = false;
    if (!row.view || row.id != message.id) {
      row.id = message.id;
      if (message.isUser()) {
        row.view = std::make_unique<UserBubble>(content_);
      } else {
        row.view = std::make_unique<MarkdownTextView>(content_);
        row.view->setAccessibleName(QStringLiteral("Answer"));
      }
      row.view->show();
      changed = true;
    }
    if (auto *const bubble = qobject_cast<UserBubble *>(row.view.get())) {
      changed |= bubble->setText(QString::fromStdString(message.content));
    } else {
      changed |= static_cast<MarkdownTextView *>(row.view.get())->setMarkdown(message.content);
    }
    lastChanged |= changed && index + 1 == messages.size();
  }
  return lastChanged;
}

void ConversationView::arrange() {
  const int viewWidth = viewport()->width();
  // The scroll bar stands in the right padding.
  const int rowWidth = viewWidth - 2 * padding + verticalScrollBar()->width();
  int y = padding;
  bool isFirst = true;
  const auto place = [&](QWidget &row) {
    if (!isFirst) {
      y += rowSpacing;
    }
    isFirst = false;
    const int height = row.hasHeightForWidth() ? row.heightForWidth(rowWidth) : row.sizeHint().height();
    row.setGeometry(padding, y, rowWidth, height);
    y += height;
  };
  if (loadingRow_->isVisibleTo(content_)) {
    place(*loadingRow_);
  }
  for (const auto &row : rows_) {
    place(*row.view);
  }
  if (errorRow_->isVisibleTo(content_)) {
    place(*errorRow_);
  }
  content_->resize(viewWidth, y + padding);
}

void ConversationView::resizeEvent(QResizeEvent *event) {
  QScrollArea::resizeEvent(event);
  arrange();
}

void ConversationView::reset() {
  scrolling_.stop();
  rows_.clear();
  loadingRow_->hide();
  errorRow_->hide();
  isNew_ = true;
  hasChangedSince_ = false;
  arrange();
  verticalScrollBar()->setValue(0);
}

void ConversationView::scheduleScrolling() {
  hasChangedSince_ = true;
  if (isScrollingScheduled_) {
    return;
  }
  isScrollingScheduled_ = true;
  hasChangedSince_ = false;
  mainQueue_.postAfter(scrollDelay, [weak = weak_.weak()] {
    auto *const self = weak.get();
    if (!self) {
      return;
    }
    self->isScrollingScheduled_ = false;
    if (self->isNew_) {
      return;
    }
    self->scrollToBottom();
    if (self->hasChangedSince_) {
      self->scheduleScrolling();
    }
  });
}

void ConversationView::scrollToBottom() {
  auto *const bar = verticalScrollBar();
  if (scrolling_.state() == QAbstractAnimation::Running || bar->value() == bar->maximum()) {
    return;
  }
  scrolling_.disconnect(this);
  // The bottom moves on while an answer streams in; the animation ends where it is by then.
  connect(&scrolling_, &QVariantAnimation::valueChanged, this,
          [bar, from = bar->value()](const QVariant &part) {
            bar->setValue(from + static_cast<int>((bar->maximum() - from) * part.toDouble()));
          });
  scrolling_.start();
}

}  // namespace lumiwren
