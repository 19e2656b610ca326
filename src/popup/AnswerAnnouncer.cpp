#include "popup/AnswerAnnouncer.h"

#include <QTextBoundaryFinder>

#include <algorithm>

namespace lumiwren {

void AnswerAnnouncer::update(SelectableTextView *answer, bool isGrowing, const QString &error) {
  if (answer != answer_) {
    answer_ = answer;
    announced_ = 0;
  }
  if (answer_) {
    // What was announced may have become shorter: markup is text until its other half has come.
    announced_ = std::min(announced_, answer_->length());
    const QString rest = answer_->plainTextFrom(announced_);
    const int end = isGrowing ? endOfSentences(rest) : static_cast<int>(rest.size());
    if (end > 0) {
      announced_ += end;
      answer_->tellAssistiveTechnology(announced_);
      say(rest.left(end).trimmed());
    }
  }
  if (error != error_) {
    error_ = error;
    say(error_);
  }
}

void AnswerAnnouncer::say(const QString &text) const {
  if (!text.isEmpty()) {
    speak_(text);
  }
}

void AnswerAnnouncer::reset() {
  answer_.clear();
  announced_ = 0;
  error_.clear();
}

int AnswerAnnouncer::endOfSentences(const QString &text) {
  QTextBoundaryFinder finder(QTextBoundaryFinder::Sentence, text);
  finder.toEnd();
  return static_cast<int>(std::max<qsizetype>(0, finder.toPreviousBoundary()));
}

}  // namespace lumiwren
