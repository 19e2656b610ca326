#include "platform/linux/recognition/TextBlocks.h"

#include "base/Task.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace lumiwren {
namespace {

/// A sketch of a page: each '#' is a letter six pixels high and four wide in a cell of eight by twelve,
/// blanks are blank.
GreyImage sketch(const std::vector<std::string> &rows) {
  GreyImage image{0, static_cast<int>(rows.size()) * 12, {}};
  for (const auto &row : rows) {
    image.width = std::max(image.width, static_cast<int>(row.size()) * 8);
  }
  image.pixels.assign(static_cast<std::size_t>(image.width) * static_cast<std::size_t>(image.height), 255);
  for (std::size_t row = 0; row < rows.size(); ++row) {
    for (std::size_t column = 0; column < rows[row].size(); ++column) {
      for (int y = 0; y < 6 && rows[row][column] == '#'; ++y) {
        for (int x = 0; x < 4; ++x) {
          image.pixels[image.at(static_cast<int>(column) * 8 + x, static_cast<int>(row) * 12 + y)] = 0;
        }
      }
    }
  }
  return image;
}

/// The blocks in cells of the sketch: column, row, columns, rows.
std::vector<std::vector<int>> blocksOf(const std::vector<std::string> &rows) {
  std::vector<std::vector<int>> cells;
  for (const auto &[box, sample] : textLayout(sketch(rows), {}).blocks) {
    cells.push_back({box.left / 8, box.top / 12, (box.width() + 7) / 8, (box.height() + 11) / 12});
  }
  return cells;
}

using Cells = std::vector<std::vector<int>>;

TEST(TextBlocks, BlankPagesHaveNone) {
  EXPECT_TRUE(textLayout(sketch({"    ", "    "}), {}).blocks.empty());
  EXPECT_EQ(textLayout(sketch({"    "}), {}).letterHeight, 0);
}

TEST(TextBlocks, AParagraphIsOne) {
  EXPECT_EQ(blocksOf({"#### ## ###", "## #### ##", "###"}), (Cells{{0, 0, 11, 3}}));
}

TEST(TextBlocks, KnowTheHeightOfLettersAndTheLongestLine) {
  const auto layout = textLayout(sketch({"## #", "###### ###", "###"}), {});
  EXPECT_EQ(layout.letterHeight, 6);
  ASSERT_EQ(layout.blocks.size(), 1U);
  EXPECT_EQ(layout.blocks[0].sample, (PixelBox{0, 12, 76, 18}));
}

TEST(TextBlocks, ParagraphsFollowEachOther) {
  EXPECT_EQ(blocksOf({"#### ## ###", "## ####", "", "### ###", "##"}), (Cells{{0, 0, 11, 2}, {0, 3, 7, 2}}));
}

TEST(TextBlocks, ColumnsOfProseAreReadOneAfterTheOther) {
  EXPECT_EQ(blocksOf({"#### ### ##### ### ####    ##### ## ## ##### ####",
                      "##### ## ## ##### #####    #### ### ##### ### ###",
                      "#### ### ##### ### ####    ##### ## ## ##### ###"}),
            (Cells{{0, 0, 23, 3}, {27, 0, 22, 3}}));
}

TEST(TextBlocks, ATitleAboveColumnsComesFirst) {
  EXPECT_EQ(blocksOf({"         ######## ######## #########", "", "",
                      "#### ### ##### ### ####    ##### ## ## ##### ####",
                      "##### ## ## ##### #####    #### ### ##### ### ###"}),
            (Cells{{9, 0, 27, 1}, {0, 3, 23, 2}, {27, 3, 22, 2}}));
}

TEST(TextBlocks, TablesStayWhole) {
  EXPECT_EQ(blocksOf({"#####    ###    ####", "###      #      ##", "####     ##     ###"}),
            (Cells{{0, 0, 20, 3}}));
}

TEST(TextBlocks, ButtonsInARowStayWhole) {
  EXPECT_EQ(blocksOf({"####       ######      ##"}), (Cells{{0, 0, 25, 1}}));
}

TEST(TextBlocks, AListBesideProseIsAColumn) {
  EXPECT_EQ(blocksOf({"####    ##### ### ##### ### ##### ####", "        ##### ### ##### ### ##### ####",
                      "###", "        ##### ### ##### ### #####", "#####   ##### ### ####"}),
            (Cells{{0, 0, 4, 1}, {0, 2, 3, 1}, {0, 4, 5, 1}, {8, 0, 30, 2}, {8, 3, 25, 2}}));
}

TEST(TextBlocks, AThousandOfThemAreTakenAsOne) {
  std::vector<std::string> rows(4000);
  for (std::size_t row = 0; row < rows.size(); row += 4) {
    rows[row] = "#";
  }
  const auto image = sketch(rows);
  const auto layout = textLayout(image, {});
  ASSERT_EQ(layout.blocks.size(), 1U);
  EXPECT_EQ(layout.blocks[0].box, (PixelBox{0, 0, image.width, image.height}));
}

TEST(TextBlocks, LayoutEndsWhenItIsStopped) {
  std::stop_source stop;
  stop.request_stop();
  EXPECT_THROW(textLayout(sketch({"##"}), stop.get_token()), CancellationError);
}

}  // namespace
}  // namespace lumiwren
