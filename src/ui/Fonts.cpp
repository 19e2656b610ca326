#include "ui/Fonts.h"

#include <QApplication>
#include <QEvent>
#include <QFontDatabase>
#include <QPointer>
#include <QWidget>

#include <algorithm>
#include <cmath>

namespace lumiwren {
namespace {

constexpr double smallestUsualFont = 9;
constexpr double largestUsualFont = 11;

double currentTextScale = 1;

QFont sized(QFontDatabase::SystemFont kind, int size, QFont::Weight weight) {
  QFont font = QFontDatabase::systemFont(kind);
  font.setPixelSize(scaledSize(size));
  font.setWeight(weight);
  return font;
}

bool isWhole(double number) {
  return std::abs(number - std::round(number)) < 0.01;
}

}  // namespace

QFont systemFont(int size, QFont::Weight weight) {
  return sized(QFontDatabase::GeneralFont, size, weight);
}

QFont monospacedSystemFont(int size) {
  return sized(QFontDatabase::FixedFont, size, QFont::Normal);
}

int scaledSize(int size) {
  return std::max(1, static_cast<int>(std::lround(size * currentTextScale)));
}

double textScale() {
  return currentTextScale;
}

void setTextScale(double scale) {
  if (scale == currentTextScale) {
    return;
  }
  currentTextScale = scale;
  // The toolkit itself would tell those widgets only whose font is inherited from the application's.
  const auto all = QApplication::allWidgets();
  const QList<QPointer<QWidget>> widgets(all.begin(), all.end());
  for (const auto &widget : widgets) {
    if (widget) {
      QEvent change(QEvent::FontChange);
      QCoreApplication::sendEvent(widget, &change);
    }
  }
}

double remainingTextScale(double desktopTextScale, double devicePixelRatio) {
  // A whole ratio says nothing about a scale below 1: 1 is a multiple of 0.5, but of what the screen does not
  // have.
  const bool mayContain = desktopTextScale >= 1 || !isWhole(devicePixelRatio);
  return mayContain && isWhole(devicePixelRatio / desktopTextScale) ? 1 : desktopTextScale;
}

double textScaleOfFont(double pointSize) {
  return pointSize <= 0 ? 1 : pointSize / std::clamp(pointSize, smallestUsualFont, largestUsualFont);
}

}  // namespace lumiwren
