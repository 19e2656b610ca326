#pragma once

#include "markdown/views/MarkdownBlockView.h"

#include <string_view>
#include <vector>

namespace lumiwren {

/// Items below each other, each after its label; in a list that begins right to left the labels are on the
/// right.
class ListView : public MarkdownBlockView {
protected:
  using MarkdownBlockView::MarkdownBlockView;

private:
  using Items = std::vector<std::string_view>;

  virtual const Items &items(const MarkdownBlock &block) const = 0;
  virtual QString label(std::size_t index) const = 0;
  /// The box in which a label stands, given the label as it is laid out.
  virtual qreal labelWidth(const TextFragment &label) const = 0;

  std::size_t firstDifference(const MarkdownBlock &next) const override;
  std::size_t rowCount() const override { return items(block()).size(); }
  qreal gapAbove(std::size_t row) const override;
  std::size_t prepareRows(std::size_t first) override;
  QString rowText(std::size_t row) const override;
  void fill(std::size_t row, std::vector<TextFragment> &texts, const SemanticColors &colors) const override;
  qreal arrange(std::size_t row, std::vector<TextFragment> &texts) const override;

  bool isRightToLeft_ = false;
};

class BulletListView : public ListView {
public:
  explicit BulletListView(const MarkdownBlock &block) : ListView(block) {}

private:
  const std::vector<std::string_view> &items(const MarkdownBlock &block) const override;
  QString label(std::size_t index) const override;
  qreal labelWidth(const TextFragment &label) const override;
};

class NumberedListView : public ListView {
public:
  explicit NumberedListView(const MarkdownBlock &block) : ListView(block) {}

private:
  const std::vector<std::string_view> &items(const MarkdownBlock &block) const override;
  QString label(std::size_t index) const override;
  qreal labelWidth(const TextFragment &label) const override;
};

}  // namespace lumiwren
