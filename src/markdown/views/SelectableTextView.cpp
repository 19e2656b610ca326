#include "markdown/views/SelectableTextView.h"

#include "markdown/views/SelectableTextAccessible.h"

#include <QAccessible>
#include <QApplication>
#include <QClipboard>
#include <QContextMenuEvent>
#include <QDesktopServices>
#include <QEvent>
#include <QGuiApplication>
#include <QHelpEvent>
#include <QKeyEvent>
#include <QMenu>
#include <QMouseEvent>
#include <QPainter>
#include <QTextBoundaryFinder>
#include <QToolTip>
#include <QUrl>
#include <QWheelEvent>

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

namespace lumiwren {
namespace {

constexpr qreal blockSpacing = 8;
constexpr std::size_t rowsAtOnce = 300;  // laid out in 10 to 20 ms
constexpr qreal thumbReach = 4;          // how far from a handle a press still takes it

/// The index of the last of ascending values that is not beyond `value`; the first one's where there is none.
template <typename Value>
std::size_t lastNotAfter(const std::vector<Value> &values, Value value) {
  const auto after = std::upper_bound(values.begin(), values.end(), value);
  return static_cast<std::size_t>(std::max<std::ptrdiff_t>(after - values.begin() - 1, 0));
}

}  // namespace

SelectableTextView::SelectableTextView(QWidget *parent) : QWidget(parent), colors_(palette()) {
  SelectableTextAccessible::install();
  setMouseTracking(true);
  setFocusPolicy(Qt::ClickFocus);
  setCursor(Qt::IBeamCursor);
  rest_.setSingleShot(true);
  connect(&rest_, &QTimer::timeout, this, [this] {
    layOutBlocks(tops_.size() - 1, rowsAtOnce);
    Q_EMIT grown();
  });
}

SelectableTextView::~SelectableTextView() = default;

void SelectableTextView::blocksChanged(std::size_t first) {
  layOutBlocks(first, rowsAtOnce);
}

void SelectableTextView::layOutBlocks(std::size_t first, std::size_t budget) {
  // The last one that is there may be there in part.
  first = std::min(first, rest_.isActive() ? tops_.size() - 1 : tops_.size());
  const qreal before = height_;
  qreal changedFrom = first > 0 ? tops_[first - 1] + views_[first - 1]->height() : 0;
  tops_.resize(first);
  starts_.resize(first);
  rest_.stop();
  for (std::size_t index = first; index < views_.size(); ++index) {
    auto &view = *views_[index];
    tops_.push_back(index > 0 ? tops_[index - 1] + views_[index - 1]->height() + blockSpacing : 0);
    starts_.push_back(index > 0 ? starts_[index - 1] + views_[index - 1]->length() + 1 : 0);
    const bool wasLetGo = view.isLetGo();
    const bool isComplete = width_ <= 0 || view.layOut(width_, colors_, budget);
    if (wasLetGo && !view.isLetGo()) {
      keepRecent(index);
    }
    if (index == first) {
      changedFrom = tops_[index] + view.changedFrom();
    }
    if (!isComplete) {
      rest_.start();
      break;
    }
  }
  height_ = tops_.empty() ? 0 : tops_.back() + views_[tops_.size() - 1]->height();
  anchor_ = std::min(anchor_, length());
  cursor_ = std::min(cursor_, length());
  const auto top = static_cast<int>(changedFrom);
  update(0, top, width(), static_cast<int>(std::max(before, height_)) - top);
}

void SelectableTextView::keepRecent(std::size_t index) {
  recent_.add(index, [this](std::size_t old) {
    if (old < views_.size()) {
      views_[old]->letGo();
    }
  });
}

int SelectableTextView::layOut(int width) {
  if (width_ != width) {
    // What is there already stays there: a text that came and went while its width changes could not be read.
    const bool isNew = width_ <= 0;
    width_ = width;
    layOutBlocks(0, isNew ? rowsAtOnce : std::numeric_limits<std::size_t>::max());
  }
  return static_cast<int>(height_);
}

int SelectableTextView::heightForWidth(int width) const {
  // Laying out is what the height is known from; the text that is shown stays the same.
  return const_cast<SelectableTextView *>(this)->layOut(width);
}

QString SelectableTextView::plainTextFrom(int position) const {
  QString text;
  if (starts_.empty()) {
    return text;
  }
  const auto first = blockOf(position);
  for (std::size_t index = first; index < tops_.size(); ++index) {
    if (index > first) {
      text += QLatin1Char('\n');
    }
    text += views_[index]->plainText();
  }
  return text.mid(position - starts_[first]);
}

int SelectableTextView::length() const {
  return starts_.empty() ? 0 : starts_.back() + views_[starts_.size() - 1]->length();
}

int SelectableTextView::selectionStart() const {
  return std::min(anchor_, cursor_);
}

int SelectableTextView::selectionEnd() const {
  return std::max(anchor_, cursor_);
}

void SelectableTextView::setSelection(int start, int end) {
  anchor_ = std::clamp(start, 0, length());
  cursor_ = std::clamp(end, 0, length());
  update();
}

QString SelectableTextView::selectedText() const {
  return plainText().mid(selectionStart(), selectionEnd() - selectionStart());
}

void SelectableTextView::selectAll() {
  Q_EMIT selectionStarted();
  setSelection(0, length());
  publishSelection();
}

void SelectableTextView::copy() {
  if (hasSelection()) {
    Q_EMIT copyRequested(selectedText());
  }
}

void SelectableTextView::publishSelection() const {
  auto *const clipboard = QGuiApplication::clipboard();
  if (hasSelection() && clipboard->supportsSelection()) {
    clipboard->setText(selectedText(), QClipboard::Selection);
  }
}

std::optional<std::size_t> SelectableTextView::blockAt(qreal y) const {
  if (tops_.empty()) {
    return std::nullopt;
  }
  return lastNotAfter(tops_, y);
}

std::size_t SelectableTextView::blockOf(int position) const {
  return lastNotAfter(starts_, position);
}

int SelectableTextView::positionAt(QPoint point) const {
  const auto index = blockAt(point.y());
  return index ? starts_[*index] +
                     views_[*index]->positionAt(QPointF(point) - QPointF(0, tops_[*index]), colors_)
               : 0;
}

QRect SelectableTextView::characterRect(int position) const {
  if (starts_.empty()) {
    return {};
  }
  const auto index = blockOf(position);
  return views_[index]
      ->characterRect(position - starts_[index], colors_)
      .translated(0, tops_[index])
      .toAlignedRect();
}

const FragmentText::Link *SelectableTextView::linkAt(QPoint point) const {
  const auto index = blockAt(point.y());
  return index ? views_[*index]->linkAt(QPointF(point) - QPointF(0, tops_[*index]), colors_) : nullptr;
}

std::optional<std::size_t> SelectableTextView::thumbAt(QPoint point) const {
  const auto index = blockAt(point.y());
  if (index) {
    const QRectF thumb = views_[*index]->scrollThumb();
    if (!thumb.isEmpty() && thumb.translated(0, tops_[*index])
                                .adjusted(-thumbReach, -thumbReach, thumbReach, thumbReach)
                                .contains(point)) {
      return index;
    }
  }
  return std::nullopt;
}

void SelectableTextView::paintEvent(QPaintEvent *event) {
  QPainter painter(this);
  painter.setRenderHint(QPainter::Antialiasing);
  const QRectF exposed = event->rect();
  const FragmentPainting painting{painter, colors_, exposed, selectionStart(), selectionEnd()};
  for (std::size_t index = blockAt(exposed.top()).value_or(0);
       index < tops_.size() && tops_[index] < exposed.bottom(); ++index) {
    const QPointF origin(0, tops_[index]);
    if (views_[index]->isLetGo()) {
      keepRecent(index);
    }
    painter.translate(origin);
    views_[index]->paint(painting.forPart(origin, starts_[index]));
    painter.translate(-origin);
  }
}

void SelectableTextView::changeEvent(QEvent *event) {
  if (event->type() == QEvent::PaletteChange || event->type() == QEvent::FontChange) {
    colors_ = SemanticColors(palette());
    for (const auto &view : views_) {
      view->restyle();
    }
    blocksChanged(0);
  }
  QWidget::changeEvent(event);
}

void SelectableTextView::resizeEvent(QResizeEvent *event) {
  layOut(width());
  QWidget::resizeEvent(event);
}

void SelectableTextView::mousePressEvent(QMouseEvent *event) {
  const QPoint point = event->position().toPoint();
  if (event->button() != Qt::LeftButton) {
    QWidget::mousePressEvent(event);
    return;
  }
  if (const auto block = thumbAt(point)) {
    heldThumb_ = {*block, event->position().x(), views_[*block]->scrollOffset()};
    return;
  }
  if (sinceDoubleClick_.isValid() && sinceDoubleClick_.elapsed() < QApplication::doubleClickInterval() &&
      (point - doubleClickedAt_).manhattanLength() < QApplication::startDragDistance()) {
    sinceDoubleClick_.invalidate();
    selectLineAt(positionAt(point));
    return;
  }
  const auto *link = linkAt(point);
  pressedLink_ = link ? link->address : QString();
  Q_EMIT selectionStarted();
  const int position = positionAt(point);
  setSelection(event->modifiers().testFlag(Qt::ShiftModifier) ? anchor_ : position, position);
  isSelecting_ = true;
}

void SelectableTextView::dragTo(QPoint point) {
  if (const int position = positionAt(point); position != cursor_) {
    cursor_ = position;
    update();
  }
}

void SelectableTextView::mouseMoveEvent(QMouseEvent *event) {
  const QPoint point = event->position().toPoint();
  if (heldThumb_) {
    const auto &[block, pointer, offset] = *heldThumb_;
    scrollBlock(block, offset + views_[block]->scrollOffsetFor(event->position().x() - pointer));
  } else if (isSelecting_) {
    dragTo(point);
    Q_EMIT selectionDragged(event->globalPosition().toPoint());
  } else {
    setCursor(thumbAt(point) ? Qt::ArrowCursor : linkAt(point) ? Qt::PointingHandCursor : Qt::IBeamCursor);
  }
}

void SelectableTextView::mouseReleaseEvent(QMouseEvent *event) {
  if (event->button() != Qt::LeftButton) {
    QWidget::mouseReleaseEvent(event);
    return;
  }
  heldThumb_.reset();
  if (!std::exchange(isSelecting_, false)) {
    return;
  }
  Q_EMIT selectionEnded();
  if (hasSelection()) {
    publishSelection();
    return;
  }
  const auto *link = linkAt(event->position().toPoint());
  if (link && link->address == pressedLink_) {
    QDesktopServices::openUrl(QUrl::fromEncoded(link->address.toLatin1(), QUrl::StrictMode));
  }
}

void SelectableTextView::mouseDoubleClickEvent(QMouseEvent *event) {
  if (event->button() != Qt::LeftButton) {
    return;
  }
  sinceDoubleClick_.start();
  doubleClickedAt_ = event->position().toPoint();
  const QString text = plainText();
  QTextBoundaryFinder finder(QTextBoundaryFinder::Word, text);
  const int position = positionAt(doubleClickedAt_);
  finder.setPosition(std::min<qsizetype>(position + 1, text.size()));
  const auto start = finder.toPreviousBoundary();
  const auto end = finder.toNextBoundary();
  Q_EMIT selectionStarted();
  setSelection(static_cast<int>(std::max<qsizetype>(start, 0)),
               static_cast<int>(end < 0 ? text.size() : end));
  isSelecting_ = true;
}

void SelectableTextView::selectLineAt(int position) {
  const QString text = plainText();
  const auto start = position > 0 ? text.lastIndexOf(QLatin1Char('\n'), position - 1) + 1 : 0;
  const auto end = text.indexOf(QLatin1Char('\n'), position);
  Q_EMIT selectionStarted();
  setSelection(static_cast<int>(start), static_cast<int>(end < 0 ? text.size() : end));
  publishSelection();
}

void SelectableTextView::keyPressEvent(QKeyEvent *event) {
  if (event->matches(QKeySequence::Copy)) {
    copy();
  } else if (event->matches(QKeySequence::SelectAll)) {
    selectAll();
  } else {
    QWidget::keyPressEvent(event);
  }
}

void SelectableTextView::scrollBlock(std::size_t index, qreal offset) {
  views_[index]->setScrollOffset(offset);
  update(0, static_cast<int>(tops_[index]), width(), static_cast<int>(views_[index]->height()));
}

void SelectableTextView::wheelEvent(QWheelEvent *event) {
  const auto index = blockAt(event->position().y());
  const QPoint pixels = event->pixelDelta().isNull() ? event->angleDelta() / 3 : event->pixelDelta();
  // Toolkits turn a wheel with Shift or Alt into a horizontal one only in part.
  const bool sideways =
      std::abs(pixels.x()) > std::abs(pixels.y()) || event->modifiers().testFlag(Qt::ShiftModifier);
  if (index && sideways && views_[*index]->scrollRange() > 0) {
    scrollBlock(*index, views_[*index]->scrollOffset() - (pixels.x() != 0 ? pixels.x() : pixels.y()));
    event->accept();
  } else {
    event->ignore();
  }
}

void SelectableTextView::contextMenuEvent(QContextMenuEvent *event) {
  auto *const menu = new QMenu(this);
  menu->setAttribute(Qt::WA_DeleteOnClose);
  auto *const copyAction = menu->addAction(QStringLiteral("Copy"), this, &SelectableTextView::copy);
  copyAction->setEnabled(hasSelection());
  menu->addAction(QStringLiteral("Select All"), this, &SelectableTextView::selectAll);
  menu->popup(event->globalPos());
}

bool SelectableTextView::event(QEvent *event) {
  if (event->type() != QEvent::ToolTip) {
    return QWidget::event(event);
  }
  const auto *help = static_cast<QHelpEvent *>(event);
  if (const auto *link = linkAt(help->pos())) {
    QToolTip::showText(help->globalPos(), link->address, this);
  } else {
    QToolTip::hideText();
  }
  return true;
}

void SelectableTextView::tellAssistiveTechnology(int upTo) {
  const QString now = plainText().left(upTo);
  const auto common =
      std::mismatch(told_.cbegin(), told_.cend(), now.cbegin(), now.cend()).first - told_.cbegin();
  const auto from = static_cast<int>(common);
  const QString gone = told_.mid(from);
  const QString come = now.mid(from);
  told_ = now;
  if (!gone.isEmpty()) {
    QAccessibleTextUpdateEvent changed(this, from, gone, come);
    QAccessible::updateAccessibility(&changed);
  } else if (!come.isEmpty()) {
    QAccessibleTextInsertEvent grown(this, from, come);
    QAccessible::updateAccessibility(&grown);
  }
}

}  // namespace lumiwren
