#include "markdown/views/BlockView.h"

#include "markdown/MarkdownParser.h"
#include "ui/Fonts.h"

#include <gtest/gtest.h>

#include <QImage>
#include <QPainter>

namespace lumiwren {
namespace {

constexpr qreal width = 300;

/// The one block of a text, laid out.
class Block {
public:
  explicit Block(const char *markdown) : blocks_(parseMarkdownContent(markdown)) {
    EXPECT_EQ(blocks_.size(), 1U);
    view_ = BlockView::make(blocks_.at(0), SemanticColors(QPalette()));
    view_->layOutFor(width);
  }
  BlockView *operator->() { return view_.get(); }
  std::vector<std::string> texts() {
    std::vector<std::string> result;
    for (const auto &fragment : view_->fragments()) {
      result.push_back(fragment->text().toStdString());
    }
    return result;
  }
  QImage drawn() {
    QImage image(static_cast<int>(width), static_cast<int>(view_->height()), QImage::Format_ARGB32);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    view_->paint({.painter = painter, .colors = SemanticColors(QPalette()), .exposed = QRectF(image.rect())});
    return image;
  }

private:
  std::vector<MarkdownBlock> blocks_;
  std::unique_ptr<BlockView> view_;
};

using Texts = std::vector<std::string>;

TEST(CodeBlockView, ALabelIsShownForALanguageThatIsNotHidden) {
  EXPECT_EQ(Block("```json\na = 1\n```").texts(), (Texts{"json", "a = 1"}));
  for (const char *hidden : {"```Text\nx\n```", "```txt\nx\n```", "```plaintext\nx\n```", "```\nx\n```"}) {
    EXPECT_EQ(Block(hidden).texts(), Texts{"x"}) << hidden;
  }
}

TEST(CodeBlockView, TheCodeIsVerbatim) {
  EXPECT_EQ(Block("```\n**a**\n\n  <b>\n```").texts(), (Texts{"**a**", "", "  <b>"}));
}

TEST(CodeBlockView, AnEmptyOneStillDrawsItsPaddedBackground) {
  Block block("```\n```");
  EXPECT_GE(block->height(), 16 + 12);
  EXPECT_EQ(block.drawn().pixelColor(150, 5), QPalette().color(QPalette::Base));
}

TEST(CodeBlockView, LongLinesAreScrolledToAndNotWrapped) {
  Block block(("```\n" + std::string(200, 'x') + "\n```").c_str());
  EXPECT_EQ(block.texts().size(), 1U);
  EXPECT_GT(block->scrollRange(), 1000);
  block->setScrollOffset(1e9);
  EXPECT_EQ(block->scrollOffset(), block->scrollRange());
  EXPECT_NEAR(block->fragments()[0]->rect().left(), 8 - block->scrollRange(), 0.01);
  block->setScrollOffset(-5);
  EXPECT_EQ(block->scrollOffset(), 0);
}

TEST(BulletListView, EachItemStandsAfterABulletWithItsMarkdownApplied) {
  Block block("- **bold** text\n* two");
  EXPECT_EQ(block.texts(), (Texts{"\u2022", "bold text", "\u2022", "two"}));
  const auto &items = block->fragments();
  EXPECT_EQ(items[0]->rect().top(), items[1]->rect().top());
  EXPECT_NEAR(items[1]->rect().left() - items[0]->naturalWidth(), 8, 1);
  EXPECT_NEAR(items[3]->rect().top() - items[1]->rect().bottom(), 4, 0.01);
}

TEST(NumberedListView, ItemsAreNumberedByTheirPositionInABoxOfTwentyPoints) {
  Block block("3. a\n7. b");
  EXPECT_EQ(block.texts(), (Texts{"1.", "a", "2.", "b"}));
  const auto &items = block->fragments();
  EXPECT_NEAR(items[0]->rect().left() + items[0]->naturalWidth(), 20, 0.01);
  EXPECT_EQ(items[1]->rect().left(), 28);
}

TEST(TableGridView, ShowsTrimmedCellsAndAnEmptyOneWhereARowIsShort) {
  EXPECT_EQ(Block("| a | b |\n|---|---|\n| 1 |").texts(), (Texts{"a", "b", "1", ""}));
}

TEST(TableGridView, DoesNotShowCellsBeyondItsColumns) {
  EXPECT_EQ(Block("| a | b |\n|---|---|\n| 1 | 2 | 3 |").texts(), (Texts{"a", "b", "1", "2"}));
}

TEST(TableGridView, ColumnsShareTheWidthAndCellsArePadded) {
  Block block("| a | b |\n|---|---|\n| 1 | 2 |");
  const auto &cells = block->fragments();
  EXPECT_EQ(cells[0]->rect().topLeft(), QPointF(10, 6));
  EXPECT_EQ(cells[1]->rect().left(), 149.5 + 1 + 10);
  EXPECT_EQ(cells[2]->rect().top(), 6 + cells[0]->height() + 6 + 1 + 5);
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

TEST(TableGridView, AHeaderAloneHasItsLineToo) {
  Block block("| a | b |\n|---|---|");
  EXPECT_EQ(block->height(), 6 + block->fragments()[0]->height() + 6 + 1);
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

TEST(TextBlockView, HeadingsAreVerbatimInTheirSizes) {
  Block large("# **a**");
  Block small("### **a**");
  EXPECT_EQ(large.texts(), Texts{"**a**"});
  EXPECT_GT(large->height(), small->height());
}

TEST(TextBlockView, WordsThatAreTooLongAreBrokenAtTheWidth) {
  Block block(std::string(300, 'w').c_str());
  EXPECT_GT(block->height(), 3 * 13);
  EXPECT_LE(block->fragments()[0]->naturalWidth(), width);
}

}  // namespace
}  // namespace lumiwren
