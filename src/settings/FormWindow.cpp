#include "settings/FormWindow.h"

#include "ui/AppIcon.h"
#include "ui/DesktopGeometry.h"
#include "ui/Fonts.h"
#include "ui/InputGuard.h"

#include <QCursor>
#include <QEvent>
#include <QVBoxLayout>

#include <utility>

namespace lumiwren {

FormWindow::FormWindow(const QString &title, std::unique_ptr<QWidget> content, int smallestHeight,
                       ApplicationWindows &windows)
    : QDialog(nullptr,
              Qt::Dialog | Qt::CustomizeWindowHint | Qt::WindowTitleHint | Qt::WindowCloseButtonHint),
      windows_(windows),
      content_(content.release()),
      smallestHeight_(smallestHeight) {
  setAttribute(Qt::WA_QuitOnClose, false);
  setWindowTitle(title);
  setWindowIcon(appIcon());
  auto *const layout = new QVBoxLayout(this);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->setSizeConstraint(QLayout::SetFixedSize);
  layout->addWidget(content_);
  new InputGuard(*this);
  adaptHeight();
}

void FormWindow::present() {
  place();
  show();
  windows_.activate(winId());
}

void FormWindow::presentInBackground() {
  place();
  setAttribute(Qt::WA_ShowWithoutActivating);
  show();
}

void FormWindow::changeEvent(QEvent *event) {
  if (event->type() == QEvent::FontChange) {
    adaptHeight();
  }
  QDialog::changeEvent(event);
}

void FormWindow::adaptHeight() {
  content_->setMinimumHeight(scaledSize(smallestHeight_));
}

void FormWindow::place() {
  if (std::exchange(isPlaced_, true)) {
    return;
  }
  centre();
  if (focusWidget() == nullptr) {
    focusNextChild();  // of none, that is to the first
  }
}

void FormWindow::centre() {
  ensurePolished();
  layout()->activate();
  move(screenAt(QCursor::pos()).availableGeometry().center() - rect().center());
}

}  // namespace lumiwren
