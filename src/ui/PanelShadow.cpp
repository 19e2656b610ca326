#include "ui/PanelShadow.h"

#include "ui/DevicePixels.h"

#include <QImage>
#include <QPainterPath>

#include <cmath>
#include <cstddef>
#include <vector>

namespace lumiwren {
namespace {

constexpr int passes = 3;  // of a moving average, which together are as good as a Gaussian

/// The moving average over 2 * `reach` + 1 values of `count` that lie `stride` apart; beyond them there are
/// zeros.
void average(float *values, std::size_t count, std::size_t stride, int reach, std::vector<float> &line) {
  line.assign(count + 2 * static_cast<std::size_t>(reach) + 1, 0);
  for (std::size_t index = 0; index < count; ++index) {
    line[index + static_cast<std::size_t>(reach)] = values[index * stride];
  }
  const std::size_t width = 2 * static_cast<std::size_t>(reach) + 1;
  float sum = 0;
  for (std::size_t index = 0; index + 1 < width; ++index) {
    sum += line[index];
  }
  for (std::size_t index = 0; index < count; ++index) {
    sum += line[index + width - 1];
    values[index * stride] = sum / static_cast<float>(width);
    sum -= line[index];
  }
}

/// The opacities of an image, from 0 to 1, blurred.
std::vector<float> blurredAlpha(const QImage &image, double deviation) {
  const auto width = static_cast<std::size_t>(image.width());
  const auto height = static_cast<std::size_t>(image.height());
  std::vector<float> alpha(width * height);
  for (std::size_t y = 0; y < height; ++y) {
    const auto *pixels = reinterpret_cast<const QRgb *>(image.constScanLine(static_cast<int>(y)));
    for (std::size_t x = 0; x < width; ++x) {
      alpha[y * width + x] = static_cast<float>(qAlpha(pixels[x])) / 255;
    }
  }
  // The variance of an average over w values is (w * w - 1) / 12.
  const int reach = qRound((std::sqrt(12 * deviation * deviation / passes + 1) - 1) / 2);
  std::vector<float> line;
  for (int pass = 0; pass < passes; ++pass) {
    for (std::size_t y = 0; y < height; ++y) {
      average(&alpha[y * width], width, 1, reach, line);
    }
    for (std::size_t x = 0; x < width; ++x) {
      average(&alpha[x], height, width, reach, line);
    }
  }
  return alpha;
}

}  // namespace

QMargins PanelShadow::marginsAt(qreal scale) {
  const auto pixels = [scale](int points) { return qRound(points * scale); };
  return {pixels(margins.left()), pixels(margins.top()), pixels(margins.right()), pixels(margins.bottom())};
}

void PanelShadow::prepare(qreal scale) {
  if (scale == scale_) {
    return;
  }
  scale_ = scale;
  reach_ = marginsAt(scale);
  // A shadow reaches as far inwards as outwards, and the corner itself is curved.
  cornerSize_ = static_cast<int>(std::ceil((cornerRadius_ + radius + offset) * scale));
  const int side = 2 * cornerSize_ + 1;
  QImage image(QSize(side, side).grownBy(reach_), QImage::Format_ARGB32_Premultiplied);
  image.fill(Qt::transparent);
  QPainterPath shape;
  shape.addRoundedRect(QRectF(reach_.left(), reach_.top(), side, side), cornerRadius_ * scale,
                       cornerRadius_ * scale);
  {
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.fillPath(shape.translated(0, offset * scale), Qt::black);
  }
  const auto alpha = blurredAlpha(image, radius * scale / 2);
  std::size_t index = 0;
  for (int y = 0; y < image.height(); ++y) {
    auto *const row = reinterpret_cast<QRgb *>(image.scanLine(y));
    for (int x = 0; x < image.width(); ++x, ++index) {
      row[x] = qRgba(0, 0, 0, static_cast<int>(std::lround(255 * opacity * double{alpha[index]})));
    }
  }
  {
    // What is below the panel's material shines through as bright as it is.
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setCompositionMode(QPainter::CompositionMode_DestinationOut);
    painter.fillPath(shape, Qt::black);
  }
  tile_ = QPixmap::fromImage(std::move(image));
}

void PanelShadow::paint(QPainter &painter, const QRect &panel) {
  const DevicePixels device(painter);
  prepare(device.scale());
  const QRect inner = device.rect(panel);
  const QRect outer = inner.marginsAdded(reach_);
  const QRect innerTile = tile_.rect().marginsRemoved(reach_);
  const auto draw = [&](const QRect &target, const QRect &source) {
    painter.drawPixmap(target, tile_, source);
  };
  // The corners: `from` a corner of the panel outwards to one of the shadow, and as far inwards.
  const int left = reach_.left() + cornerSize_;
  const int top = reach_.top() + cornerSize_;
  const int right = reach_.right() + cornerSize_;
  const int bottom = reach_.bottom() + cornerSize_;
  const QRect tile = tile_.rect();
  const auto corner = [&](int x, int y, int width, int height, int tileX, int tileY) {
    draw({x, y, width, height}, {tileX, tileY, width, height});
  };
  corner(outer.left(), outer.top(), left, top, 0, 0);
  corner(outer.right() + 1 - right, outer.top(), right, top, tile.width() - right, 0);
  corner(outer.left(), outer.bottom() + 1 - bottom, left, bottom, 0, tile.height() - bottom);
  corner(outer.right() + 1 - right, outer.bottom() + 1 - bottom, right, bottom, tile.width() - right,
         tile.height() - bottom);
  // The edges, where every row or column of pixels is like its neighbour.
  const int across = outer.width() - left - right;
  const int along = outer.height() - top - bottom;
  draw({outer.left() + left, outer.top(), across, reach_.top()}, {left, 0, 1, reach_.top()});
  draw({outer.left() + left, inner.bottom() + 1, across, reach_.bottom()},
       {left, innerTile.bottom() + 1, 1, reach_.bottom()});
  draw({outer.left(), outer.top() + top, reach_.left(), along}, {0, top, reach_.left(), 1});
  draw({inner.right() + 1, outer.top() + top, reach_.right(), along},
       {innerTile.right() + 1, top, reach_.right(), 1});
}

}  // namespace lumiwren
