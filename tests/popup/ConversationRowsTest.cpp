#include "popup/ConversationRows.h"

#include "popup/ConversationView.h"
#include "popup/PopupTesting.h"
#include "ui/Fonts.h"
#include "ui/Motion.h"
#include "ui/Palette.h"
#include "ui/ProgressIndicator.h"

#include <gtest/gtest.h>

#include <QFontMetrics>
#include <QImage>
#include <QLabel>
#include <QScrollBar>

#include <stdexcept>
#include <string>

namespace lumiwren {
namespace {

/// The rows as they are in an open panel of the size that it has at first.
class ConversationRows : public testing::PopupTest {
protected:
  template <typename Row>
  Row &row() {
    controller.hostingView()->refresh();
    for (auto *const candidate : controller.panel()->findChildren<Row *>()) {
      if (candidate->isVisible()) {
        return *candidate;
      }
    }
    throw std::runtime_error("no such row");
  }
  QImage drawn(QWidget &widget) {
    QImage image(widget.size(), QImage::Format_ARGB32);
    image.fill(Qt::transparent);
    widget.render(&image, {}, {}, QWidget::DrawChildren);
    return image;
  }
  /// Of the row, in the conversation's content.
  static constexpr int width = 400 - 2 * 16;
};

TEST_F(ConversationRows, ABubbleStandsOnTheRightAroundItsText) {
  show();
  state().addMessage("user", "Why?");
  auto &bubble = row<UserBubble>();
  EXPECT_EQ(bubble.x(), 16);
  EXPECT_EQ(bubble.width(), width);
  const QRect text = bubble.text().geometry();
  EXPECT_EQ(text.right() + 1 + 12, width);
  EXPECT_EQ(text.top(), 8);
  EXPECT_EQ(text.bottom() + 1 + 8, bubble.height());
  EXPECT_NEAR(text.width(), QFontMetrics(systemFont(13)).horizontalAdvance(QStringLiteral("Why?")), 2);
  const QImage image = drawn(bubble);
  const QColor inside = image.pixelColor(width - 6, bubble.height() / 2);
  EXPECT_NEAR(inside.alphaF(), 0.2, 0.01);
  EXPECT_EQ(inside.rgb() & 0xF0F0F0, lumiwrenPurple().rgb() & 0xF0F0F0);
  EXPECT_EQ(image.pixelColor(text.left() - 12 + 1, bubble.height() / 2).alpha(), inside.alpha());
  EXPECT_EQ(image.pixelColor(text.left() - 12 - 1, bubble.height() / 2).alpha(), 0);
  // A circle of radius 8 leaves 2.3 points of the corner's diagonal free.
  EXPECT_EQ(image.pixelColor(width - 2, 1).alpha(), 0);
  EXPECT_EQ(image.pixelColor(width - 4, 3).alpha(), inside.alpha());
}

TEST_F(ConversationRows, ALongQuestionWrapsAndIsAsWideAsTheRow) {
  show();
  state().addMessage("user", std::string(50, 'w') + " " + std::string(60, 'w') + "\n<b>second</b> line");
  auto &bubble = row<UserBubble>();
  EXPECT_EQ(bubble.text().geometry().left(), 12);
  EXPECT_GT(bubble.height(), 16 + 4 * 13);
  EXPECT_TRUE(bubble.text().plainText().endsWith(QStringLiteral("\n<b>second</b> line")));
}

TEST_F(ConversationRows, TheTextOfABubbleCanBeReadInBothLooks) {
  for (const QRgb background : {0xEFEFEFU, 0x2A2E32U}) {
    const QColor window(background);
    const QColor purple = lumiwrenPurple();
    const auto mix = [](int over, int under) { return qRound(0.2 * over + 0.8 * under); };
    const QColor bubble(mix(purple.red(), window.red()), mix(purple.green(), window.green()),
                        mix(purple.blue(), window.blue()));
    QPalette palette(window);
    EXPECT_GE(contrastRatio(SemanticColors(palette).primary, bubble), 4.5);
  }
}

TEST_F(ConversationRows, TheLoadingRowHasFortyPointsAboveAndBelow) {
  show("source", std::nullopt, true);
  auto &loading = row<LoadingRow>();
  auto &label = *loading.findChild<QLabel *>();
  EXPECT_EQ(label.text(), QStringLiteral("Getting explanation..."));
  EXPECT_EQ(label.font().pixelSize(), 13);
  EXPECT_EQ(label.palette().color(QPalette::WindowText), SemanticColors(loading.palette()).secondary);
  EXPECT_EQ(loading.width(), width);
  EXPECT_EQ(label.geometry().top(), 40);
  EXPECT_EQ(loading.height(), 40 + label.height() + 40);
  // Wheel and text are in the middle together.
  const auto *const wheel = loading.findChild<ProgressIndicator *>();
  EXPECT_NEAR(wheel->geometry().left(), width - 1 - label.geometry().right(), 1);
}

TEST_F(ConversationRows, AnErrorIsAnOrangeSymbolBesideItsText) {
  show("source", std::nullopt, false, "Something failed.");
  auto &error = row<ErrorRow>();
  EXPECT_EQ(error.text().geometry().top(), 8);
  EXPECT_EQ(error.text().geometry().bottom() + 1 + 8, error.height());
  const QImage image = drawn(error);
  const QColor orange = SemanticColors(error.palette()).orange;
  const QRect symbol(0, 8, error.text().geometry().left(), 18);
  int coloured = 0;
  for (int y = symbol.top(); y <= symbol.bottom(); ++y) {
    for (int x = symbol.left(); x <= symbol.right(); ++x) {
      coloured += image.pixelColor(x, y) == orange ? 1 : 0;
    }
  }
  EXPECT_GT(coloured, 60);
}

TEST_F(ConversationRows, AnErrorBelowAMessageHasItsPaddingAboveOnly) {
  show();
  update("answer", false, "Something failed.");
  auto &error = row<ErrorRow>();
  EXPECT_EQ(error.text().geometry().top(), 8);
  EXPECT_EQ(error.text().geometry().bottom() + 1, error.height());
}

TEST_F(ConversationRows, FollowTheSizeOfText) {
  show();
  update("answer", false, "Something failed.");
  state().addMessage("user", "Why?");
  const int bubble = row<UserBubble>().height();
  const int error = row<ErrorRow>().height();
  setTextScale(1.5);
  queue.runPending();
  EXPECT_GT(row<UserBubble>().height(), bubble);
  EXPECT_GT(row<ErrorRow>().height(), error);
  EXPECT_EQ(row<UserBubble>().text().geometry().bottom() + 1 + 8, row<UserBubble>().height());
  setTextScale(1);
  queue.runPending();
  EXPECT_EQ(row<UserBubble>().height(), bubble);
}

TEST_F(ConversationRows, WithReducedMotionNothingScrollsOrTurns) {
  setReducesMotion(true);
  show();
  update("a", true);
  controller.hostingView()->refresh();
  std::string lines;
  for (int line = 0; line < 60; ++line) {
    lines += "line\n\n";
  }
  update(lines, true);
  controller.hostingView()->refresh();
  advance(std::chrono::milliseconds(100));
  auto &conversation = *controller.panel()->findChild<ConversationView *>();
  EXPECT_FALSE(conversation.isScrolling());
  EXPECT_GT(conversation.verticalScrollBar()->value(), 0);
  EXPECT_EQ(conversation.verticalScrollBar()->value(), conversation.verticalScrollBar()->maximum());
  setReducesMotion(false);
}

}  // namespace
}  // namespace lumiwren
