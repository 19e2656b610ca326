#pragma once

#include "markdown/views/PlainTextView.h"

#include <QLabel>
#include <QString>
#include <QWidget>

namespace lumiwren {

/// What stands in the conversation beside answers. Each row is as high as it needs to be at a width; asking
/// for that height arranges the row for the width.

/// A user's turn: a bubble on the right that is as wide as its text.
class UserBubble : public QWidget {
  Q_OBJECT

public:
  explicit UserBubble(QWidget *parent = nullptr);

  /// True when the text is another one than before.
  bool setText(const QString &text);
  PlainTextView &text() { return *text_; }
  bool hasHeightForWidth() const override { return true; }
  int heightForWidth(int width) const override;

protected:
  void paintEvent(QPaintEvent *event) override;

private:
  PlainTextView *text_;
};

/// A warning sign beside the failure's text.
class ErrorRow : public QWidget {
  Q_OBJECT

public:
  explicit ErrorRow(QWidget *parent = nullptr);

  void setText(const QString &text);
  PlainTextView &text() { return *text_; }
  /// Above and below the row's content.
  void setVerticalPadding(int top, int bottom);
  bool hasHeightForWidth() const override { return true; }
  int heightForWidth(int width) const override;

protected:
  void paintEvent(QPaintEvent *event) override;

private:
  PlainTextView *text_;
  int top_ = 0;
  int bottom_ = 0;
};

/// A turning wheel beside "Getting explanation...".
class LoadingRow : public QWidget {
  Q_OBJECT

public:
  explicit LoadingRow(QWidget *parent = nullptr);

protected:
  void changeEvent(QEvent *event) override;

private:
  void tint();

  QLabel *label_;
};

}  // namespace lumiwren
