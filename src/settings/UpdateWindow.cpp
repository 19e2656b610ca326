#include "settings/UpdateWindow.h"

#include <utility>

namespace lumiwren {
namespace {

QString lumiwrenVersion(const std::string &version) {
  return QStringLiteral("Lumiwren ") + QString::fromStdString(version);
}

}  // namespace

void UpdateWindow::showChecking(std::function<void()> cancel) {
  show(Occasion::Asked,
       {.heading = QStringLiteral("Checking for updates..."),
        .message = {},
        .notes = {},
        .isBusy = true,
        .buttons = {answering(QStringLiteral("Cancel"), cancel)}},
       cancel);
}

void UpdateWindow::showFound(const UpdateOffer &offer, Occasion occasion, std::function<void(Choice)> reply) {
  const auto notes = QString::fromStdString(offer.notes);
  const auto choose = [reply = std::move(reply)](Choice choice) {
    return [reply, choice] { reply(choice); };
  };
  show(occasion,
       {.heading = lumiwrenVersion(offer.version) + QStringLiteral(" is available"),
        .message = QStringLiteral("It is downloaded and checked, and then handed to the package installer."),
        .notes = notes.isEmpty() ? std::nullopt : std::optional(notes),
        .buttons = {answering(QStringLiteral("Skip This Version"), choose(Choice::Skip)),
                    answering(QStringLiteral("Remind Me Later"), choose(Choice::RemindLater)),
                    answering(QStringLiteral("Install"), choose(Choice::Install))}},
       choose(Choice::RemindLater));
}

void UpdateWindow::bringToFront() {
  if (window_) {
    window_->present();
  }
}

void UpdateWindow::showDownloading(const std::string &version, std::function<void()> cancel) {
  show(Occasion::Asked,
       {.heading = QStringLiteral("Downloading ") + lumiwrenVersion(version),
        .message = {},
        .notes = {},
        .isBusy = true,
        .buttons = {answering(QStringLiteral("Cancel"), cancel)}},
       cancel);
}

void UpdateWindow::showProgress(std::uint64_t received, std::uint64_t total) {
  if (window_) {
    view_->setProgress(received, total);
  }
}

void UpdateWindow::showHandedOver(const std::string &version) {
  show(Occasion::Asked,
       {.heading = lumiwrenVersion(version) + QStringLiteral(" is ready to be installed"),
        .message = QStringLiteral("The package installer has it now. Start Lumiwren anew when it is done."),
        .notes = {},
        .buttons = {closing(QStringLiteral("Close"))}},
       {});
}

void UpdateWindow::showUpToDate(const std::string &version) {
  show(Occasion::Asked,
       {.heading = QStringLiteral("Lumiwren is up to date"),
        .message = lumiwrenVersion(version) + QStringLiteral(" is the newest version."),
        .notes = {},
        .buttons = {closing(QStringLiteral("Close"))}},
       {});
}

void UpdateWindow::showFailure(const std::string &reason) {
  show(Occasion::Asked,
       {.heading = QStringLiteral("The update failed"),
        .message = QString::fromStdString(reason),
        .notes = {},
        .buttons = {closing(QStringLiteral("Close"))}},
       {});
}

void UpdateWindow::show(Occasion occasion, const UpdateView::Content &content,
                        std::function<void()> dismissed) {
  ++stage_;
  dismissed_ = std::move(dismissed);
  if (window_) {
    view_->setContent(content);
    return;
  }
  auto view = std::make_unique<UpdateView>();
  view_ = view.get();
  view_->setContent(content);
  window_ = std::make_unique<FormWindow>(QStringLiteral("Software Update"), std::move(view),
                                         /*smallestHeight=*/0, windows_);
  QObject::connect(window_.get(), &QDialog::finished, window_.get(), [this] { release(); });
  if (occasion == Occasion::Asked) {
    window_->present();
  } else {
    window_->presentInBackground();
  }
}

UpdateView::Button UpdateWindow::answering(const QString &label, std::function<void()> answer) {
  return {.label = label, .clicked = [this, answer = std::move(answer), stage = stage_ + 1] {
            dismissed_ = nullptr;
            answer();
            if (stage_ == stage && window_) {
              window_->close();
            }
          }};
}

UpdateView::Button UpdateWindow::closing(const QString &label) {
  return answering(label, [] {});
}

void UpdateWindow::release() {
  window_.release()->deleteLater();  // It is still at work: this is called by it.
  if (const auto dismissed = std::exchange(dismissed_, nullptr)) {
    dismissed();
  }
}

}  // namespace lumiwren
