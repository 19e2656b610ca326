#pragma once

#include <QFont>
#include <QtGlobal>

#include <array>
#include <optional>
#include <string_view>

namespace lumiwren {

/// Measures simple texts without laying them out, which takes a hundred times as long. Main thread.
class QuickMetrics {
public:
  /// Those of a font; made once for each.
  static const QuickMetrics &of(const QFont &font);

  /// The whole height of a line without letters of other fonts.
  qreal lineHeight() const { return lineHeight_; }
  /// At least as wide as the text is on one line; empty when that is not so simple: a text with other
  /// characters than those of ASCII.
  std::optional<qreal> width(std::string_view text) const;

private:
  explicit QuickMetrics(const QFont &font);

  qreal lineHeight_;
  std::array<qreal, 128> advances_;  // negative where there is none
};

}  // namespace lumiwren
