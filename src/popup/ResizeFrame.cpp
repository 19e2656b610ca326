#include "popup/ResizeFrame.h"

#include <QMouseEvent>
#include <QRegion>

#include <algorithm>

namespace lumiwren {
namespace {

constexpr int thickness = 5;
constexpr int cornerLength = 16;

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

Qt::Edges ResizeFrame::edgesAt(QPoint point) const {
  // A corner is longer than an edge is thick, or it could hardly be hit.
  const auto near = [](int distance, int along, int length) {
    return distance < thickness ||
           (distance < cornerLength && (along < thickness || along >= length - thickness));
  };
  Qt::Edges edges;
  edges.setFlag(Qt::LeftEdge, near(point.x(), point.y(), height()));
  edges.setFlag(Qt::RightEdge, near(width() - 1 - point.x(), point.y(), height()));
  edges.setFlag(Qt::TopEdge, near(point.y(), point.x(), width()));
  edges.setFlag(Qt::BottomEdge, near(height() - 1 - point.y(), point.x(), width()));
  return edges;
}

void ResizeFrame::resizeEvent(QResizeEvent *event) {
  setMask(QRegion(rect()).subtracted(rect().adjusted(thickness, thickness, -thickness, -thickness)));
  QWidget::resizeEvent(event);
}

void ResizeFrame::mousePressEvent(QMouseEvent *event) {
  if (event->button() == Qt::LeftButton) {
    held_ = edgesAt(event->position().toPoint());
    heldAt_ = event->globalPosition().toPoint();
    heldGeometry_ = window()->geometry();
  }
}

void ResizeFrame::mouseMoveEvent(QMouseEvent *event) {
  if (held_) {
    window()->setGeometry(resized(heldGeometry_, held_, event->globalPosition().toPoint() - heldAt_,
                                  window()->minimumSize(), window()->maximumSize()));
  } else {
    setCursor(cursorFor(edgesAt(event->position().toPoint())));
  }
}

void ResizeFrame::mouseReleaseEvent(QMouseEvent * /*event*/) {
  held_ = {};
}

}  // namespace lumiwren
