#include "popup/ActivatingTextField.h"
#include "popup/ConversationView.h"
#include "popup/FollowUpFieldFrame.h"
#include "popup/PopupTesting.h"
#include "popup/SourceTextLabel.h"
#include "ui/Palette.h"

#include <QApplication>
#include <QFontDatabase>
#include <QFontInfo>
#include <QImage>
#include <QPalette>

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace lumiwren {
namespace {

const QColor background(230, 232, 238);
const QColor fieldBackground(255, 250, 240);
const QColor text(10, 20, 60);

QColor over(const QColor &under, const QColor &color, double opacity) {
  const auto mix = [&](int a, int b) {
    return static_cast<int>(std::lround(a * opacity + b * (1 - opacity)));
  };
  return {mix(color.red(), under.red()), mix(color.green(), under.green()), mix(color.blue(), under.blue())};
}

/// How far apart two colours are, in the channel in which they are farthest apart.
int difference(const QColor &one, const QColor &other) {
  return std::max({std::abs(one.red() - other.red()), std::abs(one.green() - other.green()),
                   std::abs(one.blue() - other.blue())});
}

/// The panel as it is drawn, opaque, without a shadow. Places are pixels of the picture.
class PanelLayout : public testing::PopupTest {
protected:
  PanelLayout() {
    QPalette palette;
    palette.setColor(QPalette::Window, background);
    palette.setColor(QPalette::Base, fieldBackground);
    palette.setColor(QPalette::WindowText, text);
    palette.setColor(QPalette::Text, text);
    QApplication::setPalette(palette);
  }

  void draw(const std::string &source = "source") {
    controller.show(source, std::nullopt, false, std::nullopt);
    queue.runPending();
    queue.runPending();  // An open panel has its content one step later.
    state().removeAllMessages();
    state().addMessage("assistant", "");
    redraw();
  }
  void redraw() {
    controller.hostingView()->refresh();
    QCoreApplication::sendPostedEvents();
    QCoreApplication::processEvents();
    // This platform gives every window the keyboard; it is shown without.
    if (auto *const focused = controller.panel()->focusWidget(); focused && !keepsFocus) {
      focused->clearFocus();
    }
    picture = controller.hostingView()->grab().toImage();
    scale = picture.devicePixelRatio();
    line = scale < 2 ? 1 : 2;
  }
  int px(double points) const { return qRound(points * scale); }
  QColor at(int x, int y) const { return picture.pixelColor(x, y); }
  /// Where a part of the view is, in points.
  QRect place(const QWidget &part) { return {part.mapTo(controller.hostingView(), QPoint()), part.size()}; }
  QRect pixels(const QRect &points) const {
    return {QPoint(px(points.x()), px(points.y())),
            QPoint(px(points.x() + points.width()) - 1, px(points.y() + points.height()) - 1)};
  }
  /// The smallest rectangle that has everything in it that does not have that colour.
  QRect ink(const QRect &where, const QColor &paper) const {
    QRect result;
    for (int y = where.top(); y <= where.bottom(); ++y) {
      for (int x = where.left(); x <= where.right(); ++x) {
        if (difference(at(x, y), paper) > 24) {
          result |= QRect(x, y, 1, 1);
        }
      }
    }
    return result;
  }
  /// The colour that is farthest from the paper.
  QColor inkColor(const QRect &where, const QColor &paper) const {
    QColor result = paper;
    for (int y = where.top(); y <= where.bottom(); ++y) {
      for (int x = where.left(); x <= where.right(); ++x) {
        if (difference(at(x, y), paper) > difference(result, paper)) {
          result = at(x, y);
        }
      }
    }
    return result;
  }
  template <typename T>
  T &part() {
    return *controller.panel()->findChild<T *>();
  }
  QPushButton &button(const char *name) { return testing::button(*controller.panel(), name); }
  void expectSystemFont(const QFont &font, int size, QFont::Weight weight) {
    const QFont general = QFontDatabase::systemFont(QFontDatabase::GeneralFont);
    EXPECT_EQ(font.family(), general.family());
    EXPECT_EQ(font.pixelSize(), size);
    EXPECT_EQ(font.weight(), weight);
  }

  QImage picture;
  qreal scale = 0;
  int line = 0;  // a hairline's pixels
  bool keepsFocus = false;
};

TEST_F(PanelLayout, IsDrawnAtTheScaleThatTheProcessHas) {
  draw();
  const auto expected =
      qEnvironmentVariableIsSet("QT_SCALE_FACTOR") ? qgetenv("QT_SCALE_FACTOR").toDouble() : 1;
  EXPECT_DOUBLE_EQ(scale, expected);
  EXPECT_EQ(picture.size(), QSize(px(400), px(300)));
}

TEST_F(PanelLayout, TheOutlineIsAFaintHairlineOfThePrimaryColour) {
  draw();
  const QColor outline = over(background, text, 0.1);
  const int middle = picture.height() / 2;
  for (int depth = 0; depth < line; ++depth) {
    EXPECT_LE(difference(at(depth, middle), outline), 2);
    EXPECT_LE(difference(at(picture.width() - 1 - depth, middle), outline), 2);
    EXPECT_LE(difference(at(picture.width() / 2, depth), outline), 2);
    EXPECT_LE(difference(at(picture.width() / 2, picture.height() - 1 - depth), outline), 2);
  }
  EXPECT_EQ(at(line, middle), background);
  EXPECT_EQ(at(picture.width() - 1 - line, middle), background);
  EXPECT_EQ(at(picture.width() / 2, line), background);
  EXPECT_EQ(at(picture.width() / 2, picture.height() - 1 - line), background);
}

TEST_F(PanelLayout, TheOutlineFollowsRoundCornersWithoutABlackPixel) {
  draw();
  const QColor outline = over(background, text, 0.1);
  for (int index = 0; index < px(12) * px(12); ++index) {
    const QPoint corner(index % px(12), index / px(12));
    for (const QPoint place :
         {corner, QPoint(picture.width() - 1 - corner.x(), picture.height() - 1 - corner.y())}) {
      const QColor seen = at(place.x(), place.y());
      EXPECT_EQ(seen.alpha(), 255);
      EXPECT_LE(seen.lightness(), background.lightness());
      EXPECT_GE(seen.lightness() + 2, outline.lightness());
    }
  }
  // The inner side of the outline, on the diagonal.
  const double radius = 12 * scale;
  const double diagonal = radius - (radius - line) / std::sqrt(2);
  const int inside = static_cast<int>(std::ceil(diagonal)) + 1;
  EXPECT_EQ(at(inside, inside), background);
  const int outside = static_cast<int>(std::floor(diagonal)) - 2;
  EXPECT_LE(difference(at(outside, outside), outline), 2);
}

TEST_F(PanelLayout, WithACompositorTheCornersAreEmptyAndTheMaterialLetsALittleThrough) {
  windows.translucencySupported = true;
  draw();
  QImage canvas(picture.size(), QImage::Format_ARGB32_Premultiplied);
  canvas.setDevicePixelRatio(scale);
  canvas.fill(Qt::transparent);
  controller.hostingView()->render(&canvas, {}, {}, QWidget::DrawChildren);
  for (const QPoint corner : {QPoint(0, 0), QPoint(canvas.width() - 1, 0), QPoint(0, canvas.height() - 1),
                              QPoint(canvas.width() - 1, canvas.height() - 1)}) {
    EXPECT_EQ(qAlpha(canvas.pixel(corner)), 0);
  }
  const int opacity = qAlpha(canvas.pixel(px(200), px(100)));
  EXPECT_GT(opacity, 255 * 9 / 10);
  EXPECT_LT(opacity, 255);
  EXPECT_GE(qAlpha(canvas.pixel(px(200), px(4))), opacity);
}

TEST_F(PanelLayout, TheHeaderHasItsTextSixteenInAndTwelveDown) {
  draw("HHHH");
  auto &label = part<SourceTextLabel>();
  EXPECT_EQ(place(label).left(), 16);
  EXPECT_EQ(place(label).top(), 12);
  expectSystemFont(label.font(), 12, QFont::Medium);
  const QRect seen = ink(pixels(place(label)), background);
  ASSERT_FALSE(seen.isEmpty());
  // The stem of the letter begins within two points of its box.
  EXPECT_GE(seen.left(), px(16));
  EXPECT_LE(seen.left(), px(18));
  const QColor secondary = SemanticColors(QApplication::palette()).secondary;
  EXPECT_LE(difference(inkColor(pixels(place(label)), background), secondary), 8);
  EXPECT_GT(difference(secondary, text), 24);
  // A header of one line is as high as the line and its padding.
  EXPECT_EQ(place(part<ConversationView>()).top(), 12 + label.fontMetrics().lineSpacing() + 12 + 1);
}

TEST_F(PanelLayout, TheCloseSymbolIsFourteenLargeAtTheRightPadding) {
  draw();
  const QRect around = pixels(place(button("Close")));
  const QRect seen = ink(around, background);
  ASSERT_FALSE(seen.isEmpty());
  EXPECT_LE(seen.width(), px(14));
  EXPECT_GE(seen.width(), px(14) * 3 / 4);
  EXPECT_LE(std::abs(seen.width() - seen.height()), 1);
  EXPECT_LE(seen.right(), px(400 - 16));
  EXPECT_GE(seen.right(), px(400 - 16 - 2));
  const QRect label = pixels(place(part<SourceTextLabel>()));
  EXPECT_LE(std::abs(seen.center().y() - label.center().y()), px(1));
  EXPECT_EQ(place(button("Close")).center().x(), place(part<SourceTextLabel>()).right() + 8 + 7);
}

TEST_F(PanelLayout, TheDividersAreHairlinesFromEdgeToEdge) {
  draw();
  const QRect conversation = place(part<ConversationView>());
  const QColor separator = SemanticColors(QApplication::palette()).separator;
  const QColor drawn = over(background, separator, separator.alphaF());
  const int bottom = px(conversation.y() + conversation.height());
  for (const int y : {px(conversation.y() - 1), bottom}) {
    for (const int x : {line, px(100), px(200), picture.width() - 1 - line}) {
      for (int depth = 0; depth < line; ++depth) {
        EXPECT_LE(difference(at(x, y + depth), drawn), 1) << x << ", " << y + depth;
      }
      EXPECT_EQ(at(x, y - 1), background);
      EXPECT_EQ(at(x, y + line), background);
    }
  }
  EXPECT_GT(difference(drawn, background), 12);
}

TEST_F(PanelLayout, TheFieldIsARoundedBoxAroundItsText) {
  draw();
  auto &field = part<ActivatingTextField>();
  expectSystemFont(field.font(), 13, QFont::Normal);
  EXPECT_EQ(field.placeholderText(), QStringLiteral("Ask a follow-up question..."));
  EXPECT_FALSE(field.hasFrame());
  const QRect frame = place(part<FollowUpFieldFrame>());
  const QRect box = pixels(frame);
  EXPECT_EQ(frame.left(), 16);
  EXPECT_EQ(frame.height(), field.fontMetrics().height() + 2 * 8);
  const QRect conversation = place(part<ConversationView>());
  EXPECT_EQ(frame.top(), conversation.bottom() + 1 + 1 + 10);

  // The box is filled to its straight edges, and only there.
  const int middle = box.center().y();
  EXPECT_EQ(at(box.left(), middle), fieldBackground);
  EXPECT_EQ(at(box.left() - 1, middle), background);
  EXPECT_EQ(at(box.right(), middle), fieldBackground);
  EXPECT_EQ(at(box.right() + 1, middle), background);
  EXPECT_EQ(at(box.center().x(), box.top()), fieldBackground);
  EXPECT_EQ(at(box.center().x(), box.top() - 1), background);
  EXPECT_EQ(at(box.center().x(), box.bottom()), fieldBackground);
  EXPECT_EQ(at(box.center().x(), box.bottom() + 1), background);
  // Six points of radius: the corner is empty, what is just inside the curve is not.
  EXPECT_EQ(at(box.left(), box.top()), background);
  const int inside = static_cast<int>(std::ceil(6 * scale * (1 - 1 / std::sqrt(2)))) + 1;
  EXPECT_EQ(at(box.left() + inside, box.top() + inside), fieldBackground);

  const QRect words = ink(box.adjusted(px(4), px(4), -px(4), -px(4)), fieldBackground);
  ASSERT_FALSE(words.isEmpty());
  EXPECT_GE(words.left(), static_cast<int>((frame.left() + 10) * scale));
  EXPECT_LE(words.left(), px(frame.left() + 12));
  EXPECT_GE(words.top(), box.top() + px(8));
  EXPECT_LE(words.bottom(), box.bottom() - px(8) + 1);
}

TEST_F(PanelLayout, TheFieldKeepsItsBackgroundWhileItIsDisabled) {
  draw();
  state().setIsLoading(true);
  redraw();
  ASSERT_FALSE(part<ActivatingTextField>().isEnabled());
  const QRect box = pixels(place(part<FollowUpFieldFrame>()));
  EXPECT_EQ(at(box.left() + px(2), box.center().y()), fieldBackground);
  EXPECT_EQ(at(box.right() - px(40), box.center().y()), fieldBackground);
}

TEST_F(PanelLayout, TheFieldHasNoOtherLookWithTheKeyboard) {
  draw();
  const QRect box = pixels(place(part<FollowUpFieldFrame>()));
  const QImage before = picture.copy(box.adjusted(-px(4), -px(4), px(4), px(4)));
  keepsFocus = true;
  part<ActivatingTextField>().setFocus();
  ASSERT_TRUE(part<ActivatingTextField>().hasFocus());
  redraw();
  const QImage after = picture.copy(box.adjusted(-px(4), -px(4), px(4), px(4)));
  const auto withoutText = [&](const QImage &image) { return image.copy(0, 0, px(10), image.height()); };
  EXPECT_EQ(withoutText(before), withoutText(after));
}

TEST_F(PanelLayout, TheSendSymbolIsTwentyTwoLargeBesideTheField) {
  draw();
  const QRect frame = place(part<FollowUpFieldFrame>());
  const QRect around = pixels(place(button("Send")));
  const QRect seen = ink(around, background);
  ASSERT_FALSE(seen.isEmpty());
  EXPECT_LE(seen.width(), px(22));
  EXPECT_GE(seen.width(), px(22) * 3 / 4);
  EXPECT_LE(seen.right(), px(400 - 16));
  EXPECT_GE(seen.right(), px(400 - 16 - 3));
  EXPECT_LE(std::abs(seen.center().y() - pixels(frame).center().y()), px(1));
  EXPECT_EQ(frame.right() + 1 + 8 + 22, 400 - 16);
}

TEST_F(PanelLayout, TheSendSymbolIsGreyUntilSomethingCanBeSent) {
  const SemanticColors colors(QApplication::palette());
  const auto drawn = [&] {
    redraw();
    return inkColor(pixels(place(button("Send"))), background);
  };
  draw();
  EXPECT_LE(difference(drawn(), colors.secondary), 3);
  part<ActivatingTextField>().setText(QStringLiteral("why"));
  const QColor ready = drawn();
  EXPECT_LE(difference(ready, lumiwrenPurple()), 30);
  EXPECT_GT(difference(ready, colors.secondary), 60);
  state().setIsLoading(true);
  EXPECT_LE(difference(drawn(), colors.secondary), 3);
}

TEST_F(PanelLayout, TheFooterHasTheCopyButtonAtTheLeftPadding) {
  draw();
  auto &copy = button("Copy Result");
  expectSystemFont(copy.font(), 11, QFont::Normal);
  EXPECT_EQ(place(copy).left(), 16);
  EXPECT_EQ(place(copy).top(), place(part<FollowUpFieldFrame>()).bottom() + 1 + 10);
  EXPECT_EQ(place(copy).bottom() + 1 + 12, 300);
  const QString before = copy.text();
  copy.click();
  redraw();
  EXPECT_EQ(button("Copied!").text(), QStringLiteral("Copied!"));
  EXPECT_EQ(before, QStringLiteral("Copy Result"));
  EXPECT_EQ(place(copy).left(), 16);
}

TEST_F(PanelLayout, GrowsWithThePanelAndOnlyTheConversationDoes) {
  draw();
  const int header = place(part<ConversationView>()).top();
  const int below = 300 - place(part<ConversationView>()).bottom();
  for (const QSize size : {QSize(300, 200), QSize(800, 600)}) {
    controller.panel()->setFrame({{100, 100}, {double(size.width()), double(size.height())}});
    redraw();
    EXPECT_EQ(controller.hostingView()->size(), size);
    EXPECT_EQ(place(part<ConversationView>()).top(), header);
    EXPECT_EQ(size.height() - place(part<ConversationView>()).bottom(), below);
    EXPECT_EQ(place(part<ConversationView>()).width(), size.width());
    EXPECT_EQ(place(part<FollowUpFieldFrame>()).left(), 16);
    EXPECT_EQ(place(part<FollowUpFieldFrame>()).right() + 1, size.width() - 16 - 22 - 8);
  }
}

TEST_F(PanelLayout, LeavesRoomForNeitherMoreNorLessThanTwoLinesOfSource) {
  std::string longText;
  for (int word = 0; word < 30; ++word) {
    longText += "word ";
  }
  draw(longText);
  auto &label = part<SourceTextLabel>();
  EXPECT_EQ(label.height(), 2 * label.fontMetrics().lineSpacing());
  const QRect seen = ink(pixels(place(label)), background);
  EXPECT_LE(seen.bottom(), pixels(place(label)).bottom());
  EXPECT_LE(seen.right(), pixels(place(label)).right());
}

TEST_F(PanelLayout, ALongWordIsBrokenAndCutAndARightToLeftTextStartsAtTheRight) {
  draw(std::string(100, 'W'));
  auto &label = part<SourceTextLabel>();
  const QRect box = pixels(place(label));
  QRect seen = ink(box.adjusted(0, 0, px(8), 0), background);
  EXPECT_LE(seen.right(), box.right());
  EXPECT_GT(seen.height(), px(label.fontMetrics().lineSpacing()));

  const QString hebrew = QString::fromUtf8("\u05E9\u05DC\u05D5\u05DD.");
  draw(hebrew.toStdString());
  const QRect whole = pixels(place(label));
  seen = ink(whole, background);
  ASSERT_FALSE(seen.isEmpty());
  EXPECT_GT(seen.left(), whole.center().x());
  EXPECT_LE(seen.right(), whole.right());
  // The full stop ends the sentence, on the left.
  const QRect leftmost = ink(QRect(seen.left(), seen.top(), px(2), seen.height()), background);
  EXPECT_LT(leftmost.height(), seen.height() / 2);
}

}  // namespace
}  // namespace lumiwren
