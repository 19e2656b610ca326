#pragma once

#include "settings/FormView.h"
#include "ui/ProgressIndicator.h"
#include "ui/PushButton.h"
#include "ui/TextArea.h"
#include "ui/TextLabel.h"

#include <QHBoxLayout>
#include <QProgressBar>
#include <QString>
#include <QWidget>

#include <cstdint>
#include <functional>
#include <optional>
#include <vector>

namespace lumiwren {

/// One stage of an update at a time: what it is, perhaps release notes or how far it has come, and what the
/// user can do. All texts are plain.
class UpdateView : public FormView {
  Q_OBJECT

public:
  struct Button {
    QString label;
    /// May replace what is shown, or delete the view.
    std::function<void()> clicked;
  };
  struct Content {
    QString heading;
    QString message;
    std::optional<QString> notes;
    /// It lasts for a while, and all that one can do is to stop it.
    bool isBusy = false;
    /// From left to right; the last is what the stage is for, and the default of the dialog.
    std::vector<Button> buttons;
  };

  explicit UpdateView(QWidget *parent = nullptr);

  void setContent(const Content &content);
  /// Bytes; `total` is 0 where it is unknown. Until the next content.
  void setProgress(std::uint64_t received, std::uint64_t total);

protected:
  void changeEvent(QEvent *event) override;

private:
  void adaptHeights();
  void replaceButtons(const Content &content);

  TextLabel *const heading_;
  TextLabel *const message_;
  TextArea *const notes_;
  ProgressIndicator *const wheel_;
  QProgressBar *const bar_;
  QHBoxLayout *const buttonRow_;
  std::vector<PushButton *> buttons_;
};

}  // namespace lumiwren
