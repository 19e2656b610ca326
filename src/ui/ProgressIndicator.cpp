#include "ui/ProgressIndicator.h"

#include "ui/Palette.h"

#include <QPainter>

#include <chrono>

namespace lumiwren {
namespace {

constexpr int spokes = 8;
constexpr std::chrono::milliseconds stepDuration{100};

}  // namespace

ProgressIndicator::ProgressIndicator(int size, QWidget *parent) : QWidget(parent) {
  setFixedSize(size, size);
  setAttribute(Qt::WA_TransparentForMouseEvents);
  timer_.setInterval(stepDuration);
  connect(&timer_, &QTimer::timeout, this, [this] {
    step_ = (step_ + 1) % spokes;
    update();
  });
}

void ProgressIndicator::paintEvent(QPaintEvent * /*event*/) {
  QPainter painter(this);
  painter.setRenderHint(QPainter::Antialiasing);
  const auto color = SemanticColors(palette()).primary;
  const double radius = width() / 2.0;
  painter.translate(radius, radius);
  for (int spoke = 0; spoke < spokes; ++spoke) {
    const int age = (step_ - spoke + spokes) % spokes;
    painter.setPen(QPen(withOpacity(color, 0.72 - 0.6 * age / (spokes - 1)), radius * 0.22, Qt::SolidLine,
                        Qt::RoundCap));
    painter.save();
    painter.rotate(360.0 * spoke / spokes);
    painter.drawLine(QPointF(0, -radius * 0.48), QPointF(0, -radius * 0.84));
    painter.restore();
  }
}

void ProgressIndicator::showEvent(QShowEvent *event) {
  timer_.start();
  QWidget::showEvent(event);
}

void ProgressIndicator::hideEvent(QHideEvent *event) {
  timer_.stop();
  QWidget::hideEvent(event);
}

}  // namespace lumiwren
