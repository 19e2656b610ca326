#include "markdown/MarkdownInline.h"

#include "base/HTMLEntities.h"
#include "base/Unicode.h"
#include "markdown/InlineMarker.h"
#include "markdown/InlineScanners.h"

#include <algorithm>
#include <array>
#include <memory_resource>
#include <optional>
#include <utility>

namespace lumiwren {

namespace {

constexpr auto isSpecial = [] {
  std::array<bool, 256> table{};
  for (const char c : {'`', '\\', '&', '<', '*', '_', '[', ']', '!', '~'}) {
    table[static_cast<unsigned char>(c)] = true;
  }
  return table;
}();

// Only runs of one or two tildes strike through; longer ones are looked at in pieces of this many.
constexpr std::size_t longestTildeRun = 100;

constexpr std::string_view delimiterCharacters = "*_~";

/// A run of "*", "_" or "~" that may open or close something.
struct Delimiter {
  std::size_t marker;
  std::size_t length;
  /// Index into delimiterCharacters.
  std::uint8_t character;
  bool canOpen;
  bool canClose;
};

struct Bracket {
  std::size_t marker;
  bool isImage;
  /// How many delimiters there were before it.
  std::size_t delimiters;
};

class InlineParser {
public:
  explicit InlineParser(std::string_view line) : line_(line), html_(line) {}

  MarkdownInlineText parse(std::size_t firstSpecial) {
    text_.reserve(line_.size());
    appendPlain(firstSpecial);
    while (at_ < line_.size()) {
      parseSpecial();
      appendPlain(nextSpecial(line_, at_));
    }
    processDelimiters(0);
    return applyMarkers(std::move(text_), markers_, std::move(links_));
  }

  static std::size_t nextSpecial(std::string_view line, std::size_t at) {
    while (at < line.size() && !isSpecial[static_cast<unsigned char>(line[at])]) {
      ++at;
    }
    return at;
  }

private:
  void appendPlain(std::size_t end) {
    text_.append(line_, at_, end - at_);
    at_ = end;
  }

  std::size_t addMarker(InlineMarker::Kind kind, std::size_t length = 0) {
    markers_.push_back({text_.size(), length, length, kind});
    text_.append(line_, at_, length);
    at_ += length;
    return markers_.size() - 1;
  }

  void parseSpecial() {
    switch (line_[at_]) {
      case '`':
        return parseCode();
      case '\\':
        return parseBackslash();
      case '&':
        return parseReference();
      case '<':
        return parseAngle();
      case '[':
        return pushBracket(false);
      case ']':
        return closeBracket();
      case '!':
        // "![^" is left to footnotes by the interpreters this one agrees with.
        return line_.substr(at_ + 1, 1) == "[" && line_.substr(at_ + 2, 1) != "^" ? pushBracket(true)
                                                                                  : appendPlain(at_ + 1);
      default:
        return parseDelimiters(line_[at_]);
    }
  }

  void parseCode() {
    const auto length = runLength(at_, line_.size());
    const auto begin = at_ + length;
    const auto end = closingBackticks(begin, length);
    if (!end) {
      return appendPlain(begin);
    }
    auto code = line_.substr(begin, *end - begin);
    if (code.starts_with(' ') && code.ends_with(' ') &&
        code.find_first_not_of(' ') != std::string_view::npos) {
      code = code.substr(1, code.size() - 2);
    }
    markers_[addMarker(InlineMarker::Kind::Code)].begins = 1;
    text_.append(code);
    markers_[addMarker(InlineMarker::Kind::Code)].ends = 1;
    at_ = *end + length;
  }

  /// The length of the run of the character at `at`, at most `longest`.
  [[nodiscard]] std::size_t runLength(std::size_t at, std::size_t longest) const {
    const auto run = line_.substr(at, longest);
    return std::min(run.find_first_not_of(run.front()), run.size());
  }

  /// The offset of the first run of exactly `length` backticks from `at` on.
  std::optional<std::size_t> closingBackticks(std::size_t at, std::size_t length) {
    // One look through the rest of the line that finds nothing leaves the last run of every length noted, so
    // that no second look is needed.
    if (sawAllBackticks_ && (length >= lastBackticks_.size() || lastBackticks_[length] < at)) {
      return std::nullopt;
    }
    for (at = line_.find('`', at); at != std::string_view::npos; at = line_.find('`', at)) {
      const auto found = runLength(at, line_.size());
      if (found == length) {
        return at;
      }
      if (found >= lastBackticks_.size()) {
        lastBackticks_.resize(found + 1);
      }
      lastBackticks_[found] = at;
      at += found;
    }
    sawAllBackticks_ = true;
    return std::nullopt;
  }

  void parseBackslash() {
    const char next = at_ + 1 < line_.size() ? line_[at_ + 1] : 'a';
    if (isASCIIPunctuation(next)) {
      ++at_;
      appendPlain(at_ + 1);
    } else if (next == '\r' || next == '\n') {
      // A hard break: the line end itself is kept like all white space.
      ++at_;
    } else {
      appendPlain(at_ + 1);
    }
  }

  void parseReference() {
    const auto length = appendCharacterReference(line_, at_, text_);
    if (length == 0) {
      return appendPlain(at_ + 1);
    }
    at_ += length;
  }

  void parseAngle() {
    auto address = scanURIAutolink(line_, at_);
    const bool isURI = !address.empty();
    if (!isURI) {
      address = scanEmailAutolink(line_, at_);
    }
    if (!address.empty()) {
      std::string shown;
      appendUnescaped(address, shown);
      beginLink(addMarker(InlineMarker::Kind::Link), isURI ? shown : "mailto:" + shown);
      text_ += shown;
      markers_[addMarker(InlineMarker::Kind::Link)].ends = 1;
      at_ += address.size() + 2;
      return;
    }
    const auto length = html_.scan(at_);
    appendPlain(at_ + std::max<std::size_t>(length, 1));
  }

  void beginLink(std::size_t marker, std::string destination) {
    markers_[marker].begins = 1;
    // Without a base address an empty destination leads nowhere.
    if (!destination.empty()) {
      markers_[marker].link = static_cast<int>(links_.size());
      links_.push_back(std::move(destination));
    }
  }

  /// Appends `text` with its character references resolved.
  static void appendUnescaped(std::string_view text, std::string &out) {
    for (std::size_t at = 0; at < text.size();) {
      const auto reference = std::min(text.find('&', at), text.size());
      out.append(text, at, reference - at);
      at = reference;
      if (at < text.size()) {
        const auto length = appendCharacterReference(text, at, out);
        if (length == 0) {
          out.push_back('&');
        }
        at += std::max<std::size_t>(length, 1);
      }
    }
  }

  static std::string cleanDestination(std::string_view raw) {
    constexpr std::string_view spaces = " \t\n\v\f\r";
    const auto begin = std::min(raw.find_first_not_of(spaces), raw.size());
    const auto end = raw.find_last_not_of(spaces) + 1;
    std::string destination;
    appendUnescaped(raw.substr(begin, end - begin), destination);
    std::size_t write = 0;
    for (std::size_t read = 0; read < destination.size(); ++read) {
      if (destination[read] == '\\' && read + 1 < destination.size() &&
          isASCIIPunctuation(destination[read + 1])) {
        ++read;
      }
      destination[write++] = destination[read];
    }
    destination.resize(write);
    return destination;
  }

  void pushBracket(bool isImage) {
    const auto marker =
        addMarker(isImage ? InlineMarker::Kind::Image : InlineMarker::Kind::Link, isImage ? 2 : 1);
    brackets_.push_back({marker, isImage, delimiters_.size()});
  }

  void closeBracket() {
    if (brackets_.empty()) {
      return appendPlain(at_ + 1);
    }
    const auto bracket = brackets_.back();
    brackets_.pop_back();
    // Links do not nest: what was open when a link ended cannot become one.
    const bool isActive = bracket.isImage || brackets_.size() >= bracketsWithoutLink_;
    bracketsWithoutLink_ = std::min(bracketsWithoutLink_, brackets_.size());
    const auto target = isActive ? scanLinkTarget(line_, at_ + 1) : std::nullopt;
    if (!target) {
      return appendPlain(at_ + 1);
    }
    markers_[bracket.marker].kept = 0;
    if (bracket.isImage) {
      markers_[bracket.marker].begins = 1;
    } else {
      beginLink(bracket.marker, cleanDestination(target->destination));
      bracketsWithoutLink_ = brackets_.size();
    }
    processDelimiters(bracket.delimiters);
    markers_[addMarker(markers_[bracket.marker].kind)].ends = 1;
    at_ = target->end;
  }

  void parseDelimiters(char character) {
    const bool isTilde = character == '~';
    const auto length = runLength(at_, isTilde ? longestTildeRun : line_.size());
    const auto [canOpen, canClose] =
        flanking(character, classBefore(at_, !isTilde), classAfter(at_ + length, !isTilde));
    if ((!canOpen && !canClose) || (isTilde && length > 2)) {
      return appendPlain(at_ + length);
    }
    const auto marker =
        addMarker(isTilde ? InlineMarker::Kind::Strikethrough : InlineMarker::Kind::Emphasis, length);
    delimiters_.push_back(
        {marker, length, static_cast<std::uint8_t>(delimiterCharacters.find(character)), canOpen, canClose});
  }

  /// Emphasis looks through tildes at what is behind them.
  [[nodiscard]] CharacterClass classBefore(std::size_t at, bool skipsTildes) const {
    while (skipsTildes && at > 0 && line_[at - 1] == '~') {
      --at;
    }
    if (at == 0) {
      return CharacterClass::Space;
    }
    const auto point = unicode::decodeBefore(line_, at);
    return point ? classOf(point->value) : CharacterClass::Other;
  }

  [[nodiscard]] CharacterClass classAfter(std::size_t at, bool skipsTildes) const {
    while (skipsTildes && at < line_.size() && line_[at] == '~') {
      ++at;
    }
    if (at == line_.size()) {
      return CharacterClass::Space;
    }
    const auto point = unicode::decodeAt(line_, at);
    return point ? classOf(point->value) : CharacterClass::Other;
  }

  /// Matches closers with openers among the delimiters from index `bottom` on, and forgets them all.
  void processDelimiters(std::size_t bottom) {
    for (auto &openers : openers_) {
      openers.clear();
    }
    // For each sort of closer, the index below which no opener for it is left: every opener is passed over in
    // vain once for each sort at most.
    std::array<std::array<std::array<std::size_t, 3>, 2>, delimiterCharacters.size()> openersBottom{};
    for (auto index = bottom; index < delimiters_.size(); ++index) {
      const auto &closing = delimiters_[index];
      auto &lowest = openersBottom[closing.character][closing.canOpen ? 1 : 0][closing.length % 3];
      auto &kept = markers_[closing.marker].kept;
      while (closing.canClose && kept > 0) {
        const auto *opening = findOpener(closing, lowest);
        if (opening == nullptr) {
          lowest = index;
          break;
        }
        if (!match(*opening, closing)) {
          break;
        }
      }
      if (closing.canOpen && kept > 0) {
        openers_[closing.character].push_back(index);
      }
    }
    delimiters_.resize(bottom);
  }

  const Delimiter *findOpener(const Delimiter &closing, std::size_t lowest) {
    const auto &openers = openers_[closing.character];
    for (auto opener = openers.rbegin(); opener != openers.rend() && *opener >= lowest; ++opener) {
      const auto &opening = delimiters_[*opener];
      if ((!closing.canOpen && !opening.canClose) || closing.length % 3 == 0 ||
          (opening.length + closing.length) % 3 != 0) {
        return &opening;
      }
    }
    return nullptr;
  }

  /// Makes a span of two delimiters; tildes make one only if they are as many on both sides.
  bool match(const Delimiter &opening, const Delimiter &closing) {
    auto &begin = markers_[opening.marker];
    auto &end = markers_[closing.marker];
    if (begin.kind == InlineMarker::Kind::Strikethrough) {
      if (begin.length != end.length) {
        return false;
      }
      begin.kept = end.kept = 0;
      begin.begins = end.ends = 1;
    } else {
      const std::size_t used = begin.kept >= 2 && end.kept >= 2 ? 2 : 1;
      begin.kept -= used;
      end.kept -= used;
      ++(used == 2 ? begin.doubleBegins : begin.begins);
      ++(used == 2 ? end.doubleEnds : end.ends);
    }
    // Spans nest: what was opened between the two cannot end any more.
    const auto index = static_cast<std::size_t>(&opening - delimiters_.data());
    const auto firstClosed = begin.kept > 0 ? index + 1 : index;
    for (auto &openers : openers_) {
      while (!openers.empty() && openers.back() >= firstClosed) {
        openers.pop_back();
      }
    }
    return true;
  }

  std::string_view line_;
  std::size_t at_ = 0;
  HTMLScanner html_;

  std::string text_;
  std::vector<std::string> links_;

  // Most lines need a few of each; they stay off the heap.
  std::array<std::byte, 4096> buffer_;
  std::pmr::monotonic_buffer_resource memory_{buffer_.data(), buffer_.size()};
  std::pmr::vector<InlineMarker> markers_{&memory_};
  std::pmr::vector<Delimiter> delimiters_{&memory_};
  /// What may still be closed while delimiters are matched, as indices of delimiters, for each character.
  std::array<std::pmr::vector<std::size_t>, delimiterCharacters.size()> openers_{
      std::pmr::vector<std::size_t>(&memory_), std::pmr::vector<std::size_t>(&memory_),
      std::pmr::vector<std::size_t>(&memory_)};
  std::pmr::vector<Bracket> brackets_{&memory_};
  /// Brackets below this height of the stack cannot begin a link.
  std::size_t bracketsWithoutLink_ = 0;
  std::pmr::vector<std::size_t> lastBackticks_{&memory_};
  bool sawAllBackticks_ = false;
};

}  // namespace

MarkdownInlineText parseInlineMarkdown(std::string_view line) {
  const auto firstSpecial = InlineParser::nextSpecial(line, 0);
  if (firstSpecial == line.size()) {
    MarkdownInlineText plain{std::string(line), {}, {}};
    if (!line.empty()) {
      plain.runs.push_back({0, line.size()});
    }
    return plain;
  }
  return InlineParser(line).parse(firstSpecial);
}

}  // namespace lumiwren
