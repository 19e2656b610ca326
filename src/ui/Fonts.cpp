#include "ui/Fonts.h"

#include <QFontDatabase>

namespace lumiwren {
namespace {

QFont sized(QFontDatabase::SystemFont kind, int size, QFont::Weight weight) {
  QFont font = QFontDatabase::systemFont(kind);
  font.setPixelSize(size);
  font.setWeight(weight);
  return font;
}

}  // namespace

QFont systemFont(int size, QFont::Weight weight) {
  return sized(QFontDatabase::GeneralFont, size, weight);
}

QFont monospacedSystemFont(int size) {
  return sized(QFontDatabase::FixedFont, size, QFont::Normal);
}

}  // namespace lumiwren
