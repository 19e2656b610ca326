#include "markdown/ChatAnswer.h"

#include <array>
#include <random>
#include <string_view>

namespace lumiwren::bench {

namespace {

constexpr std::array<std::string_view, 48> words{
    "the",       "value",   "function", "returns",    "a",       "list",   "of",      "items",
    "when",      "input",   "is",       "empty",      "because", "each",   "request", "holds",
    "its",       "own",     "state",    "and",        "must",    "not",    "be",      "shared",
    "between",   "threads", "for",      "example",    "this",    "means",  "that",    "caller",
    "first",     "checks",  "whether",  "connection", "still",   "open",   "then",    "writes",
    "caf\u00E9", "to",      "disk",     "in",         "order",   "\u2014", "usually", "quickly"};

class Writer {
public:
  std::string write(std::size_t size) {
    while (text_.size() < size) {
      section();
    }
    // A cut code point at the end becomes full stops.
    for (auto at = size; at-- > 0 && (static_cast<unsigned char>(text_[at]) & 0x80) != 0;) {
      text_[at] = '.';
    }
    text_.resize(size);
    return text_;
  }

private:
  std::size_t below(std::size_t bound) { return engine_() % bound; }

  std::string_view word() { return words[below(words.size())]; }

  void phrase(std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
      text_ += i == 0 ? "" : " ";
      text_ += word();
    }
  }

  void sentence() {
    phrase(3 + below(6));
    switch (below(6)) {
      case 0:
        text_ += " **";
        phrase(1 + below(3));
        text_ += "**";
        break;
      case 1:
        text_ += " *";
        phrase(1);
        text_ += "*";
        break;
      case 2:
        text_ += " `snake_case(";
        text_ += word();
        text_ += ")`";
        break;
      case 3:
        text_ += " [";
        phrase(2);
        text_ += "](https://docs.example.org/guide/";
        text_ += word();
        text_ += ".html#section_2)";
        break;
      default:
        break;
    }
    text_ += " ";
    phrase(3 + below(8));
    text_ += ". ";
  }

  void paragraph() {
    for (auto count = 1 + below(3); count > 0; --count) {
      sentence();
    }
    text_ += "\n\n";
  }

  void list(bool isNumbered) {
    const auto count = 3 + below(4);
    for (std::size_t i = 0; i < count; ++i) {
      text_ += isNumbered ? std::to_string(i + 1) + ". " : "- ";
      if (below(2) == 0) {
        text_ += "**";
        phrase(2);
        text_ += "**: ";
      }
      sentence();
      text_ += "\n";
    }
    text_ += "\n";
  }

  void table() {
    text_ += "| Name | Meaning | Default |\n|------|:-------:|--------:|\n";
    for (auto count = 2 + below(4); count > 0; --count) {
      text_ += "| `";
      text_ += word();
      text_ += "` | ";
      phrase(4);
      text_ += " | ";
      text_ += std::to_string(below(1000));
      text_ += " |\n";
    }
    text_ += "\n";
  }

  void code() {
    text_ += "```python\n";
    for (auto count = 3 + below(8); count > 0; --count) {
      text_ += "    ";
      text_ += word();
      text_ += "_value = compute(items[";
      text_ += std::to_string(below(10));
      text_ += "], scale=2 * factor)  # ";
      phrase(3);
      text_ += "\n";
    }
    text_ += "```\n\n";
  }

  void section() {
    text_ += below(2) == 0 ? "## " : "### ";
    phrase(3);
    text_ += "\n\n";
    paragraph();
    for (auto count = 2 + below(3); count > 0; --count) {
      switch (below(6)) {
        case 0:
          list(true);
          break;
        case 1:
          list(false);
          break;
        case 2:
          table();
          break;
        case 3:
          code();
          break;
        default:
          paragraph();
      }
    }
  }

  std::mt19937 engine_{1};
  std::string text_;
};

}  // namespace

std::string chatAnswer(std::size_t size) {
  return Writer().write(size);
}

}  // namespace lumiwren::bench
