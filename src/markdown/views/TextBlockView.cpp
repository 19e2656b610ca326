#include "markdown/views/TextBlockView.h"

#include "ui/Fonts.h"

#include <utility>
#include <variant>

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

void TextBlockView::showText(FragmentText text) {
  // Line ends of a text that is no Markdown are shown as such.
  text.text.replace(QLatin1Char('\n'), QChar::LineSeparator);
  fragment(0).setText(std::move(text));
}

bool TextBlockView::setBlock(const MarkdownBlock &block, const SemanticColors &colors) {
  if (const auto *heading = std::get_if<MarkdownHeading>(&block)) {
    fragment(0).setText(FragmentText::plain(heading->text, qFont(heading->font())));
    return true;
  }
  if (const auto *paragraph = std::get_if<MarkdownParagraph>(&block)) {
    fragment(0).setText(FragmentText::styled(paragraph->text, qFont(MarkdownParagraph::font), colors));
    return true;
  }
  return false;
}

qreal TextBlockView::layOut(qreal width) {
  return fragment(0).layOut(width);
}

void TextBlockView::paint(const FragmentPainting &painting) const {
  fragments().front()->paint(painting, painting.colors.primary);
}

}  // namespace lumiwren
