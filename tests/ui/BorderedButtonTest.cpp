#include "ui/BorderedButton.h"

#include "ui/Fonts.h"
#include "ui/Motion.h"
#include "ui/Rendering.h"
#include "ui/Symbols.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QImage>

#include <algorithm>
#include <cmath>
#include <vector>

namespace lumiwren {
namespace {

using testing::find;
using testing::rendered;

const QString copySymbol = QStringLiteral("doc.on.doc");
const QString copyText = QStringLiteral("Copy Result");
const QString copiedSymbol = QStringLiteral("checkmark");
const QString copiedText = QStringLiteral("Copied!");

class BorderedButtonTest : public ::testing::Test {
protected:
  BorderedButtonTest() { button_.setLabel(copySymbol, copyText); }
  void TearDown() override {
    setTextScale(1);
    setReducesMotion(false);
  }

  /// The widths that the button asks for until it has the one it ends with.
  std::vector<int> widthsUntil(int last) {
    std::vector<int> widths{button_.sizeHint().width()};
    const QDeadlineTimer limit(10000);
    while (widths.back() != last && !limit.hasExpired()) {
      QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
      widths.push_back(button_.sizeHint().width());
    }
    return widths;
  }

  int finalWidth(const QString &symbolName, const QString &text) {
    BorderedButton other;
    other.setLabel(symbolName, text);
    return other.sizeHint().width();
  }

  BorderedButton button_;
};

TEST_F(BorderedButtonTest, HasASmallLabelWithTheSymbolBeforeIt) {
  EXPECT_EQ(button_.font().pixelSize(), 11);
  EXPECT_EQ(button_.text(), copyText);
  EXPECT_EQ(button_.sizeHint(),
            QSize(9 + 13 + 4 + button_.fontMetrics().horizontalAdvance(copyText) + 9, 24));
}

TEST_F(BorderedButtonTest, SymbolAndOutlineAreOnWholePixelsAtEveryScale) {
  button_.resize(button_.sizeHint());
  QPalette palette;
  palette.setColor(QPalette::WindowText, Qt::black);
  button_.setPalette(palette);
  for (const qreal scale : {1.0, 1.25, 1.5, 1.75, 2.0}) {
    const QImage image = rendered(button_, scale, Qt::white);
    const int middle = image.height() / 2;
    const int line = scale < 1.6 ? 1 : 2;
    const QRgb edge = image.pixel(0, middle);
    const QRgb inside = image.pixel(line, middle);
    EXPECT_NE(edge, inside);
    for (int x = 0; x < line; ++x) {
      EXPECT_EQ(image.pixel(x, middle), edge) << "scale " << scale << ", column " << x;
    }
    for (int x = line; x < line + 4; ++x) {
      EXPECT_EQ(image.pixel(x, middle), inside) << "scale " << scale << ", column " << x;
    }
    const int symbolSide = static_cast<int>(std::lround(13 * scale));
    QImage expected(symbolSide, symbolSide, QImage::Format_ARGB32_Premultiplied);
    expected.fill(inside);
    QPixmap drawing = symbol(copySymbol, 13, Qt::black, scale);
    drawing.setDevicePixelRatio(1);
    QPainter(&expected).drawPixmap(0, 0, drawing);
    EXPECT_TRUE(find(expected, image)) << "blurred at scale " << scale;
  }
}

TEST_F(BorderedButtonTest, ALabelChangesAtOnceUnlessToldOtherwise) {
  button_.show();
  button_.setLabel(copiedSymbol, copiedText);
  EXPECT_EQ(button_.text(), copiedText);
  EXPECT_EQ(button_.sizeHint().width(), finalWidth(copiedSymbol, copiedText));
}

TEST_F(BorderedButtonTest, ACrossFadeLeadsFromOneLabelAndWidthToTheOther) {
  button_.show();
  const int before = button_.sizeHint().width();
  const int after = finalWidth(copiedSymbol, copiedText);
  ASSERT_LT(after, before);
  button_.setLabel(copiedSymbol, copiedText, LabelChange::CrossFade);
  EXPECT_EQ(button_.text(), copiedText);
  const auto widths = widthsUntil(after);
  EXPECT_EQ(widths.front(), before);
  EXPECT_EQ(widths.back(), after);
  EXPECT_TRUE(std::is_sorted(widths.rbegin(), widths.rend()));
  EXPECT_TRUE(
      std::any_of(widths.begin(), widths.end(), [&](int width) { return width < before && width > after; }));

  button_.setLabel(copySymbol, copyText, LabelChange::CrossFade);
  EXPECT_EQ(widthsUntil(before).back(), before);
}

TEST_F(BorderedButtonTest, WithoutMotionALabelChangesAtOnce) {
  setReducesMotion(true);
  button_.show();
  button_.setLabel(copiedSymbol, copiedText, LabelChange::CrossFade);
  EXPECT_EQ(button_.sizeHint().width(), finalWidth(copiedSymbol, copiedText));
}

TEST_F(BorderedButtonTest, ALabelThatNobodySeesChangesAtOnce) {
  button_.setLabel(copiedSymbol, copiedText, LabelChange::CrossFade);
  EXPECT_EQ(button_.sizeHint().width(), finalWidth(copiedSymbol, copiedText));

  button_.show();
  button_.setLabel(copySymbol, copyText, LabelChange::CrossFade);
  button_.hide();
  EXPECT_EQ(button_.sizeHint().width(), finalWidth(copySymbol, copyText));
}

TEST_F(BorderedButtonTest, GrowsWithTheText) {
  const QSize before = button_.sizeHint();
  setTextScale(1.5);
  EXPECT_EQ(button_.font().pixelSize(), 17);
  EXPECT_GT(button_.sizeHint().width(), before.width() * 1.3);
  EXPECT_EQ(button_.sizeHint().height(), 36);
  setTextScale(1);
  EXPECT_EQ(button_.sizeHint(), before);
}

}  // namespace
}  // namespace lumiwren
