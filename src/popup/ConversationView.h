#pragma once

#include "base/MainQueue.h"
#include "base/UUID.h"
#include "base/Weak.h"
#include "platform/Pasteboard.h"
#include "popup/AnswerAnnouncer.h"
#include "popup/ConversationRows.h"
#include "popup/PopupState.h"

#include <QPoint>
#include <QScrollArea>
#include <QTimer>
#include <QVariantAnimation>

#include <memory>
#include <string>
#include <vector>

namespace lumiwren {

class MarkdownTextView;

/// The scrolling conversation: answers, bubbles, and the loading or error row. Follows what is new at the
/// bottom, unless the user has scrolled away from there.
class ConversationView : public QScrollArea {
  Q_OBJECT

public:
  ConversationView(Pasteboard &pasteboard, MainQueue &mainQueue, QWidget *parent = nullptr);
  ~ConversationView() override;

  /// Draws the state; only rows that differ from what is shown are touched.
  void setState(const PopupState &state);
  /// Empties the conversation and scrolls to its top, as when it was new.
  void reset();
  /// Copies what is selected in any of the turns; false when nothing is.
  bool copySelection();
  /// Whether it moves towards what is new.
  bool isScrolling() const { return scrolling_.state() == QAbstractAnimation::Running; }

protected:
  void changeEvent(QEvent *event) override;
  void resizeEvent(QResizeEvent *event) override;
  void keyPressEvent(QKeyEvent *event) override;
  void focusInEvent(QFocusEvent *event) override;
  void focusOutEvent(QFocusEvent *event) override;
  void paintEvent(QPaintEvent *event) override;

private:
  struct Row {
    UUID id;
    std::unique_ptr<QWidget> view;
    SelectableTextView *text = nullptr;  // in it
  };

  Row makeRow(const ConversationMessage &message);
  void connectText(SelectableTextView &text);
  bool setMessages(const std::vector<ConversationMessage> &messages);
  void arrange();
  void scheduleScrolling();
  void scrollToBottom();
  void scrollTowards(QPoint pointer);
  bool isAtBottom() const;

  Pasteboard &pasteboard_;
  MainQueue &mainQueue_;
  QWidget *content_;
  LoadingRow *loadingRow_;
  ErrorRow *errorRow_;
  std::vector<Row> rows_;
  AnswerAnnouncer announcer_;
  bool isNew_ = true;        // nothing has been shown since reset()
  bool isFollowing_ = true;  // what is new at the bottom
  bool wasLoading_ = false;
  bool isScrollingScheduled_ = false;
  bool hasChangedSince_ = false;  // since scrolling was scheduled
  QVariantAnimation scrolling_;
  QTimer dragScrolling_;  // while a selection is dragged beyond an edge
  SelectableTextView *dragged_ = nullptr;
  int dragDistance_ = 0;
  WeakAnchor<ConversationView> weak_{this};
};

}  // namespace lumiwren
