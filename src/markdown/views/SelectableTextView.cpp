#include "markdown/views/SelectableTextView.h"

#include "markdown/views/SelectableTextAccessible.h"
#include "ui/Palette.h"

#include <QAccessible>
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
#include <utility>

namespace lumiwren {
namespace {

constexpr qreal blockSpacing = 8;

}  // namespace

SelectableTextView::SelectableTextView(QWidget *parent) : QWidget(parent) {
  SelectableTextAccessible::install();
  setMouseTracking(true);
  setFocusPolicy(Qt::ClickFocus);
  setCursor(Qt::IBeamCursor);
}

SelectableTextView::~SelectableTextView() = default;

void SelectableTextView::blocksChanged(std::size_t first) {
  first = std::min(first, tops_.size());
  const auto bottom = [this](std::size_t index) {
    return tops_[index] + views_[index]->height() + blockSpacing;
  };
  qreal y = first > 0 ? bottom(first - 1) : 0;
  int position = first > 0 ? views_[first - 1]->fragments().back()->end() : 0;
  update(0, static_cast<int>(y), width(), height() - static_cast<int>(y));
  tops_.resize(views_.size());
  for (std::size_t index = first; index < views_.size(); ++index) {
    auto &view = *views_[index];
    if (width_ > 0) {
      view.layOutFor(width_);
    }
    tops_[index] = y;
    y = bottom(index);
    view.fragments().front()->setSeparator(index == 0 ? QString() : QStringLiteral("\n"));
    for (const auto &fragment : view.fragments()) {
      position += static_cast<int>(fragment->separator().size());
      fragment->setStart(position);
      position = fragment->end();
    }
  }
  height_ = std::max(0.0, y - blockSpacing);
  anchor_ = std::min(anchor_, position);
  cursor_ = std::min(cursor_, position);
  if (QAccessible::isActive()) {
    tellAssistiveTechnology();
  }
}

int SelectableTextView::layOut(int width) {
  if (width_ != width) {
    width_ = width;
    blocksChanged(0);
  }
  return static_cast<int>(height_);
}

int SelectableTextView::heightForWidth(int width) const {
  // Laying out is what the height is known from; the text that is shown stays the same.
  return const_cast<SelectableTextView *>(this)->layOut(width);
}

QString SelectableTextView::plainText() const {
  QString text;
  for (const auto &view : views_) {
    for (const auto &fragment : view->fragments()) {
      text += fragment->separator();
      text += fragment->text();
    }
  }
  return text;
}

int SelectableTextView::selectionStart() const {
  return std::min(anchor_, cursor_);
}

int SelectableTextView::selectionEnd() const {
  return std::max(anchor_, cursor_);
}

void SelectableTextView::setSelection(int start, int end) {
  anchor_ = start;
  cursor_ = end;
  update();
}

QString SelectableTextView::selectedText() const {
  return plainText().mid(selectionStart(), selectionEnd() - selectionStart());
}

void SelectableTextView::selectAll() {
  setSelection(0, static_cast<int>(plainText().size()));
}

void SelectableTextView::copy() const {
  if (selectionStart() < selectionEnd()) {
    QGuiApplication::clipboard()->setText(selectedText());
  }
}

std::optional<std::size_t> SelectableTextView::blockAt(qreal y) const {
  if (tops_.empty()) {
    return std::nullopt;
  }
  const auto after = std::upper_bound(tops_.begin(), tops_.end(), y);
  return static_cast<std::size_t>(std::max<std::ptrdiff_t>(after - tops_.begin() - 1, 0));
}

int SelectableTextView::positionAt(QPoint point) const {
  const auto index = blockAt(point.y());
  return index ? views_[*index]->positionAt(QPointF(point) - QPointF(0, tops_[*index])) : 0;
}

QRect SelectableTextView::characterRect(int position) const {
  for (std::size_t index = 0; index < views_.size(); ++index) {
    for (const auto &fragment : views_[index]->fragments()) {
      if (position <= fragment->end()) {
        return fragment->characterRect(std::max(position, fragment->start()))
            .translated(0, tops_[index])
            .toAlignedRect();
      }
    }
  }
  return {};
}

const FragmentText::Link *SelectableTextView::linkAt(QPoint point) const {
  const auto index = blockAt(point.y());
  return index ? views_[*index]->linkAt(QPointF(point) - QPointF(0, tops_[*index])) : nullptr;
}

void SelectableTextView::paintEvent(QPaintEvent *event) {
  QPainter painter(this);
  painter.setRenderHint(QPainter::Antialiasing);
  const SemanticColors colors(palette());
  const QRectF exposed = event->rect();
  const auto first = blockAt(exposed.top());
  for (std::size_t index = first.value_or(views_.size()); index < views_.size(); ++index) {
    if (tops_[index] >= exposed.bottom()) {
      break;
    }
    const QPointF origin(0, tops_[index]);
    painter.translate(origin);
    views_[index]->paint({.painter = painter,
                          .colors = colors,
                          .exposed = exposed.translated(-origin),
                          .selectionStart = selectionStart(),
                          .selectionEnd = selectionEnd()});
    painter.translate(-origin);
  }
}

void SelectableTextView::resizeEvent(QResizeEvent *event) {
  layOut(width());
  QWidget::resizeEvent(event);
}

void SelectableTextView::mousePressEvent(QMouseEvent *event) {
  if (event->button() != Qt::LeftButton) {
    QWidget::mousePressEvent(event);
    return;
  }
  const auto *link = linkAt(event->position().toPoint());
  pressedLink_ = link ? link->address : QString();
  cursor_ = positionAt(event->position().toPoint());
  if (!event->modifiers().testFlag(Qt::ShiftModifier)) {
    anchor_ = cursor_;
  }
  selecting_ = true;
  update();
}

void SelectableTextView::mouseMoveEvent(QMouseEvent *event) {
  const QPoint point = event->position().toPoint();
  if (selecting_) {
    cursor_ = positionAt(point);
    update();
  } else {
    setCursor(linkAt(point) ? Qt::PointingHandCursor : Qt::IBeamCursor);
  }
}

void SelectableTextView::mouseReleaseEvent(QMouseEvent *event) {
  if (event->button() != Qt::LeftButton || !selecting_) {
    QWidget::mouseReleaseEvent(event);
    return;
  }
  selecting_ = false;
  if (selectionStart() < selectionEnd()) {
    auto *const clipboard = QGuiApplication::clipboard();
    if (clipboard->supportsSelection()) {
      clipboard->setText(selectedText(), QClipboard::Selection);
    }
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
  const QString text = plainText();
  QTextBoundaryFinder finder(QTextBoundaryFinder::Word, text);
  const int position = positionAt(event->position().toPoint());
  finder.setPosition(std::min<qsizetype>(position + 1, text.size()));
  const auto start = finder.toPreviousBoundary();
  const auto end = finder.toNextBoundary();
  setSelection(static_cast<int>(std::max<qsizetype>(start, 0)),
               static_cast<int>(end < 0 ? text.size() : end));
  selecting_ = true;
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

void SelectableTextView::scrollBlock(std::size_t index, qreal delta) {
  views_[index]->setScrollOffset(views_[index]->scrollOffset() + delta);
  update(0, static_cast<int>(tops_[index]), width(), static_cast<int>(views_[index]->height()));
}

void SelectableTextView::wheelEvent(QWheelEvent *event) {
  const auto index = blockAt(event->position().y());
  const QPoint pixels = event->pixelDelta().isNull() ? event->angleDelta() / 3 : event->pixelDelta();
  // Toolkits turn a wheel with Shift or Alt into a horizontal one only in part.
  const bool sideways =
      std::abs(pixels.x()) > std::abs(pixels.y()) || event->modifiers().testFlag(Qt::ShiftModifier);
  if (index && sideways && views_[*index]->scrollRange() > 0) {
    scrollBlock(*index, -(pixels.x() != 0 ? pixels.x() : pixels.y()));
    event->accept();
  } else {
    event->ignore();
  }
}

void SelectableTextView::contextMenuEvent(QContextMenuEvent *event) {
  auto *const menu = new QMenu(this);
  menu->setAttribute(Qt::WA_DeleteOnClose);
  auto *const copyAction = menu->addAction(QStringLiteral("Copy"), this, &SelectableTextView::copy);
  copyAction->setEnabled(selectionStart() < selectionEnd());
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

void SelectableTextView::tellAssistiveTechnology() {
  const QString before = std::exchange(told_, plainText());
  if (before == told_) {
    return;
  }
  if (told_.startsWith(before)) {
    QAccessibleTextInsertEvent grown(this, static_cast<int>(before.size()), told_.mid(before.size()));
    QAccessible::updateAccessibility(&grown);
  } else {
    QAccessibleTextUpdateEvent changed(this, 0, before, told_);
    QAccessible::updateAccessibility(&changed);
  }
}

}  // namespace lumiwren
