#pragma once

#include "actions/CustomAction.h"
#include "ui/Alert.h"

#include <QPointer>
#include <QWidget>

#include <functional>

class QBoxLayout;

namespace lumiwren {

class BorderedButton;
class BoxedLabel;
class ElidedLabel;
class SymbolButton;
class SymbolView;
class TextLabel;

/// An action in a list of actions, with the buttons to edit and to delete it. Return edits, Delete deletes.
class ActionRow : public QWidget {
  Q_OBJECT

public:
  struct Callbacks {
    std::function<void(const CustomAction &)> onEdit;
    std::function<void(const CustomAction &)> onDelete;  // once the user has confirmed it
    Alert::Activation activation;                        // of the question whether that is meant
  };

  ActionRow(const CustomAction &action, Callbacks callbacks, QWidget *parent = nullptr);

  const CustomAction &action() const { return action_; }
  void setAction(const CustomAction &action);
  /// Whether Tab stops here: at one row of a list, and at its buttons.
  void setTabStop(bool isTabStop);
  /// Tab comes here, if it stops here, from another widget.
  void followInTabOrder(QWidget &previous);
  void showDeleteConfirmation();

Q_SIGNALS:
  /// The row or something in it was clicked or got the keyboard.
  void entered();

protected:
  bool eventFilter(QObject *watched, QEvent *event) override;
  void enterEvent(QEnterEvent *event) override;
  void focusInEvent(QFocusEvent *event) override;
  void focusOutEvent(QFocusEvent *event) override;
  void keyPressEvent(QKeyEvent *event) override;
  void leaveEvent(QEvent *event) override;
  void mousePressEvent(QMouseEvent *event) override;
  void paintEvent(QPaintEvent *event) override;

private:
  void addTexts(QBoxLayout &row);
  void addButtons(QBoxLayout &row);
  void showAction();

  CustomAction action_;
  const Callbacks callbacks_;
  ElidedLabel *name_ = nullptr;
  BoxedLabel *badge_ = nullptr;
  SymbolView *icon_ = nullptr;
  TextLabel *inputType_ = nullptr;
  BoxedLabel *hotkey_ = nullptr;
  BorderedButton *edit_ = nullptr;
  SymbolButton *delete_ = nullptr;
  QPointer<Alert> deleteConfirmation_;
};

}  // namespace lumiwren
