#include "ui/Symbols.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QImage>
#include <QRegularExpression>
#include <QStringList>

namespace lumiwren {
namespace {

/// Every drawing that there is; the first symbol that is drawn brings them in.
QStringList names() {
  symbol(QStringLiteral("checkmark"), 1, Qt::black, 1);
  QStringList found = QDir(QStringLiteral(":/symbols")).entryList();
  found.replaceInStrings(QRegularExpression(QStringLiteral("\\.svg$")), {});
  return found;
}

TEST(Symbols, EachIsDrawnInTheColourAskedForAndInNoOther) {
  for (const auto *const needed :
       {"arrow.up.circle.fill", "camera.viewfinder", "character.book.closed.fill", "checkmark",
        "checkmark.circle.fill", "doc.on.doc", "exclamationmark.triangle.fill", "eye", "eye.slash",
        "keyboard.badge.ellipsis", "pencil", "plus", "text.cursor", "trash", "xmark.circle.fill"}) {
    EXPECT_TRUE(names().contains(QLatin1String(needed))) << needed;
  }
  for (const auto &name : names()) {
    const QImage image =
        symbol(name, 24, QColor(10, 200, 30), 2).toImage().convertToFormat(QImage::Format_ARGB32);
    ASSERT_EQ(image.size(), QSize(48, 48)) << name.toStdString();
    int drawn = 0;
    for (int y = 0; y < image.height(); ++y) {
      for (int x = 0; x < image.width(); ++x) {
        const QColor color = image.pixelColor(x, y);
        if (color.alpha() == 255) {
          ++drawn;
          EXPECT_EQ(color.rgb(), QColor(10, 200, 30).rgb());
        }
      }
    }
    EXPECT_GT(drawn, 60) << name.toStdString();
    EXPECT_EQ(image.pixelColor(0, 0).alpha(), 0) << name.toStdString();
  }
}

TEST(Symbols, ACircleHasItsSignCutOut) {
  const QImage image = symbol(QStringLiteral("xmark.circle.fill"), 24, Qt::black, 1).toImage();
  EXPECT_LT(image.pixelColor(12, 12).alpha(), 60);
  EXPECT_GT(image.pixelColor(12, 4).alpha(), 200);
}

TEST(Symbols, TheSizeIsInPointsWhateverTheScale) {
  const QPixmap pixmap = symbol(QStringLiteral("checkmark"), 13, Qt::black, 1.5);
  EXPECT_EQ(pixmap.width(), 20);
  EXPECT_EQ(pixmap.devicePixelRatio(), 1.5);
}

}  // namespace
}  // namespace lumiwren
