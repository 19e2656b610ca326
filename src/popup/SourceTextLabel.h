#pragma once

#include <QLabel>

namespace lumiwren {

/// A plain text on two lines at the most; what does not fit ends in an ellipsis.
class SourceTextLabel : public QLabel {
  Q_OBJECT

public:
  explicit SourceTextLabel(QWidget *parent = nullptr);

  bool hasHeightForWidth() const override { return true; }
  int heightForWidth(int width) const override;
  QSize sizeHint() const override;
  QSize minimumSizeHint() const override;

protected:
  void changeEvent(QEvent *event) override;
  void paintEvent(QPaintEvent *event) override;
};

}  // namespace lumiwren
