#include "markdown/InlineMarker.h"

#include <cstring>
#include <utility>

namespace lumiwren {
namespace {

/// How many spans of each kind are open.
struct Depths {
  std::size_t emphasis = 0;
  std::size_t strong = 0;
  std::size_t strikethrough = 0;
  std::size_t code = 0;
  std::size_t image = 0;
  int link = MarkdownRun::noLink;
  /// Links do not nest, but an autolink may stand in one.
  int outerLink = MarkdownRun::noLink;

  [[nodiscard]] MarkdownStyle style() const {
    using enum MarkdownStyle;
    return (emphasis > 0 ? Emphasis : Plain) | (strong > 0 ? Strong : Plain) |
           (strikethrough > 0 ? Strikethrough : Plain) | (code > 0 ? Code : Plain) |
           (image > 0 ? Image : Plain);
  }

  std::size_t *of(InlineMarker::Kind kind) {
    switch (kind) {
      case InlineMarker::Kind::Emphasis:
        return &emphasis;
      case InlineMarker::Kind::Strikethrough:
        return &strikethrough;
      case InlineMarker::Kind::Code:
        return &code;
      case InlineMarker::Kind::Image:
        return &image;
      case InlineMarker::Kind::Link:
        break;
    }
    return nullptr;
  }

  void begin(const InlineMarker &marker) {
    strong += marker.doubleBegins;
    if (auto *depth = of(marker.kind)) {
      *depth += marker.begins;
    } else if (marker.begins > 0) {
      outerLink = std::exchange(link, marker.link);
    }
  }

  void end(const InlineMarker &marker) {
    strong -= marker.doubleEnds;
    if (auto *depth = of(marker.kind)) {
      *depth -= marker.ends;
    } else if (marker.ends > 0) {
      link = std::exchange(outerLink, MarkdownRun::noLink);
    }
  }
};

}  // namespace

MarkdownInlineText applyMarkers(std::string text, std::span<const InlineMarker> markers,
                                std::vector<std::string> links) {
  MarkdownInlineText result;
  result.runs.reserve(markers.size() + 1);
  std::size_t write = 0;
  std::size_t read = 0;
  Depths depths;
  const auto keepUntil = [&](std::size_t end) {
    if (end == read) {
      return;
    }
    const auto length = end - read;
    if (write != read) {
      std::memmove(text.data() + write, text.data() + read, length);
    }
    const auto style = depths.style();
    if (auto *last = result.runs.empty() ? nullptr : &result.runs.back();
        last != nullptr && last->style == style && last->link == depths.link) {
      last->length += length;
    } else {
      result.runs.push_back({write, length, style, depths.link});
    }
    write += length;
    read = end;
  };
  for (const auto &marker : markers) {
    keepUntil(marker.position);
    depths.end(marker);
    keepUntil(marker.position + marker.kept);
    depths.begin(marker);
    read = marker.position + marker.length;
  }
  keepUntil(text.size());
  text.resize(write);
  result.text = std::move(text);
  result.links = std::move(links);
  return result;
}

}  // namespace lumiwren
