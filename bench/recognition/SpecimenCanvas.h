#pragma once

#include <QColor>
#include <QFont>
#include <QImage>
#include <QString>

#include <vector>

namespace lumiwren::bench {

/// Draws a picture of a screen with text, as a desktop would, and keeps what it says. Positions and sizes are
/// in points; the picture has `scale` pixels for each. A text's position is its top left corner.
class SpecimenCanvas {
public:
  /// Subpixels are red, green and blue from the left, in pictures of scale 1.
  enum class Smoothing { Grey, Subpixel };

  SpecimenCanvas(int width, int height, int scale, const QColor &ground);

  void setFont(const QString &family, int size, QFont::Weight weight = QFont::Normal);
  void setSmoothing(Smoothing smoothing) { smoothing_ = smoothing; }
  void setInk(const QColor &ink) { ink_ = ink; }

  void fill(int x, int y, int width, int height, const QColor &color, int radius = 0);
  void frame(int x, int y, int width, int height, const QColor &color, int radius = 0);
  /// From the colour at the top to the one at the bottom.
  void shade(int x, int y, int width, int height, const QColor &top, const QColor &bottom);
  /// One line; `part` says that it continues the line before, on the screen and in the text.
  void text(int x, int y, const QString &words, bool isContinuation = false);
  /// Letters of a monospaced font in cells, the first of which is that many to the right of `x`.
  void cell(int x, int y, int column, const QString &words, bool isContinuation);
  /// The words in the middle of a rectangle.
  void centered(int x, int y, int width, int height, const QString &words, bool isContinuation = false);
  /// Wrapped at words; returns where the next line would begin.
  int paragraph(int x, int y, int width, const QString &words);
  /// Cells side by side in columns that begin at `xs`.
  void row(const std::vector<int> &xs, int y, const std::vector<QString> &cells);
  /// The distance of lines.
  int lineHeight() const;

  const QImage &image() const { return image_; }
  /// What is written, in reading order, a line feed between lines.
  const QString &words() const { return words_; }

private:
  QImage image_;
  QFont font_;
  Smoothing smoothing_ = Smoothing::Grey;
  QColor ink_ = Qt::black;
  QString words_;
};

}  // namespace lumiwren::bench
