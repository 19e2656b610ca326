#pragma once

#include <QPixmap>
#include <QPointer>
#include <QVariantAnimation>
#include <QWidget>

#include <memory>

namespace lumiwren {

/// Lays a sheet over everything else in a widget: what is below is dimmed, and neither the pointer nor Tab
/// gets there until the sheet is dismissed. The sheet slides in and out, unless the user wants no motion.
class SheetHost : public QWidget {
  Q_OBJECT

public:
  /// Covers `parent`, whatever its size becomes, while there is a sheet.
  explicit SheetHost(QWidget *parent);

  bool isPresenting() const { return sheet_ != nullptr; }
  /// Shows the content, as large as it would like to be if there is room, and gives it the keyboard; a widget
  /// with a focus proxy says by that where the keyboard goes first. There is one sheet at a time.
  void present(std::unique_ptr<QWidget> content);
  /// Hides the content at once, for good, and gives the keyboard back to who had it. The content may call
  /// this.
  void dismiss();

Q_SIGNALS:
  /// Escape was pressed, and nothing in the sheet wanted it.
  void escaped();

protected:
  bool eventFilter(QObject *watched, QEvent *event) override;
  void hideEvent(QHideEvent *event) override;
  void paintEvent(QPaintEvent *event) override;

private:
  class Sheet;

  void arrange();
  void slide(double progress);
  void setProgress(double progress);
  QPoint placeOf(QSize sheet) const;

  Sheet *sheet_ = nullptr;
  QPixmap leaving_;      // what is left of the last sheet while it slides out
  double progress_ = 0;  // how far the sheet is in, from 0 to 1
  QVariantAnimation sliding_;
  QPointer<QWidget> previousFocus_;
};

}  // namespace lumiwren
