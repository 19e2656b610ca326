#include "markdown/views/MarkdownTextView.h"

#include "markdown/views/MarkdownBlockView.h"

#include <algorithm>
#include <utility>

namespace lumiwren {

bool MarkdownTextView::setMarkdown(const std::string &markdown) {
  if (markdown == document_.text()) {
    return false;
  }
  MarkdownDocument document(markdown);
  const auto &now = document.blocks();
  const auto &before = document_.blocks();
  auto &views = blocks();
  const auto first = static_cast<std::size_t>(
      std::mismatch(before.begin(), before.end(), now.begin(), now.end()).first - before.begin());
  views.resize(std::min(views.size(), now.size()));
  touchedBlocks_ = 0;
  for (std::size_t index = 0; index < now.size(); ++index) {
    auto *const view = index < views.size() ? static_cast<MarkdownBlockView *>(views[index].get()) : nullptr;
    if (!view) {
      views.push_back(MarkdownBlockView::make(now[index]));
    } else if (index < first || before[index] == now[index]) {
      view->rebind(now[index]);
      continue;
    } else if (!view->show(now[index])) {
      views[index] = MarkdownBlockView::make(now[index]);
    }
    ++touchedBlocks_;
  }
  document_ = std::move(document);
  blocksChanged(first);
  return true;
}

}  // namespace lumiwren
