#include "markdown/CMarkOracle.h"

#include <cmark-gfm-core-extensions.h>
#include <cmark-gfm-extension_api.h>
#include <cmark-gfm.h>

#include <algorithm>
#include <memory>
#include <stdexcept>
#include <string>

namespace lumiwren::testing {

namespace {

// Around the line, so that nothing in it stands where a block begins or where white space is cut off. Both
// end with a space towards the line, which is what the ends of a line count as for emphasis.
constexpr std::string_view lead = "a ";
constexpr std::string_view trail = " b";

class RunBuilder {
public:
  void add(std::string_view piece, MarkdownStyle style, const std::string &link) {
    if (piece.empty()) {
      return;
    }
    int index = MarkdownRun::noLink;
    if (!link.empty()) {
      const auto known = std::find(result_.links.begin(), result_.links.end(), link);
      index = static_cast<int>(known - result_.links.begin());
      if (known == result_.links.end()) {
        result_.links.push_back(link);
      }
    }
    auto &runs = result_.runs;
    if (!runs.empty() && runs.back().style == style && runs.back().link == index) {
      runs.back().length += piece.size();
    } else {
      runs.push_back({result_.text.size(), piece.size(), style, index});
    }
    result_.text += piece;
  }

  [[nodiscard]] const MarkdownInlineText &result() const { return result_; }

private:
  MarkdownInlineText result_;
};

MarkdownStyle styleOf(cmark_node *leaf) {
  auto style = MarkdownStyle::Plain;
  for (auto *node = leaf; node != nullptr; node = cmark_node_parent(node)) {
    const auto type = cmark_node_get_type(node);
    if (type == CMARK_NODE_EMPH) {
      style = style | MarkdownStyle::Emphasis;
    } else if (type == CMARK_NODE_STRONG) {
      style = style | MarkdownStyle::Strong;
    } else if (type == CMARK_NODE_CODE) {
      style = style | MarkdownStyle::Code;
    } else if (type == CMARK_NODE_IMAGE) {
      style = style | MarkdownStyle::Image;
    } else if (std::string_view(cmark_node_get_type_string(node)) == "strikethrough") {
      style = style | MarkdownStyle::Strikethrough;
    }
  }
  return style;
}

/// The destination of the innermost link around `leaf`.
std::string linkOf(cmark_node *leaf) {
  for (auto *node = leaf; node != nullptr; node = cmark_node_parent(node)) {
    if (cmark_node_get_type(node) == CMARK_NODE_LINK) {
      return cmark_node_get_url(node);
    }
  }
  return {};
}

}  // namespace

MarkdownInlineText interpretWithCMark(std::string_view line) {
  cmark_gfm_core_extensions_ensure_registered();
  const std::unique_ptr<cmark_parser, decltype(&cmark_parser_free)> parser(
      cmark_parser_new(CMARK_OPT_DEFAULT), &cmark_parser_free);
  cmark_parser_attach_syntax_extension(parser.get(), cmark_find_syntax_extension("strikethrough"));
  const auto text = std::string(lead) + std::string(line) + std::string(trail);
  cmark_parser_feed(parser.get(), text.data(), text.size());
  const std::unique_ptr<cmark_node, decltype(&cmark_node_free)> document(cmark_parser_finish(parser.get()),
                                                                         &cmark_node_free);
  const std::unique_ptr<cmark_iter, decltype(&cmark_iter_free)> iterator(cmark_iter_new(document.get()),
                                                                         &cmark_iter_free);
  RunBuilder builder;
  while (cmark_iter_next(iterator.get()) != CMARK_EVENT_DONE) {
    auto *node = cmark_iter_get_node(iterator.get());
    const auto type = cmark_node_get_type(node);
    if (type == CMARK_NODE_TEXT || type == CMARK_NODE_CODE || type == CMARK_NODE_HTML_INLINE) {
      builder.add(cmark_node_get_literal(node), styleOf(node), linkOf(node));
    }
  }
  const auto &whole = builder.result();
  if (!whole.text.starts_with(lead) || !whole.text.ends_with(trail) || whole.runs.front().length < 2 ||
      whole.runs.back().length < 2) {
    throw std::logic_error("cmark-gfm changed the text around the line");
  }
  RunBuilder inner;
  for (const auto &run : whole.runs) {
    const auto begin = std::max(run.begin, lead.size());
    const auto end = std::min(run.begin + run.length, whole.text.size() - trail.size());
    if (begin < end) {
      inner.add(
          std::string_view(whole.text).substr(begin, end - begin), run.style,
          run.link == MarkdownRun::noLink ? std::string() : whole.links[static_cast<std::size_t>(run.link)]);
    }
  }
  return inner.result();
}

MarkdownInlineText normalized(const MarkdownInlineText &text) {
  RunBuilder builder;
  for (const auto &run : text.runs) {
    builder.add(
        std::string_view(text.text).substr(run.begin, run.length), run.style,
        run.link == MarkdownRun::noLink ? std::string() : text.links[static_cast<std::size_t>(run.link)]);
  }
  return builder.result();
}

}  // namespace lumiwren::testing
