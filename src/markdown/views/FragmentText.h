#pragma once

#include "ui/Palette.h"

#include <QFont>
#include <QList>
#include <QString>
#include <QTextLayout>

#include <string_view>
#include <vector>

namespace lumiwren {

QString fromUtf8(std::string_view text);
/// How many UTF-16 units fromUtf8() gives.
int utf16Length(std::string_view text);
/// What is seen of a line once its inline Markdown is applied.
QString inlinePlainText(std::string_view line);

/// A text and how it looks, apart from its place and its main colour. Positions count UTF-16 units.
struct FragmentText {
  struct Link {
    int start;
    int length;
    QString address;
    bool operator==(const Link &) const = default;
  };

  QString text;
  QFont font;
  QList<QTextLayout::FormatRange> formats = {};  // in order, none over another
  std::vector<Link> links = {};

  static FragmentText plain(std::string_view text, const QFont &font);
  /// With the line's inline Markdown applied; `font` is that of unstyled text. Links whose address is safe
  /// to open (http, https, mailto) are links, others are text.
  static FragmentText styled(std::string_view line, const QFont &font, const SemanticColors &colors);

  /// Up to where this text and another one look the same.
  int commonStart(const FragmentText &other) const;
};

}  // namespace lumiwren
