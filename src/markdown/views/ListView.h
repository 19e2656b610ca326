#pragma once

#include "markdown/views/BlockView.h"

#include <string_view>
#include <vector>

namespace lumiwren {

/// Items below each other, each after its label.
class ListView : public BlockView {
public:
  void paint(const FragmentPainting &painting) const override;

protected:
  void setItems(const std::vector<std::string_view> &items, const SemanticColors &colors);

private:
  qreal layOut(qreal width) override;
  virtual QString label(std::size_t index) const = 0;
  /// The box in which a label stands, given the label as it is laid out.
  virtual qreal labelWidth(const TextFragment &label) const = 0;
};

class BulletListView : public ListView {
private:
  bool setBlock(const MarkdownBlock &block, const SemanticColors &colors) override;
  QString label(std::size_t index) const override;
  qreal labelWidth(const TextFragment &label) const override;
};

class NumberedListView : public ListView {
private:
  bool setBlock(const MarkdownBlock &block, const SemanticColors &colors) override;
  QString label(std::size_t index) const override;
  qreal labelWidth(const TextFragment &label) const override;
};

}  // namespace lumiwren
