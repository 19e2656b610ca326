#pragma once

#include "base/Handle.h"
#include "base/MainQueue.h"
#include "base/Weak.h"
#include "platform/Pasteboard.h"
#include "popup/PopupState.h"

#include <QElapsedTimer>
#include <QString>
#include <QTimer>
#include <QWidget>

#include <functional>
#include <string>
#include <vector>

namespace lumiwren {

class ActivatingTextField;
class BorderedButton;
class ConversationView;
class SourceTextLabel;
class SymbolButton;

/// The content of the floating panel: the source text, the conversation, the follow-up field and the copy
/// button. Draws the state whenever it has changed, once per frame of the screen at the most; while it is
/// hidden it does nothing.
class ExplanationPopupView : public QWidget {
  Q_OBJECT

public:
  struct Callbacks {
    std::function<void()> onDismiss;
    /// Copies the first answer. Held for others; the copy button here copies all answers.
    std::function<void()> onCopy;
    std::function<void(const std::string &question)> onSendFollowUp;
  };

  ExplanationPopupView(PopupState &state, Pasteboard &pasteboard, MainQueue &mainQueue, Callbacks callbacks);
  ~ExplanationPopupView() override;

  const Callbacks &callbacks() const { return callbacks_; }

  /// Draws the state now rather than with the next frame.
  void refresh();
  /// Forgets what was typed, copied and scrolled, as a new view has it.
  void reset();

  /// At most 100 characters as a reader counts them; "..." stands for the rest.
  static QString truncatedOriginalText(const std::string &originalText);
  /// Every answer, oldest first, with an empty line between.
  static std::string allContent(const std::vector<ConversationMessage> &history);

protected:
  bool focusNextPrevChild(bool next) override;
  void paintEvent(QPaintEvent *event) override;
  void showEvent(QShowEvent *event) override;
  void hideEvent(QHideEvent *event) override;

private:
  QWidget *makeHeader();
  QWidget *makeFollowUpRow();
  QWidget *makeFooter();
  void stateChanged();
  void sendFollowUp();
  void updateSending();
  void copyAll();
  void setCopied(bool copied);

  PopupState &state_;
  Pasteboard &pasteboard_;
  MainQueue &mainQueue_;
  const Callbacks callbacks_;
  QWidget *header_ = nullptr;
  SourceTextLabel *sourceText_ = nullptr;
  SymbolButton *closeButton_ = nullptr;
  ConversationView *conversation_ = nullptr;
  QWidget *followUpRow_ = nullptr;
  ActivatingTextField *followUpField_ = nullptr;
  SymbolButton *sendButton_ = nullptr;
  BorderedButton *copyButton_ = nullptr;
  QTimer frame_;
  QElapsedTimer sinceRefresh_;
  unsigned showing_ = 0;  // which of all showings this is
  Handle observation_;    // of the state, while the view is shown
  WeakAnchor<ExplanationPopupView> weak_{this};
};

}  // namespace lumiwren
