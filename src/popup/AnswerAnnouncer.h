#pragma once

#include <QString>
#include <QWidget>

namespace lumiwren {

class SelectableTextView;

/// Tells assistive technology of an answer while it grows: whole sentences, each once, and of a failure.
class AnswerAnnouncer {
public:
  /// Speaks for a part of a window.
  explicit AnswerAnnouncer(QWidget &source) : source_(source) {}

  /// The answer that is last in the conversation, if any; whether more of it comes; the failure, if any.
  void update(SelectableTextView *answer, bool isGrowing, const QString &error);
  /// Another conversation begins.
  void reset();

  /// Where the last sentence of a text ends that is known to be whole: something follows it.
  static int endOfSentences(const QString &text);

private:
  QWidget &source_;
  SelectableTextView *answer_ = nullptr;
  int announced_ = 0;  // in the answer's plain text
  QString error_;
};

}  // namespace lumiwren
