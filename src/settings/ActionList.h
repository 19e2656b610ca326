#pragma once

#include "actions/CustomAction.h"
#include "settings/ActionRow.h"

#include <QScrollArea>

#include <cstddef>
#include <vector>

namespace lumiwren {

/// The actions, one row each. The arrow keys go from row to row; Tab goes to one row, the last one used, and
/// through its buttons.
class ActionList : public QScrollArea {
  Q_OBJECT

public:
  /// Tab comes to the rows from `previous`, a control of the same window that outlives the list.
  ActionList(ActionRow::Callbacks callbacks, QWidget &previous, QWidget *parent = nullptr);

  /// Rows of actions that are still there stay, with the keyboard if they have it, and so does the place to
  /// which the list is scrolled. A row that goes hands the keyboard to the one that takes its place.
  void setActions(const std::vector<CustomAction> &actions);
  const std::vector<ActionRow *> &rows() const { return rows_; }
  /// Gives the keyboard to the row at an index, or to the last one.
  void moveTo(std::size_t index);
  /// Scrolls to the row of the last action.
  void showLast();

protected:
  void changeEvent(QEvent *event) override;
  void keyPressEvent(QKeyEvent *event) override;
  void resizeEvent(QResizeEvent *event) override;

private:
  ActionRow *makeRow(const CustomAction &action);
  /// Tab goes to the row at an index, if there is one, and to no other.
  void setCurrent(std::size_t index);
  void arrange();

  const ActionRow::Callbacks callbacks_;
  QWidget &previous_;
  QWidget *const content_;
  std::vector<ActionRow *> rows_;
  std::size_t current_ = 0;  // where Tab goes, if there are rows
};

}  // namespace lumiwren
