#include "settings/AboutWindowController.h"

#include "settings/AboutView.h"

#include <utility>

namespace lumiwren {
namespace {

constexpr int smallestAboutHeight = 300;

}  // namespace

void AboutWindowController::showWindow() {
  if (!window_) {
    auto view = std::make_unique<AboutView>(bundle_, [weak = anchor_.weak()] {
      if (auto *const self = weak.get()) {
        self->window_->close();
      }
    });
    window_ = std::make_unique<FormWindow>(QStringLiteral("About Lumiwren"), std::move(view),
                                           smallestAboutHeight, windows_);
  }
  window_->present();
}

}  // namespace lumiwren
