#include "ui/InputGuard.h"

#include <QEvent>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPlainTextEdit>
#include <QWindow>

namespace lumiwren {

InputGuard::InputGuard(QWidget &window) : QObject(&window), window_(window) {
  window.installEventFilter(this);
}

bool InputGuard::eventFilter(QObject *watched, QEvent *event) {
  if (watched != &window_) {
    return keepsOut(*event);
  }
  if (event->type() == QEvent::WinIdChange && window_.windowHandle()) {
    window_.windowHandle()->installEventFilter(this);  // Before any control has seen an event.
  }
  return false;
}

bool InputGuard::keepsOut(const QEvent &event) {
  switch (event.type()) {
    case QEvent::MouseButtonPress: {
      const auto &press = static_cast<const QMouseEvent &>(event);
      // The toolkit sends a press also ahead of the double click that it is part of.
      if (!press.flags().testFlag(Qt::MouseEventCreatedDoubleClick)) {
        clicked_ = window_.childAt(press.position().toPoint());
        hasTyped_ = false;
      }
      return false;
    }
    case QEvent::MouseButtonDblClick:
      return !hasTyped_ &&
             window_.childAt(static_cast<const QMouseEvent &>(event).position().toPoint()) != clicked_;
    case QEvent::KeyPress: {
      const auto &press = static_cast<const QKeyEvent &>(event);
      hasTyped_ = true;
      const bool isReturn = press.key() == Qt::Key_Return || press.key() == Qt::Key_Enter;
      const bool decides = press.key() == Qt::Key_Escape ||
                           (isReturn && !qobject_cast<QPlainTextEdit *>(window_.focusWidget()));
      // The toolkit misses repeats of which it sees one half at a time: a release, and a press at the same
      // time.
      const bool isRepeat =
          press.isAutoRepeat() || (press.key() == released_.key && press.timestamp() == released_.time);
      return decides && isRepeat;
    }
    case QEvent::KeyRelease: {
      const auto &release = static_cast<const QKeyEvent &>(event);
      hasTyped_ = true;  // Presses can have been taken away ahead of the window.
      released_ = {release.key(), release.timestamp()};
      return false;
    }
    default:
      return false;
  }
}

}  // namespace lumiwren
