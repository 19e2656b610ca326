#include "markdown/views/MarkdownTextView.h"

#include <QEvent>

#include <algorithm>
#include <utility>

namespace lumiwren {

bool MarkdownTextView::setMarkdown(const std::string &markdown) {
  if (markdown == markdown_) {
    return false;
  }
  markdown_ = markdown;
  MarkdownDocument document(markdown_);
  const auto &now = document.blocks();
  const auto &before = document_.blocks();
  const SemanticColors colors(palette());
  auto &views = blocks();
  const auto first = static_cast<std::size_t>(
      std::mismatch(before.begin(), before.end(), now.begin(), now.end()).first - before.begin());
  views.resize(std::min(views.size(), now.size()));
  for (std::size_t index = first; index < now.size(); ++index) {
    if (index == views.size()) {
      views.push_back(BlockView::make(now[index], colors));
    } else if (before[index] != now[index] && !views[index]->show(now[index], colors)) {
      views[index] = BlockView::make(now[index], colors);
    }
  }
  document_ = std::move(document);
  blocksChanged(first);
  return true;
}

void MarkdownTextView::changeEvent(QEvent *event) {
  if (event->type() == QEvent::PaletteChange) {
    // Links carry their colour in their text's format.
    const SemanticColors colors(palette());
    for (std::size_t index = 0; index < blocks().size(); ++index) {
      blocks()[index]->show(document_.blocks()[index], colors);
    }
    blocksChanged(0);
  }
  QWidget::changeEvent(event);
}

}  // namespace lumiwren
