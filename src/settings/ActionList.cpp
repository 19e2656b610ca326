#include "settings/ActionList.h"

#include "ui/AccessibleRole.h"
#include "ui/Fonts.h"
#include "ui/Spacing.h"
#include "ui/ThinScrollBar.h"

#include <QEvent>
#include <QKeyEvent>

#include <algorithm>
#include <utility>

namespace lumiwren {
namespace {

constexpr int rowHeight = 52;
constexpr int listPadding = 8;  // around all rows
constexpr int scrollStep = 17;  // of which the wheel makes three at a time: about a row

}  // namespace

ActionList::ActionList(ActionRow::Callbacks callbacks, QWidget &previous, QWidget *parent)
    : QScrollArea(parent), callbacks_(std::move(callbacks)), previous_(previous), content_(new QWidget) {
  setFrameShape(QFrame::NoFrame);
  setFocusPolicy(Qt::NoFocus);
  setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
  setVerticalScrollBar(new ThinScrollBar(this));
  setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOn);  // Rows keep their width.
  verticalScrollBar()->setSingleStep(scrollStep);
  setAccessibleRole(*content_, QAccessible::List);
  content_->setAccessibleName(QStringLiteral("Actions"));
  setWidget(content_);
  viewport()->setAutoFillBackground(false);
  content_->setAutoFillBackground(false);
}

void ActionList::setActions(const std::vector<CustomAction> &actions) {
  const bool hasFocus = content_->isAncestorOf(window()->focusWidget());
  const auto *const used = rows_.empty() ? nullptr : rows_[current_];
  auto old = std::exchange(rows_, std::vector<ActionRow *>(actions.size()));
  const auto keepRows = [&](const auto &belongsTo) {
    for (std::size_t index = 0; index < actions.size(); ++index) {
      const auto row = std::find_if(old.begin(), old.end(), [&](const ActionRow *each) {
        return each && belongsTo(each->action(), actions[index]);
      });
      if (!rows_[index] && row != old.end()) {
        rows_[index] = std::exchange(*row, nullptr);
        rows_[index]->setAction(actions[index]);
      }
    }
  };
  // Several actions may have one identifier; those that are as they were keep their own rows.
  keepRows([](const CustomAction &one, const CustomAction &other) { return one == other; });
  keepRows([](const CustomAction &one, const CustomAction &other) { return one.id == other.id; });
  for (std::size_t index = 0; index < actions.size(); ++index) {
    if (!rows_[index]) {
      rows_[index] = makeRow(actions[index]);
    }
    rows_[index]->raise();  // Assistive technology reads them from the lowest to the highest.
  }
  arrange();
  const auto kept = std::find(rows_.begin(), rows_.end(), used);
  if (kept != rows_.end()) {
    setCurrent(static_cast<std::size_t>(kept - rows_.begin()));
  } else if (hasFocus) {
    moveTo(current_);
  } else {
    setCurrent(rows_.empty() ? 0 : std::min(current_, rows_.size() - 1));
  }
  for (auto *const row : old) {
    if (row) {
      row->hide();
      row->deleteLater();  // It may be the one who has asked for it.
    }
  }
}

void ActionList::showLast() {
  if (!rows_.empty()) {
    setCurrent(rows_.size() - 1);
    ensureWidgetVisible(rows_.back(), 0, listPadding);
  }
}

ActionRow *ActionList::makeRow(const CustomAction &action) {
  auto *const row = new ActionRow(action, callbacks_, content_);
  connect(row, &ActionRow::entered, this, [this, row] {
    setCurrent(static_cast<std::size_t>(std::find(rows_.begin(), rows_.end(), row) - rows_.begin()));
  });
  return row;
}

void ActionList::setCurrent(std::size_t index) {
  if (index >= rows_.size()) {
    return;
  }
  if (current_ < rows_.size()) {
    rows_[current_]->setTabStop(false);
  }
  current_ = index;
  rows_[index]->setTabStop(true);
  rows_[index]->followInTabOrder(previous_);
}

void ActionList::moveTo(std::size_t index) {
  if (!rows_.empty()) {
    setCurrent(std::min(index, rows_.size() - 1));
    rows_[current_]->setFocus(Qt::OtherFocusReason);
    ensureWidgetVisible(rows_[current_], 0, listPadding);
  }
}

void ActionList::arrange() {
  const int height = scaledSize(rowHeight);
  // The scroll bar stands in the right padding.
  const int width = viewport()->width() - listPadding;
  int y = listPadding;
  for (auto *const row : rows_) {
    row->setGeometry(listPadding, y, width, height);
    row->show();
    y += height;
  }
  content_->resize(viewport()->width(), y + listPadding);
}

void ActionList::changeEvent(QEvent *event) {
  if (event->type() == QEvent::FontChange) {
    arrange();
  }
  QScrollArea::changeEvent(event);
}

void ActionList::resizeEvent(QResizeEvent *event) {
  QScrollArea::resizeEvent(event);
  arrange();
}

void ActionList::keyPressEvent(QKeyEvent *event) {
  const std::size_t page = std::max(1, viewport()->height() / scaledSize(rowHeight));
  switch (event->key()) {
    case Qt::Key_Up:
      moveTo(current_ - std::min<std::size_t>(current_, 1));
      break;
    case Qt::Key_Down:
      moveTo(current_ + 1);
      break;
    case Qt::Key_PageUp:
      moveTo(current_ - std::min(current_, page));
      break;
    case Qt::Key_PageDown:
      moveTo(current_ + page);
      break;
    case Qt::Key_Home:
      moveTo(0);
      break;
    case Qt::Key_End:
      moveTo(rows_.size());
      break;
    default:
      QScrollArea::keyPressEvent(event);
  }
}

}  // namespace lumiwren
