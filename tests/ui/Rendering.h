#pragma once

#include <QImage>
#include <QPixmap>
#include <QPoint>
#include <QSize>
#include <QWidget>

#include <cmath>
#include <optional>

namespace lumiwren::testing {

/// A widget as it is drawn on a screen of that scale factor, on a background of one colour.
inline QImage rendered(QWidget &widget, qreal devicePixelRatio, const QColor &background = Qt::transparent) {
  const QSizeF size = QSizeF(widget.size()) * devicePixelRatio;
  QImage image(static_cast<int>(std::ceil(size.width())), static_cast<int>(std::ceil(size.height())),
               QImage::Format_ARGB32_Premultiplied);
  image.setDevicePixelRatio(devicePixelRatio);
  image.fill(background);
  widget.render(&image, {}, {}, QWidget::DrawChildren);
  image.setDevicePixelRatio(1);
  return image;
}

/// The smallest rectangle with everything that is not transparent.
inline QRect inkOf(const QImage &image) {
  QRect ink;
  for (int y = 0; y < image.height(); ++y) {
    for (int x = 0; x < image.width(); ++x) {
      if (qAlpha(image.pixel(x, y)) > 8) {
        ink |= QRect(x, y, 1, 1);
      }
    }
  }
  return ink;
}

/// Where `part` is found in the image, pixel for pixel.
inline std::optional<QPoint> find(const QImage &part, const QImage &image) {
  for (int y = 0; y + part.height() <= image.height(); ++y) {
    for (int x = 0; x + part.width() <= image.width(); ++x) {
      if (image.copy(x, y, part.width(), part.height()) == part) {
        return QPoint(x, y);
      }
    }
  }
  return std::nullopt;
}

}  // namespace lumiwren::testing
