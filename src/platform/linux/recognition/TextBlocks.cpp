#include "platform/linux/recognition/TextBlocks.h"

#include "base/Task.h"
#include "platform/linux/recognition/Components.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <utility>

namespace lumiwren {
namespace {

constexpr std::uint8_t inkShade = 195;  // and darker
/// Smaller parts are dots and dashes, larger ones pictures.
constexpr int leastLetterHeight = 4;
constexpr int mostLetterHeight = 100;
// In letter heights, of which a line of text has about two:
constexpr double gutterWidth = 2.5;   // between columns; words are half of one apart
constexpr double paragraphGap = 2.0;  // between rows that do not belong together
constexpr double cellWidth = 20;      // lines that are longer are prose
/// The share of one column's rows that have one beside them in the next: columns of a table have.
constexpr double alignedShare = 0.8;
/// Pictures with more are no text.
constexpr std::size_t mostBlocks = 500;

using Range = std::pair<int, int>;  // from, and behind the last

/// The ranges between blank stretches of `gap` and more.
std::vector<Range> rangesOf(const std::vector<bool> &isInked, int offset, int gap) {
  std::vector<Range> ranges;
  for (int at = 0; at < static_cast<int>(isInked.size()); ++at) {
    if (!isInked[static_cast<std::size_t>(at)]) {
      continue;
    }
    if (ranges.empty() || offset + at - ranges.back().second >= gap) {
      ranges.emplace_back(offset + at, offset + at + 1);
    } else {
      ranges.back().second = offset + at + 1;
    }
  }
  return ranges;
}

class Layout {
public:
  Layout(const GreyImage &ink, const std::stop_token &token) : ink_(ink), token_(token) {}

  TextLayout find() {
    const int height = letterHeight();
    if (height == 0) {
      return {};
    }
    gutter_ = std::max(3, static_cast<int>(height * gutterWidth));
    gap_ = std::max(3, static_cast<int>(height * paragraphGap));
    cell_ = static_cast<int>(height * cellWidth);
    divide({0, 0, ink_.width, ink_.height});
    if (blocks_.size() > mostBlocks) {
      blocks_.clear();
      add({0, 0, ink_.width, ink_.height});
    }
    return {std::move(blocks_), height};
  }

private:
  bool isInk(int x, int y) const { return ink_.pixels[ink_.at(x, y)] < inkShade; }

  /// The median of all that could be letters; of anything at all when there are none.
  int letterHeight() const {
    const auto parts =
        Components::of(ink_.width, ink_.height, true, token_, [this](std::size_t a, std::size_t b) {
          return (ink_.pixels[a] < inkShade) == (ink_.pixels[b] < inkShade);
        });
    std::array<std::size_t, mostLetterHeight + 1> histogram{};
    std::size_t letters = 0;
    bool isBlank = true;
    for (const auto &part : parts.all) {
      if (ink_.pixels[part.first] < inkShade) {
        isBlank = false;
        if (part.height() >= leastLetterHeight && part.height() <= mostLetterHeight) {
          ++histogram[static_cast<std::size_t>(part.height())];
          ++letters;
        }
      }
    }
    if (letters == 0) {
      return isBlank ? 0 : leastLetterHeight;
    }
    std::size_t seen = 0;
    int height = 0;
    while (seen * 2 < letters) {
      seen += histogram[static_cast<std::size_t>(++height)];
    }
    return height;
  }

  std::vector<Range> rows(const PixelBox &box, int gap = 1) const {
    std::vector<bool> isInked(static_cast<std::size_t>(box.height()));
    for (int y = box.top; y < box.bottom; ++y) {
      throwIfStopped(token_);
      for (int x = box.left; x < box.right && !isInked[static_cast<std::size_t>(y - box.top)]; ++x) {
        isInked[static_cast<std::size_t>(y - box.top)] = isInk(x, y);
      }
    }
    return rangesOf(isInked, box.top, gap);
  }

  std::vector<Range> columns(const PixelBox &box, int gap) const {
    std::vector<bool> isInked(static_cast<std::size_t>(box.width()));
    for (int y = box.top; y < box.bottom; ++y) {
      throwIfStopped(token_);
      for (int x = box.left; x < box.right; ++x) {
        if (isInk(x, y)) {
          isInked[static_cast<std::size_t>(x - box.left)] = true;
        }
      }
    }
    return rangesOf(isInked, box.left, gap);
  }

  /// A box without the blank around its ink; empty when there is none.
  std::optional<PixelBox> trimmed(const PixelBox &box) const {
    const auto across = columns(box, ink_.width);
    const auto down = rows(box);
    if (across.empty()) {
      return std::nullopt;
    }
    return PixelBox{across.front().first, down.front().first, across.back().second, down.back().second};
  }

  void divide(const PixelBox &whole) {
    throwIfStopped(token_);
    const auto box = trimmed(whole);
    if (!box || blocks_.size() > mostBlocks) {
      return;
    }
    const auto groups = columnGroups(*box);
    if (groups.size() > 1) {
      for (const auto &group : groups) {
        divide(group);
      }
      return;
    }
    const auto paragraphs = rows(*box, gap_);
    if (paragraphs.size() > 1) {
      for (const auto &[top, bottom] : paragraphs) {
        divide({box->left, top, box->right, bottom});
      }
      return;
    }
    add(*box);
  }

  /// The columns of a box; those of a table together.
  std::vector<PixelBox> columnGroups(const PixelBox &box) const {
    std::vector<PixelBox> groups;
    std::optional<PixelBox> previous;
    for (const auto &[left, right] : columns(box, gutter_)) {
      const PixelBox column{left, box.top, right, box.bottom};
      if (previous && isTable(*previous, column)) {
        groups.back().right = right;
      } else {
        groups.push_back(column);
      }
      previous = column;
    }
    return groups;
  }

  bool isTable(const PixelBox &left, const PixelBox &right) const {
    auto fewer = rows(left);
    auto more = rows(right);
    if (!isOfCells(left, fewer) && !isOfCells(right, more)) {
      return false;
    }
    if (fewer.size() > more.size()) {
      std::swap(fewer, more);
    }
    const auto aligned = std::count_if(fewer.begin(), fewer.end(), [&](const Range &row) {
      return std::any_of(more.begin(), more.end(), [&](const Range &other) {
        const int common = std::min(row.second, other.second) - std::max(row.first, other.first);
        const int lower = std::min(row.second - row.first, other.second - other.first);
        return common * 10 >= lower * 6;
      });
    });
    return static_cast<double>(aligned) >= static_cast<double>(fewer.size()) * alignedShare;
  }

  /// Whether most rows are short.
  bool isOfCells(const PixelBox &box, const std::vector<Range> &lines) const {
    const auto cells = std::count_if(lines.begin(), lines.end(), [&](const Range &line) {
      const auto across = columns({box.left, line.first, box.right, line.second}, ink_.width);
      return across.back().second - across.front().first <= cell_;
    });
    return static_cast<std::size_t>(cells) * 2 > lines.size();
  }

  void add(const PixelBox &box) {
    TextBlock block{box, {}};
    for (const auto &[top, bottom] : rows(box)) {
      const auto across = columns({box.left, top, box.right, bottom}, ink_.width);
      const PixelBox line{across.front().first, top, across.back().second, bottom};
      if (line.width() > block.sample.width()) {
        block.sample = line;
      }
    }
    blocks_.push_back(block);
  }

  const GreyImage &ink_;
  const std::stop_token &token_;
  std::vector<TextBlock> blocks_;
  // Pixels:
  int gutter_ = 0;
  int gap_ = 0;
  int cell_ = 0;
};

}  // namespace

TextLayout textLayout(const GreyImage &ink, const std::stop_token &token) {
  return Layout(ink, token).find();
}

}  // namespace lumiwren
