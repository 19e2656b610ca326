#include "popup/ResizeFrame.h"

#include <QMouseEvent>
#include <QRegion>

#include <algorithm>
#include <cmath>

namespace lumiwren {
namespace {

// From the panel's outline inwards: how long a corner is along the edges, or it could hardly be hit, and how
// deep, because a round corner is not where the edges would meet.
constexpr int cornerLength = 16;
constexpr int cornerDepth = 8;
constexpr int largestStep = 8;  // scale factors come in eighths at the finest

Qt::CursorShape cursorFor(Qt::Edges edges) {
  const bool horizontal = edges & (Qt::LeftEdge | Qt::RightEdge);
  const bool vertical = edges & (Qt::TopEdge | Qt::BottomEdge);
  if (horizontal && vertical) {
    return edges.testFlag(Qt::LeftEdge) == edges.testFlag(Qt::TopEdge) ? Qt::SizeFDiagCursor
                                                                       : Qt::SizeBDiagCursor;
  }
  return horizontal ? Qt::SizeHorCursor : Qt::SizeVerCursor;
}

}  // namespace

ResizeFrame::ResizeFrame(QWidget *window) : QWidget(window) {
  setMouseTracking(true);
  setAccessibleName(QStringLiteral("Edges"));
}

QRect ResizeFrame::resized(const QRect &geometry, Qt::Edges edges, QPoint distance, QSize minimum,
                           QSize maximum) {
  QRect result = geometry;
  if (edges.testFlag(Qt::LeftEdge)) {
    result.setLeft(std::clamp(geometry.left() + distance.x(), geometry.right() + 1 - maximum.width(),
                              geometry.right() + 1 - minimum.width()));
  } else if (edges.testFlag(Qt::RightEdge)) {
    result.setWidth(std::clamp(geometry.width() + distance.x(), minimum.width(), maximum.width()));
  }
  if (edges.testFlag(Qt::TopEdge)) {
    result.setTop(std::clamp(geometry.top() + distance.y(), geometry.bottom() + 1 - maximum.height(),
                             geometry.bottom() + 1 - minimum.height()));
  } else if (edges.testFlag(Qt::BottomEdge)) {
    result.setHeight(std::clamp(geometry.height() + distance.y(), minimum.height(), maximum.height()));
  }
  return result;
}

int ResizeFrame::wholePixelStep(qreal scale) {
  for (int step = 1; step <= largestStep; ++step) {
    if (const qreal pixels = step * scale; std::abs(pixels - std::round(pixels)) < 1e-6) {
      return step;
    }
  }
  return 1;
}

void ResizeFrame::setReach(int outside, int inside) {
  outside_ = outside;
  inside_ = inside;
}

void ResizeFrame::surround(const QRect &panel) {
  setGeometry(panel.adjusted(-outside_, -outside_, outside_, outside_));
  const int thickness = outside_ + inside_;
  const int corner = outside_ + cornerDepth;
  const QRect inner = rect().adjusted(thickness, thickness, -thickness, -thickness);
  // Nothing but the corners is outside both of these.
  const QRegion cross =
      QRegion(rect().adjusted(corner, 0, -corner, 0)) + rect().adjusted(0, corner, 0, -corner);
  setMask(QRegion(rect()) - (cross & inner));
}

Qt::Edges ResizeFrame::edgesAt(QPoint point) const {
  const int thickness = outside_ + inside_;
  const int corner = outside_ + cornerDepth;
  const auto near = [&](int distance, int along, int length) {
    const int alongFromCorner = std::min(along, length - 1 - along);
    return distance < thickness || (distance < outside_ + cornerLength && alongFromCorner < thickness) ||
           (distance < corner && alongFromCorner < corner);
  };
  Qt::Edges edges;
  edges.setFlag(Qt::LeftEdge, near(point.x(), point.y(), height()));
  edges.setFlag(Qt::RightEdge, near(width() - 1 - point.x(), point.y(), height()));
  edges.setFlag(Qt::TopEdge, near(point.y(), point.x(), width()));
  edges.setFlag(Qt::BottomEdge, near(height() - 1 - point.y(), point.x(), width()));
  return edges;
}

void ResizeFrame::mousePressEvent(QMouseEvent *event) {
  if (event->button() == Qt::LeftButton) {
    held_ = edgesAt(event->position().toPoint());
    heldAt_ = event->globalPosition();
    heldGeometry_ = window()->geometry();
  }
}

void ResizeFrame::mouseMoveEvent(QMouseEvent *event) {
  if (!event->buttons().testFlag(Qt::LeftButton)) {
    letGo();  // The release went to somebody else.
    setCursor(cursorFor(edgesAt(event->position().toPoint())));
  } else if (held_) {
    const int step = wholePixelStep(devicePixelRatioF());
    const QPoint distance = ((event->globalPosition() - heldAt_) / step).toPoint() * step;
    window()->setGeometry(
        resized(heldGeometry_, held_, distance, window()->minimumSize(), window()->maximumSize()));
  }
}

void ResizeFrame::mouseReleaseEvent(QMouseEvent *event) {
  if (event->button() == Qt::LeftButton) {
    letGo();
  }
}

}  // namespace lumiwren
