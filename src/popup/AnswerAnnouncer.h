#pragma once

#include "markdown/views/SelectableTextView.h"

#include <QPointer>
#include <QString>

#include <functional>
#include <utility>

namespace lumiwren {

/// Tells assistive technology of an answer while it grows: whole sentences, each once, and of a failure.
class AnswerAnnouncer {
public:
  using Speak = std::function<void(const QString &text)>;

  explicit AnswerAnnouncer(Speak speak) : speak_(std::move(speak)) {}

  /// The answer that is last in the conversation, if any; whether more of it comes; the failure, if any.
  void update(SelectableTextView *answer, bool isGrowing, const QString &error);
  /// Another conversation begins.
  void reset();

  /// Where the last sentence of a text ends that is known to be whole: something follows it.
  static int endOfSentences(const QString &text);

private:
  void say(const QString &text) const;

  const Speak speak_;
  QPointer<SelectableTextView> answer_;
  int announced_ = 0;  // in the answer's plain text
  QString error_;
};

}  // namespace lumiwren
