#include "markdown/views/TextFragment.h"

#include "ui/Fonts.h"

#include <QFontMetricsF>
#include <QTextCharFormat>
#include <QTextOption>
#include <QUrl>

#include <algorithm>
#include <utility>

namespace lumiwren {
namespace {

constexpr int tabWidth = 4;  // in spaces
constexpr qreal unlimitedWidth = 1 << 20;

QString fromUtf8(std::string_view text) {
  return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

/// The address in its encoded form, which holds nothing that a tooltip could take for markup; empty when it
/// is not safe to open.
QString safeAddress(const std::string &destination) {
  const QUrl url(fromUtf8(destination), QUrl::StrictMode);
  const auto scheme = url.scheme();
  const bool web =
      (scheme == QLatin1String("http") || scheme == QLatin1String("https")) && !url.host().isEmpty();
  if (!url.isValid() || !(web || scheme == QLatin1String("mailto"))) {
    return {};
  }
  return QString::fromLatin1(url.toEncoded());
}

QTextCharFormat charFormat(const MarkdownRun &run, const QFont &font, const SemanticColors &colors,
                           bool isLink) {
  QTextCharFormat format;
  if (contains(run.style, MarkdownStyle::Code)) {
    format.setFont(monospacedSystemFont(font.pixelSize() - 1));
    format.setBackground(withOpacity(colors.primary, 0.08));
  }
  if (contains(run.style, MarkdownStyle::Emphasis)) {
    format.setFontItalic(true);
  }
  if (contains(run.style, MarkdownStyle::Strong)) {
    format.setFontWeight(QFont::Bold);
  }
  if (contains(run.style, MarkdownStyle::Strikethrough)) {
    format.setFontStrikeOut(true);
  }
  if (contains(run.style, MarkdownStyle::Image)) {
    format.setForeground(colors.secondary);
  }
  if (isLink) {
    format.setForeground(colors.link);
    format.setFontUnderline(true);
  }
  return format;
}

}  // namespace

FragmentText FragmentText::plain(std::string_view text, const QFont &font) {
  return {.text = fromUtf8(text), .font = font};
}

FragmentText FragmentText::styled(std::string_view line, const QFont &font, const SemanticColors &colors) {
  const auto inlineText = parseInlineMarkdown(line);
  FragmentText result{.text = {}, .font = font};
  for (const auto &run : inlineText.runs) {
    const auto text = fromUtf8(std::string_view(inlineText.text).substr(run.begin, run.length));
    const int start = static_cast<int>(result.text.size());
    const int length = static_cast<int>(text.size());
    QString address;
    if (run.link != MarkdownRun::noLink) {
      address = safeAddress(inlineText.links.at(static_cast<std::size_t>(run.link)));
    }
    if (run.style != MarkdownStyle::Plain || !address.isEmpty()) {
      result.formats.push_back({start, length, charFormat(run, font, colors, !address.isEmpty())});
    }
    if (!address.isEmpty()) {
      result.links.push_back({start, length, address});
    }
    result.text += text;
  }
  return result;
}

bool TextFragment::setText(FragmentText text) {
  if (text == text_ && width_ >= 0) {
    return false;
  }
  text_ = std::move(text);
  width_ = -1;
  return true;
}

qreal TextFragment::layOut(qreal width, Wrapping wrapping) {
  width = std::max(width, 1.0);
  if (width == width_) {
    return height_;
  }
  width_ = width;
  QTextOption option;
  option.setAlignment(alignment_);
  option.setTabStopDistance(tabWidth * QFontMetricsF(text_.font).horizontalAdvance(QLatin1Char(' ')));
  if (wrapping == Wrapping::Wrap) {
    option.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    option.setTextDirection(Qt::LayoutDirectionAuto);
  } else {
    option.setWrapMode(QTextOption::NoWrap);
    option.setTextDirection(Qt::LeftToRight);
  }
  layout_.setText(text_.text);
  layout_.setFont(text_.font);
  layout_.setFormats(text_.formats);
  layout_.setTextOption(option);
  layout_.setCacheEnabled(true);
  height_ = 0;
  naturalWidth_ = 0;
  layout_.beginLayout();
  while (true) {
    QTextLine line = layout_.createLine();
    if (!line.isValid()) {
      break;
    }
    line.setLineWidth(wrapping == Wrapping::Wrap ? width : unlimitedWidth);
    line.setPosition({0, height_});
    height_ += std::ceil(line.height());
    naturalWidth_ = std::max(naturalWidth_, line.naturalTextWidth());
  }
  layout_.endLayout();
  return height_;
}

void TextFragment::paint(const FragmentPainting &painting, const QColor &color) const {
  // A text without wrapping is wider than its place.
  const QRectF extent(position_, QSizeF(std::max(width_, naturalWidth_), height_));
  if (!extent.intersects(painting.exposed)) {
    return;
  }
  QList<QTextLayout::FormatRange> selections;
  const int from = std::max(painting.selectionStart, start()) - start();
  const int to = std::min(painting.selectionEnd, end()) - start();
  if (from < to) {
    QTextCharFormat format;
    format.setBackground(withOpacity(painting.colors.selection, 0.4));
    selections.push_back({from, to - from, format});
  }
  painting.painter.setPen(color);
  layout_.draw(&painting.painter, position_, selections, painting.exposed);
}

QTextLine TextFragment::lineAt(qreal y) const {
  for (int index = 0; index + 1 < layout_.lineCount(); ++index) {
    if (y < layout_.lineAt(index + 1).y()) {
      return layout_.lineAt(index);
    }
  }
  return layout_.lineAt(layout_.lineCount() - 1);
}

int TextFragment::positionAt(QPointF point) const {
  const auto line = lineAt(point.y() - position_.y());
  return start_ + (line.isValid() ? line.xToCursor(point.x() - position_.x()) : 0);
}

QRectF TextFragment::characterRect(int position) const {
  const int offset = position - start_;
  const auto line = layout_.lineForTextPosition(offset);
  if (!line.isValid()) {
    return {position_, QSizeF(0, height_)};
  }
  const qreal left = line.cursorToX(offset);
  const qreal right = line.cursorToX(offset + 1);
  return {position_ + QPointF(std::min(left, right), line.y()),
          QSizeF(std::abs(right - left), line.height())};
}

const FragmentText::Link *TextFragment::linkAt(QPointF point) const {
  if (text_.links.empty() || !rect().contains(point)) {
    return nullptr;
  }
  const auto line = lineAt(point.y() - position_.y());
  if (!line.isValid() || !line.naturalTextRect().translated(position_).contains(point)) {
    return nullptr;
  }
  const int offset = line.xToCursor(point.x() - position_.x(), QTextLine::CursorOnCharacter);
  const auto found = std::find_if(text_.links.begin(), text_.links.end(), [offset](const auto &link) {
    return offset >= link.start && offset < link.start + link.length;
  });
  return found == text_.links.end() ? nullptr : &*found;
}

}  // namespace lumiwren
