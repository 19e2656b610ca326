#include "markdown/views/PlainTextView.h"

#include "markdown/views/TextBlockView.h"
#include "ui/Fonts.h"

#include <QFontMetricsF>

#include <algorithm>
#include <cmath>
#include <memory>

namespace lumiwren {

PlainTextView::PlainTextView(int fontSize, QWidget *parent)
    : SelectableTextView(parent), fontSize_(fontSize) {}

bool PlainTextView::setText(const QString &text) {
  if (text == text_ && !blocks().empty()) {
    return false;
  }
  text_ = text;
  auto block = std::make_unique<TextBlockView>();
  block->showText({.text = text_, .font = systemFont(fontSize_)});
  blocks().clear();
  blocks().push_back(std::move(block));
  blocksChanged(0);
  return true;
}

int PlainTextView::idealWidth() const {
  const QFontMetricsF metrics(systemFont(fontSize_));
  qreal width = 0;
  for (const auto &line : text_.split(QLatin1Char('\n'))) {
    width = std::max(width, metrics.horizontalAdvance(line));
  }
  return static_cast<int>(std::ceil(width)) + 1;
}

}  // namespace lumiwren
