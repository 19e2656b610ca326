#include "ui/ProgressIndicator.h"

#include "ui/Fonts.h"
#include "ui/Motion.h"
#include "ui/Palette.h"

#include <QAccessible>
#include <QAccessibleWidget>
#include <QEvent>
#include <QPainter>

#include <chrono>

namespace lumiwren {
namespace {

constexpr double drawnScale = 0.8;
constexpr int spokes = 8;
constexpr double spokeBegin = 0.45;  // of the radius, as the width
constexpr double spokeWidth = 0.22;
constexpr std::chrono::milliseconds stepDuration{100};

class ProgressIndicatorAccessible : public QAccessibleWidget {
public:
  explicit ProgressIndicatorAccessible(QWidget *indicator)
      : QAccessibleWidget(indicator, QAccessible::ProgressBar) {}

  QAccessible::State state() const override {
    auto result = QAccessibleWidget::state();
    result.busy = true;
    result.readOnly = true;
    return result;
  }
};

QAccessibleInterface *makeAccessible(const QString & /*className*/, QObject *object) {
  auto *const indicator = qobject_cast<ProgressIndicator *>(object);
  return indicator != nullptr ? new ProgressIndicatorAccessible(indicator) : nullptr;
}

}  // namespace

ProgressIndicator::ProgressIndicator(int size, QWidget *parent)
    : QWidget(parent), size_(size), motion_(observeReducesMotion([this] { updateTurning(); })) {
  QAccessible::installFactory(&makeAccessible);  // A factory that is there is not installed again.
  setAccessibleName(QStringLiteral("Loading"));
  setAttribute(Qt::WA_TransparentForMouseEvents);
  setFixedSize(scaledSize(size_), scaledSize(size_));
  timer_.setInterval(stepDuration);
  connect(&timer_, &QTimer::timeout, this, [this] {
    step_ = (step_ + 1) % spokes;
    update();
  });
}

void ProgressIndicator::updateTurning() {
  if (isVisible() && !reducesMotion()) {
    timer_.start();
  } else {
    timer_.stop();
  }
}

void ProgressIndicator::changeEvent(QEvent *event) {
  if (event->type() == QEvent::FontChange) {
    setFixedSize(scaledSize(size_), scaledSize(size_));
  }
  QWidget::changeEvent(event);
}

void ProgressIndicator::paintEvent(QPaintEvent * /*event*/) {
  QPainter painter(this);
  painter.setRenderHint(QPainter::Antialiasing);
  const auto color = SemanticColors(palette()).primary;
  const double radius = drawnScale * width() / 2.0;
  const double thickness = radius * spokeWidth;
  painter.translate(width() / 2.0, height() / 2.0);
  for (int spoke = 0; spoke < spokes; ++spoke) {
    const int age = (step_ - spoke + spokes) % spokes;
    painter.setPen(
        QPen(withOpacity(color, 0.72 - 0.6 * age / (spokes - 1)), thickness, Qt::SolidLine, Qt::RoundCap));
    painter.drawLine(QPointF(0, -radius * spokeBegin - thickness / 2), QPointF(0, -radius + thickness / 2));
    painter.rotate(360.0 / spokes);
  }
}

void ProgressIndicator::showEvent(QShowEvent *event) {
  updateTurning();
  QWidget::showEvent(event);
}

void ProgressIndicator::hideEvent(QHideEvent *event) {
  timer_.stop();
  QWidget::hideEvent(event);
}

}  // namespace lumiwren
