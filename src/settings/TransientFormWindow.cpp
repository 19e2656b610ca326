#include "settings/TransientFormWindow.h"

#include <utility>

namespace lumiwren {

TransientFormWindow::TransientFormWindow(QString title, int smallestHeight, ApplicationWindows &windows,
                                         MakeForm makeForm)
    : title_(std::move(title)),
      smallestHeight_(smallestHeight),
      windows_(windows),
      makeForm_(std::move(makeForm)) {}

void TransientFormWindow::showWindow() {
  if (!window_) {
    auto form = makeForm_([this] { window_->close(); });
    window_ = std::make_unique<FormWindow>(title_, std::move(form), smallestHeight_, windows_);
    QObject::connect(window_.get(), &QDialog::finished, window_.get(), [this] { release(); });
  }
  window_->present();
}

void TransientFormWindow::release() {
  window_.release()->deleteLater();  // It is still at work: this is called by it.
}

}  // namespace lumiwren
