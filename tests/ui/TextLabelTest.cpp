#include "ui/TextLabel.h"

#include "ui/ElidedLabel.h"
#include "ui/Fonts.h"
#include "ui/LookPalettes.h"
#include "ui/Rendering.h"

#include <gtest/gtest.h>

#include <QAccessible>
#include <QCoreApplication>
#include <QHelpEvent>
#include <QImage>
#include <QToolTip>

#include <memory>

namespace lumiwren {
namespace {

using testing::inkOf;
using testing::rendered;

class TextLabelTest : public ::testing::Test {
protected:
  void TearDown() override { setTextScale(1); }

  static QString tipOf(QWidget &widget) {
    widget.show();
    QHelpEvent help(QEvent::ToolTip, QPoint(2, 2), widget.mapToGlobal(QPoint(2, 2)));
    QCoreApplication::sendEvent(&widget, &help);
    return QToolTip::isVisible() ? QToolTip::text() : QString();
  }
};

TEST_F(TextLabelTest, EachStyleHasItsSizeAndWeight) {
  const struct {
    TextStyle style;
    int size;
    QFont::Weight weight;
  } table[] = {{TextStyle::Caption, 11, QFont::Normal},  {TextStyle::Subheadline, 12, QFont::Medium},
               {TextStyle::Body, 13, QFont::Normal},     {TextStyle::Headline, 13, QFont::DemiBold},
               {TextStyle::Title2, 17, QFont::DemiBold}, {TextStyle::Title, 22, QFont::DemiBold}};
  for (const auto &row : table) {
    TextLabel label(QStringLiteral("Text"), row.style);
    EXPECT_EQ(label.font().pixelSize(), row.size);
    EXPECT_EQ(label.font().weight(), row.weight);
    setTextScale(2);
    EXPECT_EQ(label.font().pixelSize(), 2 * row.size);
    EXPECT_EQ(label.font().weight(), row.weight);
    setTextScale(1);
  }
}

TEST_F(TextLabelTest, IsDrawnInItsColourOfThePalette) {
  TextLabel label(QStringLiteral("\u2588"), TextStyle::Title, &SemanticColors::secondary);
  label.resize(label.sizeHint());
  for (const auto &palette : {lightPalette(), darkPalette()}) {
    label.setPalette(palette);
    const QImage image = rendered(label, 1);
    EXPECT_EQ(image.pixel(inkOf(image).center()), SemanticColors(palette).secondary.rgb());
  }
}

TEST_F(TextLabelTest, NeitherMarkupNorMnemonicsAreInterpreted) {
  const QString text = QStringLiteral("<b>&Bold</b>");
  for (const bool elided : {false, true}) {
    const std::unique_ptr<TextLabel> label(elided ? new ElidedLabel(text, TextStyle::Body)
                                                  : new TextLabel(text, TextStyle::Body));
    EXPECT_EQ(label->sizeHint().width(), label->fontMetrics().horizontalAdvance(text));
    label->resize(label->sizeHint());
    EXPECT_GT(inkOf(rendered(*label, 1)).width(), label->width() - 6);
    EXPECT_EQ(QAccessible::queryAccessibleInterface(label.get())->text(QAccessible::Name), text);
  }
}

TEST_F(TextLabelTest, AWrappedTextIsNotCutOff) {
  TextLabel label(QStringLiteral("several words that are wider than the label is"), TextStyle::Body);
  label.setWordWrap(true);
  label.resize(100, label.heightForWidth(100));
  EXPECT_GT(label.height(), 2 * label.fontMetrics().height());
  label.resize(100, label.height() + 40);
  EXPECT_LT(inkOf(rendered(label, 1)).height(), label.height() - 40);
}

TEST_F(TextLabelTest, ALongTextEndsInAnEllipsisAndHasATip) {
  const QString text = QStringLiteral("A <b>name</b> that is & stays rather too long for its place");
  ElidedLabel label(text, TextStyle::Body);
  label.resize(80, label.sizeHint().height());
  EXPECT_LE(inkOf(rendered(label, 1)).right(), 80);
  EXPECT_LT(label.minimumSizeHint().width(), 80);
  EXPECT_EQ(QAccessible::queryAccessibleInterface(&label)->text(QAccessible::Name), text);
  const QString tip = tipOf(label);
  EXPECT_FALSE(tip.contains(QStringLiteral("<b>"))) << "the name is markup in the tip";
  EXPECT_TRUE(tip.contains(text.toHtmlEscaped()));
}

TEST_F(TextLabelTest, ATextThatFitsHasNoTip) {
  ElidedLabel label(QStringLiteral("short"), TextStyle::Body);
  label.resize(80, label.sizeHint().height());
  EXPECT_EQ(tipOf(label), QString());
}

TEST_F(TextLabelTest, ATextFromRightToLeftStandsAtTheRight) {
  ElidedLabel label(QStringLiteral("\u05e9\u05dc\u05d5\u05dd"), TextStyle::Body);
  label.resize(200, label.sizeHint().height());
  EXPECT_GT(inkOf(rendered(label, 1)).left(), 100);
}

}  // namespace
}  // namespace lumiwren
