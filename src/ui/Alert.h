#pragma once

#include "ui/PushButton.h"

#include <QDialog>
#include <QHBoxLayout>
#include <QString>

#include <functional>
#include <vector>

namespace lumiwren {

/// A question or a warning in front of everything, to which the user has to answer.
class Alert : public QDialog {
  Q_OBJECT

public:
  /// What a button is for. Return presses the default, Escape and the window's close button mean Cancel.
  /// Where there is no default, Return presses Cancel: nothing is destroyed by it.
  enum class Role { Default, Cancel, Destructive };
  /// How the alert gets the keyboard, and after the answer the window of its parent, if it has one.
  struct Activation {
    /// Brings a shown window to the front and gives it the keyboard.
    std::function<void(QWidget &)> activate;
    /// Gives the keyboard, which the alert has, to the window of its parent, before the alert goes. Not
    /// called where there is no parent.
    std::function<void(QWidget &)> handOver = nullptr;
  };

  /// The texts are plain, whatever is in them.
  Alert(const QString &message, const QString &informativeText, Activation activation,
        QWidget *parent = nullptr);

  /// The first button is the rightmost. Returns its index.
  int addButton(const QString &label, Role role);

  /// Waits for the answer, in an event loop of its own; the window is modal to the whole program. Returns the
  /// index of the button, that of Cancel where the window was closed, -1 where there is none.
  int run();
  /// Shows the alert, modal to its parent's window, and calls `answered` with what run() would return. The
  /// alert deletes itself.
  void ask(std::function<void(int)> answered);

  void reject() override;

protected:
  void showEvent(QShowEvent *event) override;

private:
  void answer(int index);
  void prepare();

  struct Choice {
    PushButton *button;
    Role role;
  };
  const Activation activation_;
  std::vector<Choice> choices_;
  QHBoxLayout *const buttons_;
};

}  // namespace lumiwren
