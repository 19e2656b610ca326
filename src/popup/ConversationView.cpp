#include "popup/ConversationView.h"

#include "base/Memory.h"
#include "markdown/views/MarkdownTextView.h"
#include "ui/Announcement.h"
#include "ui/FocusRing.h"
#include "ui/Motion.h"
#include "ui/ThinScrollBar.h"

#include <QAccessible>
#include <QCursor>
#include <QEvent>
#include <QKeyEvent>
#include <QPainter>
#include <QScrollBar>

#include <algorithm>
#include <chrono>

namespace lumiwren {
namespace {

constexpr int conversationPadding = 16;
constexpr int rowSpacing = 12;
constexpr int errorPadding = 8;
constexpr std::chrono::milliseconds scrollDelay{100};
constexpr int scrollDuration = 250;  // ms
constexpr std::chrono::milliseconds dragScrollInterval{30};
constexpr int largeText = 100'000;  // in UTF-16 units

}  // namespace

ConversationView::ConversationView(Pasteboard &pasteboard, MainQueue &mainQueue, QWidget *parent)
    : QScrollArea(parent),
      pasteboard_(pasteboard),
      mainQueue_(mainQueue),
      content_(new QWidget),
      loadingRow_(new LoadingRow(content_)),
      errorRow_(new ErrorRow(content_)),
      announcer_([this](const QString &text) { announce(*this, text); }) {
  setAccessibleName(QStringLiteral("Conversation"));
  setFrameShape(QFrame::NoFrame);
  setFocusPolicy(Qt::TabFocus);
  setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
  setVerticalScrollBar(new ThinScrollBar(this));
  setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOn);  // Answers keep their width when they outgrow the view.
  setWidget(content_);
  viewport()->setAutoFillBackground(false);
  content_->setAutoFillBackground(false);
  loadingRow_->hide();
  errorRow_->hide();
  connectText(errorRow_->text());
  connect(verticalScrollBar(), &QScrollBar::actionTriggered, this, [this] {
    // Only what a user does arrives here.
    scrolling_.stop();
    isFollowing_ = verticalScrollBar()->sliderPosition() == verticalScrollBar()->maximum();
  });
  scrolling_.setDuration(scrollDuration);
  scrolling_.setStartValue(0.0);
  scrolling_.setEndValue(1.0);
  scrolling_.setEasingCurve(QEasingCurve::InOutQuad);
  dragScrolling_.setInterval(dragScrollInterval);
  connect(&dragScrolling_, &QTimer::timeout, this, [this] {
    auto *const bar = verticalScrollBar();
    bar->setValue(bar->value() + dragDistance_);
    if (dragged_) {
      dragged_->dragTo(dragged_->mapFromGlobal(QCursor::pos()));
    }
  });
}

ConversationView::~ConversationView() = default;

void ConversationView::setState(const PopupState &state) {
  const auto &messages = state.conversationHistory();
  const bool lastChanged = setMessages(messages);
  loadingRow_->setVisible(messages.empty() && state.isLoading());
  const bool showsError = state.error() && !loadingRow_->isVisibleTo(content_);
  const QString error = showsError ? QString::fromStdString(*state.error()) : QString();
  if (showsError) {
    errorRow_->setText(error);
    errorRow_->setVerticalPadding(errorPadding, messages.empty() ? errorPadding : 0);
  }
  errorRow_->setVisible(showsError);
  arrange();
  if (QAccessible::isActive()) {
    announcer_.update(messages.empty() || messages.back().isUser() ? nullptr : rows_.back().text,
                      state.isLoading(), error);
  }
  if (!isNew_ && (lastChanged || state.isLoading() != wasLoading_)) {
    scheduleScrolling();
  }
  isNew_ = false;
  wasLoading_ = state.isLoading();
}

ConversationView::Row ConversationView::makeRow(const ConversationMessage &message) {
  Row row{.id = message.id, .view = nullptr};
  if (message.isUser()) {
    auto bubble = std::make_unique<UserBubble>(content_);
    row.text = &bubble->text();
    row.view = std::move(bubble);
  } else {
    auto answer = std::make_unique<MarkdownTextView>(content_);
    answer->setAccessibleName(QStringLiteral("Answer"));
    row.text = answer.get();
    row.view = std::move(answer);
  }
  connectText(*row.text);
  return row;
}

void ConversationView::connectText(SelectableTextView &text) {
  connect(&text, &SelectableTextView::copyRequested, this, [this](const QString &copied) {
    pasteboard_.setString(copied.toStdString(), PasteboardLifetime::Lasting);
  });
  connect(&text, &SelectableTextView::grown, this, [this] {
    arrange();
    scheduleScrolling();
  });
  connect(&text, &SelectableTextView::selectionStarted, this, [this, &text] {
    // There is one selection in a conversation.
    for (const auto &row : rows_) {
      if (row.text != &text) {
        row.text->clearSelection();
      }
    }
    if (&errorRow_->text() != &text) {
      errorRow_->text().clearSelection();
    }
  });
  connect(&text, &SelectableTextView::selectionDragged, this, [this, &text](QPoint pointer) {
    dragged_ = &text;
    scrollTowards(pointer);
  });
  connect(&text, &SelectableTextView::selectionEnded, &dragScrolling_, &QTimer::stop);
}

bool ConversationView::setMessages(const std::vector<ConversationMessage> &messages) {
  bool lastChanged = rows_.size() != messages.size();
  for (std::size_t index = 0; index < messages.size(); ++index) {
    const auto &message = messages[index];
    if (index < rows_.size() && rows_[index].id != message.id) {
      dragged_ = nullptr;
      rows_.resize(index);
    }
    bool changed = index == rows_.size();
    if (changed) {
      rows_.push_back(makeRow(message));
      isFollowing_ = true;
    }
    auto *const view = rows_[index].view.get();
    if (auto *const bubble = qobject_cast<UserBubble *>(view)) {
      changed |= bubble->setText(QString::fromStdString(message.content));
    } else {
      changed |= static_cast<MarkdownTextView *>(view)->setMarkdown(message.content);
    }
    lastChanged |= changed && index + 1 == messages.size();
  }
  if (rows_.size() > messages.size()) {
    dragged_ = nullptr;
    rows_.resize(messages.size());
  }
  return lastChanged;
}

void ConversationView::arrange() {
  const int viewWidth = viewport()->width();
  // The scroll bar stands in the right padding.
  const int rowWidth = viewWidth - 2 * conversationPadding + verticalScrollBar()->width();
  int y = conversationPadding;
  bool isFirst = true;
  const auto place = [&](QWidget &row) {
    if (!isFirst) {
      y += rowSpacing;
    }
    isFirst = false;
    const int height = row.hasHeightForWidth() ? row.heightForWidth(rowWidth) : row.sizeHint().height();
    row.setGeometry(conversationPadding, y, rowWidth, height);
    y += height;
  };
  if (loadingRow_->isVisibleTo(content_)) {
    place(*loadingRow_);
  }
  for (const auto &row : rows_) {
    place(*row.view);
    row.view->show();  // Not before it has its width, for which it is laid out.
  }
  if (errorRow_->isVisibleTo(content_)) {
    place(*errorRow_);
  }
  content_->resize(viewWidth, y + conversationPadding);
}

void ConversationView::changeEvent(QEvent *event) {
  if (event->type() == QEvent::FontChange) {
    // When the rows have changed theirs.
    mainQueue_.post([weak = weak_.weak()] {
      if (auto *const self = weak.get()) {
        self->arrange();
      }
    });
  }
  QScrollArea::changeEvent(event);
}

void ConversationView::resizeEvent(QResizeEvent *event) {
  const bool wasAtBottom = isAtBottom() && isFollowing_;
  QScrollArea::resizeEvent(event);
  arrange();
  if (wasAtBottom && verticalScrollBar()->value() > 0) {
    verticalScrollBar()->setValue(verticalScrollBar()->maximum());
  }
}

void ConversationView::focusInEvent(QFocusEvent *event) {
  QScrollArea::focusInEvent(event);
  viewport()->update();
}

void ConversationView::focusOutEvent(QFocusEvent *event) {
  QScrollArea::focusOutEvent(event);
  viewport()->update();
}

void ConversationView::paintEvent(QPaintEvent * /*event*/) {
  if (showsFocus(*this)) {
    QPainter painter(viewport());
    painter.setRenderHint(QPainter::Antialiasing);
    drawFocusRing(painter, *this, viewport()->rect().adjusted(2, 2, -2, -2));
  }
}

void ConversationView::keyPressEvent(QKeyEvent *event) {
  auto *const bar = verticalScrollBar();
  const auto scroll = [&](QAbstractSlider::SliderAction action) { bar->triggerAction(action); };
  switch (event->key()) {
    case Qt::Key_Home:
      scroll(QAbstractSlider::SliderToMinimum);
      break;
    case Qt::Key_End:
      scroll(QAbstractSlider::SliderToMaximum);
      break;
    case Qt::Key_Space:
      scroll(event->modifiers().testFlag(Qt::ShiftModifier) ? QAbstractSlider::SliderPageStepSub
                                                            : QAbstractSlider::SliderPageStepAdd);
      break;
    default:
      if (!event->matches(QKeySequence::Copy) || !copySelection()) {
        QScrollArea::keyPressEvent(event);
      }
  }
}

void ConversationView::reset() {
  scrolling_.stop();
  dragScrolling_.stop();
  dragged_ = nullptr;
  const bool wasLarge =
      std::any_of(rows_.begin(), rows_.end(), [](const Row &row) { return row.text->length() > largeText; });
  rows_.clear();
  if (wasLarge) {
    releaseFreedMemory();
  }
  loadingRow_->hide();
  errorRow_->hide();
  announcer_.reset();
  isNew_ = true;
  isFollowing_ = true;
  hasChangedSince_ = false;
  arrange();
  verticalScrollBar()->setValue(0);
}

bool ConversationView::copySelection() {
  const auto copyFrom = [](SelectableTextView &text) {
    if (!text.hasSelection()) {
      return false;
    }
    text.copy();
    return true;
  };
  return std::any_of(rows_.begin(), rows_.end(), [&](const Row &row) { return copyFrom(*row.text); }) ||
         copyFrom(errorRow_->text());
}

bool ConversationView::isAtBottom() const {
  return verticalScrollBar()->value() == verticalScrollBar()->maximum();
}

void ConversationView::scrollTowards(QPoint pointer) {
  const int y = viewport()->mapFromGlobal(pointer).y();
  dragDistance_ = y < 0 ? y : y > viewport()->height() ? y - viewport()->height() : 0;
  if (dragDistance_ == 0) {
    dragScrolling_.stop();
  } else if (!dragScrolling_.isActive()) {
    isFollowing_ = false;
    dragScrolling_.start();
  }
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
    if (self->isFollowing_) {
      self->scrollToBottom();
    }
    if (self->hasChangedSince_) {
      self->scheduleScrolling();
    }
  });
}

void ConversationView::scrollToBottom() {
  auto *const bar = verticalScrollBar();
  if (isScrolling() || bar->value() == bar->maximum()) {
    return;
  }
  if (reducesMotion()) {
    bar->setValue(bar->maximum());
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
