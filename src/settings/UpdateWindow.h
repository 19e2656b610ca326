#pragma once

#include "platform/ApplicationWindows.h"
#include "platform/UpdateUserDriver.h"
#include "settings/FormWindow.h"
#include "settings/UpdateView.h"

#include <QString>

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

namespace lumiwren {

/// Shows an update in a small window of its own, made anew when there is something to show and gone when it
/// is closed. In front with the keyboard where the user has asked; what was found on schedule appears without
/// taking the keyboard. To close the window, also by Escape, is to cancel or to decide later.
class UpdateWindow : public UpdateUserDriver {
public:
  explicit UpdateWindow(ApplicationWindows &windows) : windows_(windows) {}
  UpdateWindow(const UpdateWindow &) = delete;
  UpdateWindow &operator=(const UpdateWindow &) = delete;
  ~UpdateWindow() override = default;

  void showChecking(std::function<void()> cancel) override;
  void showFound(const UpdateOffer &offer, Occasion occasion, std::function<void(Choice)> reply) override;
  void bringToFront() override;
  void showDownloading(const std::string &version, std::function<void()> cancel) override;
  void showProgress(std::uint64_t received, std::uint64_t total) override;
  void showHandedOver(const std::string &version) override;
  void showUpToDate(const std::string &version) override;
  void showFailure(const std::string &reason) override;

  /// Empty while nothing is shown.
  FormWindow *window() const { return window_.get(); }

private:
  /// `dismissed` is called when the user closes the window instead of pressing a button.
  void show(Occasion occasion, const UpdateView::Content &content, std::function<void()> dismissed);
  /// A button that ends its stage by `answer`, after which the window closes unless the next stage is there.
  UpdateView::Button answering(const QString &label, std::function<void()> answer);
  UpdateView::Button closing(const QString &label);
  void release();

  ApplicationWindows &windows_;
  std::unique_ptr<FormWindow> window_;
  UpdateView *view_ = nullptr;  // the window's
  std::uint64_t stage_ = 0;
  std::function<void()> dismissed_;
};

}  // namespace lumiwren
