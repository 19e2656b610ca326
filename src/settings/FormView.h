#pragma once

#include <QWidget>

namespace lumiwren {

/// What a small window holds: of a fixed width, which grows with the text.
class FormView : public QWidget {
  Q_OBJECT

public:
  /// `width` is in points, for text of the usual size.
  explicit FormView(int width, QWidget *parent = nullptr);

protected:
  void changeEvent(QEvent *event) override;

private:
  const int width_;
};

}  // namespace lumiwren
