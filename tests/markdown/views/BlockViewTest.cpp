#include "markdown/views/BlockView.h"

#include "markdown/MarkdownDocument.h"
#include "markdown/views/MarkdownBlockView.h"
#include "ui/Fonts.h"

#include <gtest/gtest.h>

#include <QFontDatabase>
#include <QFontMetricsF>
#include <QImage>
#include <QPainter>

#include <algorithm>
#include <cmath>
#include <limits>
#include <memory>
#include <string>
#include <vector>

namespace lumiwren {
namespace {

constexpr qreal width = 300;

/// The one block of a text, laid out.
class Block {
public:
  explicit Block(const std::string &markdown, qreal blockWidth = width) : document_(markdown) {
    EXPECT_EQ(document_.blocks().size(), 1U);
    view_ = MarkdownBlockView::make(document_.blocks().at(0));
    std::size_t budget = std::numeric_limits<std::size_t>::max();
    EXPECT_TRUE(view_->layOut(blockWidth, colors_, budget));
  }
  BlockView *operator->() { return view_.get(); }
  std::vector<std::string> lines() const {
    std::vector<std::string> result;
    for (const auto &line : view_->plainText().split(QLatin1Char('\n'))) {
      result.push_back(line.toStdString());
    }
    return result;
  }
  /// Of the first character of a text that occurs once.
  QRectF rectOf(const char *text) {
    return view_->characterRect(static_cast<int>(view_->plainText().indexOf(QString::fromUtf8(text))),
                                colors_);
  }
  QImage drawn() {
    QImage image(static_cast<int>(width), static_cast<int>(view_->height()), QImage::Format_ARGB32);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    view_->paint({.painter = painter, .colors = colors_, .exposed = QRectF(image.rect())});
    return image;
  }

private:
  const SemanticColors colors_{QPalette()};
  const MarkdownDocument document_;
  std::unique_ptr<MarkdownBlockView> view_;
};

using Lines = std::vector<std::string>;

TEST(CodeBlockView, ALabelIsShownForALanguageThatIsNotHidden) {
  EXPECT_EQ(Block("```json\na = 1\n```").lines(), (Lines{"json", "a = 1"}));
  for (const char *hidden : {"```Text\nx\n```", "```txt\nx\n```", "```plaintext\nx\n```", "```\nx\n```"}) {
    EXPECT_EQ(Block(hidden).lines(), Lines{"x"}) << hidden;
  }
}

TEST(CodeBlockView, TheCodeIsVerbatim) {
  EXPECT_EQ(Block("```\n**a**\n\n  <b>\n```").lines(), (Lines{"**a**", "", "  <b>"}));
}

TEST(CodeBlockView, AnEmptyOneStillDrawsItsPaddedBackground) {
  Block block("```\n```");
  EXPECT_GE(block->height(), 16 + 12);
  EXPECT_EQ(block.drawn().pixelColor(150, 5), QPalette().color(QPalette::Base));
}

TEST(CodeBlockView, LongLinesAreScrolledToAndNotWrapped) {
  Block block("```\n#" + std::string(200, 'x') + "\n```");
  EXPECT_EQ(block->height(), Block("```\n\n```")->height());
  EXPECT_GT(block->scrollRange(), 1000);
  block->setScrollOffset(1e9);
  EXPECT_EQ(block->scrollOffset(), block->scrollRange());
  EXPECT_NEAR(block.rectOf("#").left(), 8 - block->scrollRange(), 0.01);
  block->setScrollOffset(-5);
  EXPECT_EQ(block->scrollOffset(), 0);
}

TEST(CodeBlockView, ThePartsStandWhereTheyShould) {
  Block block("```json\nfirst\nsecond\n```");
  EXPECT_EQ(block.rectOf("json").topLeft(), QPointF(0, 0));
  const qreal boxTop = block.rectOf("json").bottom() + 4;
  EXPECT_EQ(block.rectOf("first").topLeft(), QPointF(8, boxTop + 8));
  EXPECT_EQ(block.rectOf("second").left(), 8);
  EXPECT_NEAR(block->height(), block.rectOf("second").bottom() + 8, 1);
  const auto image = block.drawn();
  EXPECT_EQ(image.pixelColor(150, static_cast<int>(boxTop) - 1).alpha(), 0);
  EXPECT_EQ(image.pixelColor(150, static_cast<int>(boxTop) + 1).alpha(), 255);
}

TEST(CodeBlockView, ALineThatIsScrolledStaysInsideItsBox) {
  Block block("```\n" + std::string(200, 'W') + "\n```");
  block->setScrollOffset(40);
  QImage wide(400, static_cast<int>(block->height()), QImage::Format_ARGB32);
  wide.fill(Qt::transparent);
  QPainter painter(&wide);
  painter.translate(50, 0);
  const SemanticColors colors{QPalette()};
  block->paint({.painter = painter, .colors = colors, .exposed = QRectF(-50, 0, 400, 100)});
  painter.end();
  for (int y = 0; y < wide.height(); ++y) {
    ASSERT_EQ(wide.pixelColor(48, y).alpha(), 0) << y;
    ASSERT_EQ(wide.pixelColor(352, y).alpha(), 0) << y;
  }
}

TEST(BulletListView, EachItemStandsAfterABulletWithItsMarkdownApplied) {
  Block block("- **bold** text\n* two");
  EXPECT_EQ(block.lines(), (Lines{"\u2022 bold text", "\u2022 two"}));
  const SemanticColors colors{QPalette()};
  const QRectF bullet = block->characterRect(0, colors);
  EXPECT_EQ(bullet.top(), 0);
  EXPECT_LT(bullet.left(), 1);
  EXPECT_EQ(block.rectOf("bold").top(), 0);
  EXPECT_EQ(block.rectOf("bold").left(), std::ceil(bullet.width()) + 8);
  EXPECT_NEAR(block.rectOf("two").top(), std::ceil(block.rectOf("bold").height()) + 4, 0.01);
}

TEST(NumberedListView, ItemsAreNumberedByTheirPositionInABoxOfTwentyPoints) {
  Block block("3. a\n7. b");
  EXPECT_EQ(block.lines(), (Lines{"1. a", "2. b"}));
  const SemanticColors colors{QPalette()};
  EXPECT_NEAR(block->characterRect(1, colors).right(), 20, 0.01);
  EXPECT_EQ(block.rectOf("a").left(), 28);
}

TEST(ListView, InAListFromRightToLeftTheLabelsAreOnTheRight) {
  const SemanticColors colors{QPalette()};
  for (const char *list : {"- \u0645\u0631\u062d\u0628\u0627", "1. \u0645\u0631\u062d\u0628\u0627"}) {
    Block block(list);
    EXPECT_GT(block->characterRect(0, colors).left(), width - 21) << list;
    EXPECT_LE(block->characterRect(block->length() - 1, colors).right(), width - 8) << list;
    EXPECT_GT(block->characterRect(block->length() - 1, colors).left(), width / 2) << list;
  }
}

TEST(TableGridView, ShowsTrimmedCellsAndAnEmptyOneWhereARowIsShort) {
  EXPECT_EQ(Block("| a | b |\n|---|---|\n| 1 |").lines(), (Lines{"a\tb", "1\t"}));
}

TEST(TableGridView, DoesNotShowCellsBeyondItsColumns) {
  EXPECT_EQ(Block("| a | b |\n|---|---|\n| 1 | 2 | 3 |").lines(), (Lines{"a\tb", "1\t2"}));
}

TEST(TableGridView, ColumnsShareTheWidthAndCellsArePadded) {
  Block block("| a | b |\n|---|---|\n| 1 | 2 |");
  EXPECT_EQ(block.rectOf("a").topLeft(), QPointF(10, 6));
  EXPECT_EQ(block.rectOf("b").left(), 150 + 10);
  EXPECT_EQ(block.rectOf("1").topLeft(), QPointF(10, 6 + std::ceil(block.rectOf("a").height()) + 6 + 1 + 5));
}

TEST(TableGridView, LinesAreBetweenCellsAndNotBelowTheLastRow) {
  const auto countRows = [](const QImage &image) {
    int lines = 0;
    for (int y = 2; y < image.height() - 2; ++y) {
      lines += image.pixelColor(5, y).alpha() > 0 ? 1 : 0;
    }
    return lines;
  };
  EXPECT_EQ(countRows(Block("| a | b |\n|---|---|\n| 1 | 2 |").drawn()), 1);
  EXPECT_EQ(countRows(Block("| a | b |\n|---|---|\n| 1 | 2 |\n| 3 | 4 |").drawn()), 2);
}

TEST(TableGridView, LinesAreOfTheBordersStrengthInTheHeaderAndOfHalfOfItBelow) {
  Block block("| a | b |\n|---|---|\n| 1 | 2 |\n| 3 | 4 |");
  const QImage image = block.drawn();
  const int full = qRound(0.3 * 255);
  const int half = qRound(0.15 * 255);
  const auto headerBottom = static_cast<int>(block.rectOf("1").top()) - 5 - 1;
  const auto rowBottom = static_cast<int>(block.rectOf("3").top()) - 5 - 1;
  EXPECT_NEAR(image.pixelColor(149, 3).alpha(), full, 1);
  EXPECT_NEAR(image.pixelColor(60, headerBottom).alpha(), full, 1);
  EXPECT_NEAR(image.pixelColor(149, headerBottom + 3).alpha(), half, 1);
  EXPECT_NEAR(image.pixelColor(60, rowBottom).alpha(), half, 1);
  for (const int x : {0, 299}) {
    EXPECT_NEAR(image.pixelColor(x, image.height() / 2).alpha(), full, 1) << x;
  }
  for (const int y : {0, image.height() - 1}) {
    EXPECT_NEAR(image.pixelColor(60, y).alpha(), full, 1) << y;
  }
  EXPECT_LT(image.pixelColor(0, 0).alpha(), full / 2);  // the corner is round
  EXPECT_EQ(image.pixelColor(60, 3).alpha(), 0);
}

TEST(TableGridView, AHeaderAloneHasItsLineToo) {
  Block block("| a | b |\n|---|---|");
  EXPECT_EQ(block->height(), 6 + std::ceil(block.rectOf("a").height()) + 6 + 1);
}

TEST(TableGridView, OneColumnHasNoVerticalLines) {
  const auto countColumns = [](const QImage &image) {
    int lines = 0;
    for (int x = 2; x < image.width() - 2; ++x) {
      lines += image.pixelColor(x, 3).alpha() > 0 ? 1 : 0;
    }
    return lines;
  };
  EXPECT_EQ(countColumns(Block("| a |\n|---|\n| 1 |").drawn()), 0);
  EXPECT_GE(countColumns(Block("| a | b |\n|---|---|\n| 1 | 2 |").drawn()), 1);
}

TEST(BlockView, EveryKindHasItsFont) {
  const auto sized = [](QFont font, int size, QFont::Weight weight = QFont::Normal) {
    font.setPixelSize(size);
    font.setWeight(weight);
    return font;
  };
  const QFont ui = QFontDatabase::systemFont(QFontDatabase::GeneralFont);
  const QFont fixed = QFontDatabase::systemFont(QFontDatabase::FixedFont);
  const struct {
    const char *markdown;
    QFont font;
  } cases[] = {{"# Wording", sized(ui, 17, QFont::Bold)},
               {"## Wording", sized(ui, 15, QFont::Bold)},
               {"### Wording", sized(ui, 14, QFont::DemiBold)},
               {"Wording", sized(ui, 13)},
               {"**Wording**", sized(ui, 13, QFont::Bold)},
               {"- Wording", sized(ui, 13)},
               {"1. Wording", sized(ui, 13)},
               {"```\nWording\n```", sized(fixed, 12)},
               {"```Wording\nx\n```", sized(ui, 10, QFont::Medium)},
               {"| Wording |\n|---|\n| 1 |", sized(ui, 12, QFont::DemiBold)},
               {"| a |\n|---|\n| Wording |", sized(ui, 12)}};
  const SemanticColors colors{QPalette()};
  for (const auto &[markdown, font] : cases) {
    Block block(markdown);
    const auto start = static_cast<int>(block->plainText().indexOf(QLatin1String("ording")));
    const qreal from = block->characterRect(start, colors).left();
    const qreal to = block->characterRect(start + 5, colors).right();
    EXPECT_NEAR(to - from, QFontMetricsF(font).horizontalAdvance(QStringLiteral("ording")), 0.6) << markdown;
  }
}

TEST(TextBlockView, HeadingsAreVerbatimInTheirSizes) {
  Block large("# **a**");
  Block small("### **a**");
  EXPECT_EQ(large.lines(), Lines{"**a**"});
  EXPECT_GT(large->height(), small->height());
}

TEST(TableGridView, ATableWiderThanItsPlaceScrollsInsideItsFrame) {
  std::string header = "|";
  std::string rule = "|";
  std::string row = "|";
  for (int column = 0; column < 100; ++column) {
    header += " Heading" + std::to_string(column) + " |";
    rule += "---|";
    row += " value" + std::to_string(column) + " |";
  }
  Block block(header + "\n" + rule + "\n" + row);
  EXPECT_GT(block->scrollRange(), 5000);
  EXPECT_LE(block->height(), 80);  // No heading is broken.
  EXPECT_GT(block.rectOf("Heading99").left(), 5000);
  block->setScrollOffset(1e9);
  EXPECT_LE(block.rectOf("Heading99").right(), width);
  EXPECT_EQ(block->scrollThumb().width(), 24);
  EXPECT_GT(block->scrollThumb().right(), width - 5);
}

TEST(TableGridView, ATableOfShortWordsNeverScrolls) {
  EXPECT_EQ(Block("| a | b | c | d | e |\n|---|---|---|---|---|\n| many short words | 2 | 3 | 4 | 5 |")
                ->scrollRange(),
            0);
}

TEST(TableGridView, ATableFromRightToLeftBeginsOnTheRight) {
  Block block("| \u0627\u0633\u0645 | b |\n|---|---|\n| 1 | 2 |");
  EXPECT_GT(block.rectOf("1").left(), width / 2);
  EXPECT_LT(block.rectOf("2").left(), width / 2);
}

TEST(TableGridView, TwoThousandRowsAreOfTheHeightThatTheyHaveWhenLaidOutOneByOne) {
  std::string table = "| a | b |\n|---|---|";
  for (int row = 0; row < 2000; ++row) {
    table += "\n| row " + std::to_string(row) + " | " +
             (row % 7 == 0   ? std::string(200, 'x')
              : row % 5 == 0 ? "caf\u00e9"
                             : "plain") +
             " |";
  }
  Block block(table);
  const SemanticColors colors{QPalette()};
  qreal bottom = 0;
  int position = 0;
  for (const auto &line : block->plainText().split(QLatin1Char('\n'))) {
    const QRectF rect = block->characterRect(position, colors);
    ASSERT_GE(rect.top(), bottom) << line.toStdString();
    ASSERT_LE(rect.top(), bottom + 12) << line.toStdString();
    bottom = std::max(rect.bottom(),
                      block->characterRect(position + static_cast<int>(line.size()) - 1, colors).bottom());
    position += static_cast<int>(line.size()) + 1;
  }
  EXPECT_NEAR(block->height(), bottom + 5, 1.5);
}

TEST(TextBlockView, WordsThatAreTooLongAreBrokenAtTheWidth) {
  Block block(std::string(300, 'w'));
  EXPECT_GT(block->height(), 3 * 13);
  const SemanticColors colors{QPalette()};
  for (int position = 0; position < 300; ++position) {
    ASSERT_LE(block->characterRect(position, colors).right(), width);
  }
}

TEST(TextBlockView, AParagraphFromRightToLeftStandsOnTheRight) {
  Block block("\u0645\u0631\u062d\u0628\u0627 GNU");
  const SemanticColors colors{QPalette()};
  EXPECT_NEAR(block->characterRect(0, colors).right(), width, 1);
  EXPECT_LT(block.rectOf("GNU").right(), block->characterRect(0, colors).left());
}

}  // namespace
}  // namespace lumiwren
