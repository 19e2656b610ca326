#include "markdown/views/MarkdownTextView.h"

#include "ui/Fonts.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QDesktopServices>
#include <QHelpEvent>
#include <QMouseEvent>
#include <QToolTip>
#include <QUrl>

namespace lumiwren {
namespace {

constexpr int viewWidth = 300;

const char *const everyKind =
    "# Title\nSome *text*.\n- one\n- two\n1. first\n\n```c\nint a;\nint b;\n```\n| a | b |\n|---|---|\n| 1 | "
    "2 |";

class MarkdownTextViewTest : public ::testing::Test {
protected:
  void show(const std::string &markdown) {
    view.setMarkdown(markdown);
    view.resize(viewWidth, view.layOut(viewWidth));
  }
  void mouse(QEvent::Type type, QPoint place) {
    QMouseEvent event(type, QPointF(place), view.mapToGlobal(QPointF(place)), Qt::LeftButton,
                      type == QEvent::MouseButtonRelease ? Qt::NoButton : Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(&view, &event);
  }
  void drag(QPoint from, QPoint to) {
    mouse(QEvent::MouseButtonPress, from);
    mouse(QEvent::MouseMove, to);
    mouse(QEvent::MouseButtonRelease, to);
  }

  MarkdownTextView view;
};

TEST_F(MarkdownTextViewTest, ThePlainTextHasEveryBlockOnLinesOfItsOwn) {
  show(everyKind);
  EXPECT_EQ(view.plainText().toStdString(),
            "Title\nSome text.\n\u2022 one\n\u2022 two\n1. first\nc\nint a;\nint b;\na\tb\n1\t2");
}

TEST_F(MarkdownTextViewTest, EveryPrefixOfAStreamLooksAsIfItWereTheWholeText) {
  const std::string markdown = std::string(everyKind) + "\n" + std::string(5000, 'w') + " **end** of it";
  for (std::size_t length = 0; length <= markdown.size(); ++length) {
    show(markdown.substr(0, length));
    if (length > 300 && length % 97 != 0) {
      continue;
    }
    MarkdownTextView fresh;
    fresh.setMarkdown(markdown.substr(0, length));
    ASSERT_EQ(fresh.layOut(viewWidth), view.layOut(viewWidth)) << length;
    ASSERT_EQ(fresh.plainText(), view.plainText()) << length;
    fresh.resize(view.size());
    if (length % 7 == 0 && (length < 300 || length % 490 == 0)) {
      ASSERT_EQ(fresh.grab().toImage(), view.grab().toImage()) << length;
    }
  }
}

TEST_F(MarkdownTextViewTest, AShorterTextReplacesALongerOne) {
  show(everyKind);
  show("only this");
  EXPECT_EQ(view.plainText(), QStringLiteral("only this"));
  show("");
  EXPECT_EQ(view.plainText(), QString());
  EXPECT_EQ(view.layOut(viewWidth), 0);
}

TEST_F(MarkdownTextViewTest, TellsWhetherTheTextIsAnotherOne) {
  EXPECT_TRUE(view.setMarkdown("a"));
  EXPECT_FALSE(view.setMarkdown("a"));
  EXPECT_TRUE(view.setMarkdown("b"));
}

TEST_F(MarkdownTextViewTest, ADragSelectsAcrossBlocksAndCopyTakesIt) {
  show("first line\nsecond line");
  drag({0, 2}, {viewWidth - 1, view.height() - 2});
  EXPECT_EQ(view.selectedText(), QStringLiteral("first line\nsecond line"));
  QString copied;
  QObject::connect(&view, &SelectableTextView::copyRequested, [&](const QString &text) { copied = text; });
  view.copy();
  EXPECT_EQ(copied, QStringLiteral("first line\nsecond line"));
}

TEST_F(MarkdownTextViewTest, ADoubleClickSelectsAWord) {
  show("first second third");
  const QPoint place = view.characterRect(8).center();
  mouse(QEvent::MouseButtonDblClick, place);
  mouse(QEvent::MouseButtonRelease, place);
  EXPECT_EQ(view.selectedText(), QStringLiteral("second"));
}

TEST_F(MarkdownTextViewTest, TheSelectionStaysWhileTheTextGrowsBelowIt) {
  show("first line\nsec");
  view.setSelection(0, 5);
  show("first line\nsecond line\n\n- item");
  EXPECT_EQ(view.selectedText(), QStringLiteral("first"));
}

TEST_F(MarkdownTextViewTest, SelectAllTakesEverything) {
  show(everyKind);
  view.selectAll();
  EXPECT_EQ(view.selectedText(), view.plainText());
}

TEST_F(MarkdownTextViewTest, BlocksAreEightPointsApart) {
  show("first\nsecond\n# third");
  EXPECT_EQ(view.characterRect(0).topLeft(), QPoint(0, 0));
  EXPECT_EQ(view.characterRect(6).top(), view.characterRect(0).bottom() + 1 + 8);
  EXPECT_EQ(view.characterRect(13).top(), view.characterRect(6).bottom() + 1 + 8);
  EXPECT_EQ(view.layOut(viewWidth), view.characterRect(13).bottom() + 1);
}

TEST_F(MarkdownTextViewTest, ALinkTellsItsTrueAddress) {
  view.show();
  show("see [the *bank*](https://example.org/a?b=1&c=2) or [run](file:///bin/sh)");
  const auto toolTipAt = [&](int position) {
    const QPoint place = view.characterRect(position).center();
    QHelpEvent help(QEvent::ToolTip, place, view.mapToGlobal(place));
    QApplication::sendEvent(&view, &help);
    return QToolTip::text();
  };
  EXPECT_EQ(toolTipAt(1), QString());
  EXPECT_EQ(toolTipAt(view.length() - 2), QString());
  EXPECT_EQ(toolTipAt(6), QStringLiteral("https://example.org/a?b=1&c=2"));
}

TEST_F(MarkdownTextViewTest, OnlyLinksHaveThePointersHandAndTheLinksColour) {
  show("see [the page](https://example.org) or [file](file:///x)");
  const auto cursorAt = [&](int position) {
    mouse(QEvent::MouseMove, view.characterRect(position).center());
    return view.cursor().shape();
  };
  EXPECT_EQ(cursorAt(6), Qt::PointingHandCursor);
  EXPECT_EQ(cursorAt(1), Qt::IBeamCursor);
  EXPECT_EQ(cursorAt(view.length() - 2), Qt::IBeamCursor);
  const QImage image = view.grab().toImage();
  const QColor link = SemanticColors(view.palette()).link;
  const auto hasLinkColour = [&](int from, int to) {
    const QRect part = view.characterRect(from) | view.characterRect(to);
    for (int y = part.top(); y <= part.bottom(); ++y) {
      for (int x = part.left(); x <= part.right(); ++x) {
        if (image.pixelColor(x, y) == link) {
          return true;
        }
      }
    }
    return false;
  };
  EXPECT_TRUE(hasLinkColour(4, 11));
  EXPECT_FALSE(hasLinkColour(0, 2));
  EXPECT_FALSE(hasLinkColour(view.length() - 4, view.length() - 1));
}

TEST_F(MarkdownTextViewTest, TheHandleOfALongLineScrollsIt) {
  show("```\n" + std::string(200, 'x') + "\n```");
  const int before = view.characterRect(0).left();
  const int y = view.height() - 4;
  drag({20, y}, {60, y});
  EXPECT_LT(view.characterRect(0).left(), before - 40);
  EXPECT_FALSE(view.hasSelection());
  drag({60, y}, {-200, y});
  EXPECT_EQ(view.characterRect(0).left(), before);
}

TEST_F(MarkdownTextViewTest, AnotherSizeOfTextIsTakenOver) {
  show(everyKind);
  const int before = view.layOut(viewWidth);
  setTextScale(1.5);
  EXPECT_GT(view.layOut(viewWidth), before * 5 / 4);
  MarkdownTextView fresh;
  fresh.setMarkdown(everyKind);
  EXPECT_EQ(view.layOut(viewWidth), fresh.layOut(viewWidth));
  setTextScale(1);
  EXPECT_EQ(view.layOut(viewWidth), before);
}

TEST_F(MarkdownTextViewTest, AVeryLongTextIsThereInPartAtOnceAndThenInFull) {
  std::string markdown;
  for (int line = 0; line < 1000; ++line) {
    markdown += "line " + std::to_string(line) + "\n- item a\n- item b\n";
  }
  show(markdown);
  EXPECT_TRUE(view.plainText().startsWith(QStringLiteral("line 0\n\u2022 item a\n\u2022 item b\nline 1\n")));
  EXPECT_LT(view.plainText().size(), 10'000);
  // More may come before the rest is laid out.
  show(markdown + "the end");
  int height = view.layOut(viewWidth);
  EXPECT_FALSE(view.isComplete());
  while (!view.isComplete()) {
    QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    ASSERT_GE(view.layOut(viewWidth), height);
    height = view.layOut(viewWidth);
  }
  EXPECT_EQ(view.plainText().count(QLatin1Char('\n')), 3000);
  EXPECT_TRUE(view.plainText().endsWith(QStringLiteral("item b\nthe end")));
  EXPECT_NEAR(view.characterRect(view.length() - 1).bottom(), height, 1);
}

TEST_F(MarkdownTextViewTest, AThirdClickSelectsTheLine) {
  show("first line\nsecond line here");
  const QPoint place = view.characterRect(14).center();
  mouse(QEvent::MouseButtonDblClick, place);
  mouse(QEvent::MouseButtonRelease, place);
  mouse(QEvent::MouseButtonPress, place);
  mouse(QEvent::MouseButtonRelease, place);
  EXPECT_EQ(view.selectedText(), QStringLiteral("second line here"));
}

TEST_F(MarkdownTextViewTest, AChunkTouchesOnlyTheLastBlock) {
  std::string markdown = everyKind;
  show(markdown);
  for (const char *more : {"\n| 3", " | 4 |", "\n\nA par", "agraph"}) {
    markdown += more;
    show(markdown);
    EXPECT_LE(view.touchedBlocks(), 1U) << more;
  }
}

class Opener : public QObject {
  Q_OBJECT
public:
  Opener() { QDesktopServices::setUrlHandler(QStringLiteral("https"), this, "open"); }
  ~Opener() override { QDesktopServices::unsetUrlHandler(QStringLiteral("https")); }
  Q_INVOKABLE void open(const QUrl &url) { opened.push_back(url); }
  QList<QUrl> opened;
};

TEST_F(MarkdownTextViewTest, AClickOnALinkOpensItAndADragOverItDoesNot) {
  Opener opener;
  show("see [the page](https://example.org/x) for more");
  const QPoint link = view.characterRect(6).center();
  drag(link, link);
  EXPECT_EQ(opener.opened, QList<QUrl>{QUrl(QStringLiteral("https://example.org/x"))});
  drag(link, link + QPoint(60, 0));
  const QPoint text = view.characterRect(1).center();
  drag(text, text);
  EXPECT_EQ(opener.opened.size(), 1);
}

}  // namespace
}  // namespace lumiwren

#include "MarkdownTextViewTest.moc"
