#pragma once

#include <QWidget>

namespace lumiwren {

class ActivatingTextField;

/// The rounded background around the follow-up field; a click on it is a click into the field.
class FollowUpFieldFrame : public QWidget {
  Q_OBJECT

public:
  explicit FollowUpFieldFrame(ActivatingTextField *field, QWidget *parent = nullptr);

protected:
  void paintEvent(QPaintEvent *event) override;
  void mousePressEvent(QMouseEvent *event) override;

private:
  ActivatingTextField *field_;
};

}  // namespace lumiwren
