#pragma once

#include <QObject>
#include <QPointer>
#include <QWidget>

#include <cstdint>

namespace lumiwren {

/// Keeps from a window's controls what was meant for what stood there before: the second click of a double
/// click, where the first one was on another control, and the repeats of a held Return or Escape, each of
/// which would decide something. Return is let through to fields of several lines.
class InputGuard : public QObject {
  Q_OBJECT

public:
  /// Guards the window as its child.
  explicit InputGuard(QWidget &window);

protected:
  bool eventFilter(QObject *watched, QEvent *event) override;

private:
  bool keepsOut(const QEvent &event);

  struct Release {
    int key = 0;
    std::uint64_t time = 0;
  };
  QWidget &window_;
  QPointer<QWidget> clicked_;
  bool hasTyped_ = false;  // since that
  Release released_;
};

}  // namespace lumiwren
