#pragma once

#include "markdown/MarkdownDocument.h"
#include "markdown/views/SelectableTextView.h"

#include <cstddef>
#include <string>

namespace lumiwren {

/// An answer, drawn from its Markdown. Streaming is cheap: of a changed text only the blocks that differ are
/// looked at again, and of those only the lines, items and rows that differ.
class MarkdownTextView : public SelectableTextView {
  Q_OBJECT

public:
  using SelectableTextView::SelectableTextView;

  /// True when the text is another one than before.
  bool setMarkdown(const std::string &markdown);
  /// How many blocks the last change made or showed anew.
  std::size_t touchedBlocks() const { return touchedBlocks_; }

private:
  MarkdownDocument document_{{}};
  std::size_t touchedBlocks_ = 0;
};

}  // namespace lumiwren
