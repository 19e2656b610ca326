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
    const QString text = answer_->plainText();
    // What was announced may have become shorter: markup is text until its other half has come.
    announced_ = std::min(announced_, static_cast<int>(text.size()));
    const QString rest = text.mid(announced_);
    const int end = isGrowing ? endOfSentences(rest) : static_cast<int>(rest.size());
    if (end > 0) {
      announced_ += end;
      answer_->tellAssistiveTechnology(announced_);
      speak_(rest.left(end).trimmed());
    }
  }
  if (error != error_) {
    error_ = error;
    if (!error_.isEmpty()) {
      speak_(error_);
    }
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
