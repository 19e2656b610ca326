#pragma once

#include "markdown/views/SelectableTextView.h"

#include <QString>

namespace lumiwren {

/// A text as it stands, in the user-interface font.
class PlainTextView : public SelectableTextView {
  Q_OBJECT

public:
  explicit PlainTextView(int fontSize, QWidget *parent = nullptr);

  /// True when the text is another one than before.
  bool setText(const QString &text);
  /// The width at which no line has to be wrapped.
  int idealWidth() const;

private:
  const int fontSize_;
  QString text_;
};

}  // namespace lumiwren
