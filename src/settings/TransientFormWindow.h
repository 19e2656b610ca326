#pragma once

#include "platform/ApplicationWindows.h"
#include "settings/FormWindow.h"

#include <QString>
#include <QWidget>

#include <functional>
#include <memory>

namespace lumiwren {

/// A form in a window of its own that is made anew for each showing, and gone when it is closed.
class TransientFormWindow {
public:
  using Dismiss = std::function<void()>;
  using MakeForm = std::function<std::unique_ptr<QWidget>(Dismiss dismiss)>;

  TransientFormWindow(QString title, int smallestHeight, ApplicationWindows &windows, MakeForm makeForm);
  TransientFormWindow(const TransientFormWindow &) = delete;
  TransientFormWindow &operator=(const TransientFormWindow &) = delete;
  ~TransientFormWindow() = default;

  /// Opens the window, or brings the open one to the front.
  void showWindow();
  /// Empty while nothing is shown.
  FormWindow *window() const { return window_.get(); }

private:
  void release();

  const QString title_;
  const int smallestHeight_;
  ApplicationWindows &windows_;
  const MakeForm makeForm_;
  std::unique_ptr<FormWindow> window_;
};

}  // namespace lumiwren
