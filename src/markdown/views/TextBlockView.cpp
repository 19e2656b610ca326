#include "markdown/views/TextBlockView.h"

#include "ui/Fonts.h"

namespace lumiwren {
namespace {

QFont qFont(const MarkdownFont &font) {
  switch (font.weight) {
    case MarkdownFont::Weight::Bold:
      return systemFont(font.size, QFont::Bold);
    case MarkdownFont::Weight::Semibold:
      return systemFont(font.size, QFont::DemiBold);
    case MarkdownFont::Weight::Regular:
      break;
  }
  return systemFont(font.size);
}

}  // namespace

QString TextBlockView::rowText(std::size_t /*row*/) const {
  const auto *heading = std::get_if<MarkdownHeading>(&block());
  return heading ? fromUtf8(heading->text) : inlinePlainText(blockAs<MarkdownParagraph>().text);
}

void TextBlockView::fill(std::size_t /*row*/, std::vector<TextFragment> &texts,
                         const SemanticColors &colors) const {
  texts.resize(1);
  if (const auto *heading = std::get_if<MarkdownHeading>(&block())) {
    texts.front().setText(FragmentText::plain(heading->text, qFont(heading->font())));
  } else {
    texts.front().setText(
        FragmentText::styled(blockAs<MarkdownParagraph>().text, qFont(MarkdownParagraph::font), colors));
  }
}

qreal TextBlockView::arrange(std::size_t /*row*/, std::vector<TextFragment> &texts) const {
  return texts.front().layOut(width());
}

}  // namespace lumiwren
