#pragma once

#include <QRadioButton>
#include <QString>

#include <functional>

namespace lumiwren {

/// One of several tiles of which one is selected, with a symbol beside its title.
class InputTypeButton : public QRadioButton {
  Q_OBJECT

public:
  /// `icon` is the name of a symbol. The action is run whenever the tile is chosen.
  InputTypeButton(const QString &title, QString icon, const QString &tooltip, std::function<void()> action,
                  QWidget *parent = nullptr);

  bool isSelected() const { return isChecked(); }
  void setSelected(bool selected) { setChecked(selected); }

  QSize sizeHint() const override;
  QSize minimumSizeHint() const override { return sizeHint(); }

protected:
  void changeEvent(QEvent *event) override;
  bool hitButton(const QPoint &position) const override;
  void paintEvent(QPaintEvent *event) override;

private:
  const QString icon_;
};

}  // namespace lumiwren
