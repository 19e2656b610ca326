#include "ui/TextStyle.h"

#include "ui/Fonts.h"

namespace lumiwren {

QFont fontOf(TextStyle style) {
  switch (style) {
    case TextStyle::Badge:
      return systemFont(9, QFont::Medium);
    case TextStyle::Caption:
      return systemFont(11);
    case TextStyle::Subheadline:
      return systemFont(12, QFont::Medium);
    case TextStyle::Body:
      return systemFont(13);
    case TextStyle::Label:
      return systemFont(13, QFont::Medium);
    case TextStyle::Headline:
      return systemFont(13, QFont::DemiBold);
    case TextStyle::Title2:
      return systemFont(17, QFont::DemiBold);
    case TextStyle::Title:
      return systemFont(22, QFont::DemiBold);
  }
  return systemFont(13);
}

}  // namespace lumiwren
