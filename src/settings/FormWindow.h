#pragma once

#include "platform/ApplicationWindows.h"

#include <QDialog>
#include <QString>
#include <QWidget>

#include <memory>

namespace lumiwren {

/// A small window around one form, with a title and a close button, always as large as its form. Return
/// presses the form's default button, Escape closes the window.
class FormWindow : public QDialog {
  Q_OBJECT

public:
  /// The content is the window's from now on. Its height is at least `smallestHeight`, in points that grow
  /// with the text, and more where it needs more.
  FormWindow(const QString &title, std::unique_ptr<QWidget> content, int smallestHeight,
             ApplicationWindows &windows);

  /// Shows the window in front of everything, with the keyboard: in the middle of the screen the first time,
  /// later where it was left.
  void present();
  /// Shows the window for a user who is at work in another one, and keeps the keyboard.
  void presentInBackground();

protected:
  void changeEvent(QEvent *event) override;

private:
  void place();
  void centre();
  void adaptHeight();

  ApplicationWindows &windows_;
  QWidget *const content_;
  const int smallestHeight_;
  bool isPlaced_ = false;
};

}  // namespace lumiwren
