#pragma once

#include "markdown/MarkdownDocument.h"
#include "markdown/views/SelectableTextView.h"

#include <string>

namespace lumiwren {

/// An answer, drawn from its Markdown. Streaming is cheap: of a changed text only the blocks that differ are
/// looked at again.
class MarkdownTextView : public SelectableTextView {
  Q_OBJECT

public:
  using SelectableTextView::SelectableTextView;

  /// True when the text is another one than before.
  bool setMarkdown(const std::string &markdown);

protected:
  void changeEvent(QEvent *event) override;

private:
  std::string markdown_;
  MarkdownDocument document_{{}};
};

}  // namespace lumiwren
