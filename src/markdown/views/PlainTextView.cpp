#include "markdown/views/PlainTextView.h"

#include "ui/Fonts.h"

#include <QFontMetricsF>

#include <algorithm>
#include <cmath>
#include <memory>
#include <utility>

namespace lumiwren {
namespace {

/// A text as it stands.
class PlainTextBlock : public BlockView {
public:
  PlainTextBlock(QString text, int fontSize) : text_(std::move(text)), fontSize_(fontSize) {}

private:
  std::size_t rowCount() const override { return 1; }
  QString rowText(std::size_t /*row*/) const override { return text_; }
  void fill(std::size_t /*row*/, std::vector<TextFragment> &texts,
            const SemanticColors & /*colors*/) const override {
    texts.resize(1);
    // The toolkit lays out a line feed as a letter.
    QString shown = text_;
    texts.front().setText(
        {.text = shown.replace(QLatin1Char('\n'), QChar::LineSeparator), .font = systemFont(fontSize_)});
  }
  qreal arrange(std::size_t /*row*/, std::vector<TextFragment> &texts) const override {
    return texts.front().layOut(width());
  }

  const QString text_;
  const int fontSize_;
};

}  // namespace

PlainTextView::PlainTextView(int fontSize, QWidget *parent)
    : SelectableTextView(parent), fontSize_(fontSize) {}

bool PlainTextView::setText(const QString &text) {
  if (text == text_ && !blocks().empty()) {
    return false;
  }
  text_ = text;
  blocks().clear();
  blocks().push_back(std::make_unique<PlainTextBlock>(text_, fontSize_));
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
