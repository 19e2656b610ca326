#include "markdown/views/QuickMetrics.h"

#include "markdown/views/TextFragment.h"

#include <QFontInfo>
#include <QFontMetricsF>

#include <memory>
#include <utility>
#include <vector>

namespace lumiwren {
namespace {

// A pair of letters may stand further apart than each alone, if by little.
constexpr qreal kerningReserve = 1.02;

}  // namespace

QuickMetrics::QuickMetrics(const QFont &font) : lineHeight_(0), advances_() {
  TextFragment line;
  line.setText({.text = QStringLiteral("x"), .font = font});
  lineHeight_ = line.layOut(1000);
  const QFontMetricsF metrics(font);
  const qreal reserve = QFontInfo(font).fixedPitch() ? 1 : kerningReserve;
  for (std::size_t character = 0; character < advances_.size(); ++character) {
    advances_[character] =
        character >= ' ' && character < 0x7F
            ? reserve * metrics.horizontalAdvance(QLatin1Char(static_cast<char>(character)))
            : -1;
  }
}

const QuickMetrics &QuickMetrics::of(const QFont &font) {
  // A handful of fonts; another text size of the desktop adds as many.
  static std::vector<std::pair<QFont, std::unique_ptr<const QuickMetrics>>> known;
  for (const auto &[knownFont, metrics] : known) {
    if (knownFont == font) {
      return *metrics;
    }
  }
  known.emplace_back(font, std::unique_ptr<const QuickMetrics>(new QuickMetrics(font)));
  return *known.back().second;
}

std::optional<qreal> QuickMetrics::width(std::string_view text) const {
  qreal width = 0;
  for (const char character : text) {
    const auto code = static_cast<unsigned char>(character);
    if (code >= advances_.size() || advances_[code] < 0) {
      return std::nullopt;
    }
    width += advances_[code];
  }
  return width;
}

}  // namespace lumiwren
