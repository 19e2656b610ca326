#pragma once

#include "base/MainQueue.h"
#include "base/UUID.h"
#include "base/Weak.h"
#include "popup/ConversationRows.h"
#include "popup/PopupState.h"

#include <QScrollArea>
#include <QVariantAnimation>

#include <memory>
#include <string>
#include <vector>

namespace lumiwren {

class MarkdownTextView;

/// The scrolling conversation: answers, bubbles, and the loading or error row. Follows what is new at the
/// bottom.
class ConversationView : public QScrollArea {
  Q_OBJECT

public:
  explicit ConversationView(MainQueue &mainQueue, QWidget *parent = nullptr);
  ~ConversationView() override;

  /// Draws the state; only rows that differ from what is shown are touched.
  void setState(const PopupState &state);
  /// Empties the conversation and scrolls to its top, as when it was new.
  void reset();

protected:
  void resizeEvent(QResizeEvent *event) override;

private:
  struct Row {
    UUID id;
    std::unique_ptr<QWidget> view;
  };

  bool setMessages(const std::vector<ConversationMessage> &messages);
  void arrange();
  void scheduleScrolling();
  void scrollToBottom();

  MainQueue &mainQueue_;
  QWidget *content_;
  LoadingRow *loadingRow_;
  ErrorRow *errorRow_;
  std::vector<Row> rows_;
  bool isNew_ = true;  // nothing has been shown since reset()
  bool wasLoading_ = false;
  bool isScrollingScheduled_ = false;
  bool hasChangedSince_ = false;  // since scrolling was scheduled
  QVariantAnimation scrolling_;
  WeakAnchor<ConversationView> weak_{this};
};

}  // namespace lumiwren
