#include "markdown/views/FragmentText.h"

#include "markdown/MarkdownInline.h"
#include "ui/Fonts.h"

#include <QTextCharFormat>
#include <QUrl>

#include <algorithm>

namespace lumiwren {
namespace {

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
    QFont code = monospacedSystemFont(12);
    code.setPixelSize(font.pixelSize() - 1);
    format.setFont(code);
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

QString fromUtf8(std::string_view text) {
  return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

int utf16Length(std::string_view text) {
  const bool isASCII = std::all_of(
      text.begin(), text.end(), [](char character) { return static_cast<unsigned char>(character) < 0x80; });
  return static_cast<int>(isASCII ? static_cast<qsizetype>(text.size()) : fromUtf8(text).size());
}

QString inlinePlainText(std::string_view line) {
  return fromUtf8(parseInlineMarkdown(line).text);
}

FragmentText FragmentText::plain(std::string_view text, const QFont &font) {
  return {.text = fromUtf8(text), .font = font};
}

FragmentText FragmentText::styled(std::string_view line, const QFont &font, const SemanticColors &colors) {
  const auto inlineText = parseInlineMarkdown(line);
  FragmentText result{.text = {}, .font = font};
  result.text.reserve(static_cast<qsizetype>(inlineText.text.size()));
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

int FragmentText::commonStart(const FragmentText &other) const {
  if (font != other.font) {
    return 0;
  }
  auto common = other.text.startsWith(text)
                    ? text.size()
                    : std::mismatch(text.begin(), text.end(), other.text.begin(), other.text.end()).first -
                          text.begin();
  const auto [mine, theirs] =
      std::mismatch(formats.begin(), formats.end(), other.formats.begin(), other.formats.end());
  if (mine != formats.end()) {
    common = std::min<qsizetype>(common, mine->start);
  }
  if (theirs != other.formats.end()) {
    common = std::min<qsizetype>(common, theirs->start);
  }
  return static_cast<int>(common);
}

}  // namespace lumiwren
