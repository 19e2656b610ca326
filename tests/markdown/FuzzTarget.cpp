#include "support/FuzzTarget.h"

#include "base/Unicode.h"
#include "markdown/MarkdownInline.h"
#include "markdown/MarkdownParser.h"

#include <string_view>

namespace lumiwren {
namespace {

using testing::require;

void checkInline(std::string_view line) {
  const auto result = parseInlineMarkdown(line);
  std::size_t end = 0;
  const MarkdownRun *previous = nullptr;
  for (const auto &run : result.runs) {
    require(run.begin == end && run.length > 0, "runs cover the text without gaps");
    require(previous == nullptr || previous->style != run.style || previous->link != run.link,
            "neighbours differ");
    require(run.link >= MarkdownRun::noLink && run.link < static_cast<int>(result.links.size()),
            "links exist");
    if (unicode::isValidUTF8(line)) {
      require(unicode::isValidUTF8(std::string_view(result.text).substr(run.begin, run.length)),
              "runs do not cut code points");
    }
    end += run.length;
    previous = &run;
  }
  require(end == result.text.size(), "runs cover the text to its end");
}

/// Every string of a block lies in the text, and behind those before it.
class ViewChecker {
public:
  explicit ViewChecker(std::string_view text) : at_(text.data()), end_(text.data() + text.size()) {}

  void operator()(std::string_view view) {
    if (!view.empty()) {
      require(view.data() >= at_ && view.data() + view.size() <= end_,
              "blocks are stretches of the text in order");
      at_ = view.data() + view.size();
    }
  }
  void operator()(const std::vector<std::string_view> &views) {
    for (const auto &view : views) {
      (*this)(view);
    }
  }
  void operator()(const MarkdownHeading &block) { (*this)(block.text); }
  void operator()(const MarkdownParagraph &block) {
    (*this)(block.text);
    checkInline(block.text);
  }
  void operator()(const MarkdownCodeBlock &block) { (*this)(block.code); }
  void operator()(const MarkdownBulletList &block) { (*this)(block.items); }
  void operator()(const MarkdownNumberedList &block) { (*this)(block.items); }
  void operator()(const MarkdownTable &block) {
    require(block.columnCount == block.headers.size() && block.columnCount > 0, "a table has columns");
    (*this)(block.headers);
    for (const auto &row : block.rows) {
      (*this)(row);
    }
  }

private:
  const char *at_;
  const char *end_;
};

}  // namespace
}  // namespace lumiwren

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
  using namespace lumiwren;
  const std::string_view text(reinterpret_cast<const char *>(data), size);
  ViewChecker check(text);
  for (const auto &block : parseMarkdownContent(text)) {
    std::visit(check, block);
  }
  checkInline(text);
  return 0;
}
