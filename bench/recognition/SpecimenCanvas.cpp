#include "recognition/SpecimenCanvas.h"

#include <QFontInfo>
#include <QFontMetrics>
#include <QLinearGradient>
#include <QPainter>
#include <QRawFont>
#include <QStringList>

#include <cmath>
#include <stdexcept>

namespace lumiwren::bench {
namespace {

/// Each channel is covered by its own third of the pixel. The platforms without a screen draw no such text by
/// themselves.
void drawSubpixels(QImage &image, int x, int baseline, const QString &words, const QFont &font,
                   const QColor &ink) {
  const QRawFont raw = QRawFont::fromFont(font);
  const auto glyphs = raw.glyphIndexesForString(words);
  const auto advances = raw.advancesForGlyphIndexes(glyphs);
  const auto blend = [](int ground, int over, int coverage) {
    return ground + (over - ground) * coverage / 255;
  };
  double pen = x;
  for (qsizetype glyph = 0; glyph < glyphs.size(); ++glyph) {
    const QImage coverage = raw.alphaMapForGlyph(glyphs[glyph], QRawFont::SubPixelAntialiasing);
    const QRectF box = raw.boundingRect(glyphs[glyph]);
    // One pixel more on each side: neighbouring thirds are mixed.
    const int left = static_cast<int>(std::floor(pen + box.left() + 0.5)) - 1;
    const int top = baseline + static_cast<int>(std::floor(box.top()));
    for (int row = 0; row < coverage.height(); ++row) {
      for (int column = 0; column < coverage.width(); ++column) {
        if (image.rect().contains(left + column, top + row)) {
          const QRgb alpha = coverage.pixel(column, row);
          const QColor ground = image.pixelColor(left + column, top + row);
          image.setPixel(left + column, top + row,
                         qRgb(blend(ground.red(), ink.red(), qRed(alpha)),
                              blend(ground.green(), ink.green(), qGreen(alpha)),
                              blend(ground.blue(), ink.blue(), qBlue(alpha))));
        }
      }
    }
    pen += advances[glyph].x();
  }
}

}  // namespace

SpecimenCanvas::SpecimenCanvas(int width, int height, int scale, const QColor &ground)
    : image_(width * scale, height * scale, QImage::Format_RGB32) {
  image_.setDevicePixelRatio(scale);
  image_.fill(ground);
}

void SpecimenCanvas::setFont(const QString &family, int size, QFont::Weight weight) {
  font_ = QFont(family);
  font_.setPixelSize(size);
  font_.setWeight(weight);
  if (QFontInfo(font_).family() != family) {
    throw std::runtime_error("there is no font " + family.toStdString());
  }
}

void SpecimenCanvas::fill(int x, int y, int width, int height, const QColor &color, int radius) {
  QPainter painter(&image_);
  painter.setRenderHint(QPainter::Antialiasing, radius > 0);
  painter.setPen(Qt::NoPen);
  painter.setBrush(color);
  painter.drawRoundedRect(x, y, width, height, radius, radius);
}

void SpecimenCanvas::frame(int x, int y, int width, int height, const QColor &color, int radius) {
  QPainter painter(&image_);
  painter.setRenderHint(QPainter::Antialiasing, radius > 0);
  painter.setPen(color);
  painter.drawRoundedRect(QRectF(x + 0.5, y + 0.5, width - 1, height - 1), radius, radius);
}

void SpecimenCanvas::shade(int x, int y, int width, int height, const QColor &top, const QColor &bottom) {
  QLinearGradient gradient(0, y, 0, y + height);
  gradient.setColorAt(0, top);
  gradient.setColorAt(1, bottom);
  QPainter(&image_).fillRect(x, y, width, height, gradient);
}

void SpecimenCanvas::text(int x, int y, const QString &words, bool isContinuation) {
  const int baseline = y + QFontMetrics(font_).ascent();
  if (smoothing_ == Smoothing::Subpixel) {
    drawSubpixels(image_, x, baseline, words, font_, ink_);
  } else {
    QPainter painter(&image_);
    painter.setFont(font_);
    painter.setPen(ink_);
    painter.drawText(x, baseline, words);
  }
  if (!words_.isEmpty()) {
    words_ += isContinuation ? u' ' : u'\n';
  }
  words_ += words;
}

void SpecimenCanvas::cell(int x, int y, int column, const QString &words, bool isContinuation) {
  text(x + column * QFontMetrics(font_).horizontalAdvance(u'0'), y, words, isContinuation);
}

void SpecimenCanvas::centered(int x, int y, int width, int height, const QString &words,
                              bool isContinuation) {
  const QFontMetrics metrics(font_);
  text(x + (width - metrics.horizontalAdvance(words)) / 2, y + (height - metrics.height()) / 2, words,
       isContinuation);
}

int SpecimenCanvas::paragraph(int x, int y, int width, const QString &words) {
  const QFontMetrics metrics(font_);
  QString line;
  for (const auto &word : words.split(u' ')) {
    const QString longer = line.isEmpty() ? word : line + u' ' + word;
    if (!line.isEmpty() && metrics.horizontalAdvance(longer) > width) {
      text(x, y, line);
      y += lineHeight();
      line = word;
    } else {
      line = longer;
    }
  }
  text(x, y, line);
  return y + lineHeight();
}

void SpecimenCanvas::row(const std::vector<int> &xs, int y, const std::vector<QString> &cells) {
  for (std::size_t column = 0; column < cells.size(); ++column) {
    text(xs.at(column), y, cells[column], column > 0);
  }
}

int SpecimenCanvas::lineHeight() const {
  return QFontMetrics(font_).height() + font_.pixelSize() / 5;
}

}  // namespace lumiwren::bench
