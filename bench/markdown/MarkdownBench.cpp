#include "markdown/ChatAnswer.h"
#include "markdown/MarkdownInline.h"
#include "markdown/MarkdownParser.h"

#include <md4c.h>

#include <algorithm>
#include <cstdio>
#include <ctime>
#include <functional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

// Prints one line of JSON for each row and size; takes the ids of the rows to measure, all without arguments.
// Both sides run in turns in this process and their medians are compared, so that a slow moment of the
// machine hits both.

namespace lumiwren::bench {
namespace {

using Work = std::function<void()>;

constexpr int samples = 41;
// Long enough for the clock, short enough to take turns often.
constexpr double sampleNanoseconds = 2e6;

/// What the results flow into, so that no work is left out.
volatile std::size_t sink;

/// Of processor time: both sides compute only, and what else runs on the machine is left out.
double nanosecondsPerRun(const Work &work, int runs) {
  const auto start = std::clock();
  for (int i = 0; i < runs; ++i) {
    work();
  }
  return static_cast<double>(std::clock() - start) * (1e9 / CLOCKS_PER_SEC) / runs;
}

int runsPerSample(const Work &work) {
  int runs = 1;
  while (nanosecondsPerRun(work, runs) * runs < sampleNanoseconds) {
    runs *= 2;
  }
  return runs;
}

double median(std::vector<double> values) {
  std::nth_element(values.begin(), values.begin() + samples / 2, values.end());
  return values[samples / 2];
}

struct Row {
  const char *id;
  double budget;
  void (*work)(const std::string &);
};

void parseBlocks(const std::string &text) {
  sink = parseMarkdownContent(text).size();
}

/// As a view does it for an answer that it sees for the first time.
void parseAll(const std::string &text) {
  std::size_t runs = 0;
  const auto interpret = [&](std::string_view line) { runs += parseInlineMarkdown(line).runs.size(); };
  for (const auto &block : parseMarkdownContent(text)) {
    if (const auto *paragraph = std::get_if<MarkdownParagraph>(&block)) {
      interpret(paragraph->text);
    } else if (const auto *bullets = std::get_if<MarkdownBulletList>(&block)) {
      std::for_each(bullets->items.begin(), bullets->items.end(), interpret);
    } else if (const auto *numbers = std::get_if<MarkdownNumberedList>(&block)) {
      std::for_each(numbers->items.begin(), numbers->items.end(), interpret);
    }
  }
  sink = runs;
}

/// Reads a NUL behind the text, which std::string has.
void parseWithMD4C(const std::string &text) {
  MD_PARSER parser{};
  parser.flags = MD_FLAG_TABLES | MD_FLAG_STRIKETHROUGH;
  parser.enter_block = [](MD_BLOCKTYPE, void *, void *) { return 0; };
  parser.leave_block = [](MD_BLOCKTYPE, void *, void *) { return 0; };
  parser.enter_span = [](MD_SPANTYPE, void *, void *) { return 0; };
  parser.leave_span = [](MD_SPANTYPE, void *, void *) { return 0; };
  parser.text = [](MD_TEXTTYPE, const MD_CHAR *, MD_SIZE, void *) { return 0; };
  sink = static_cast<std::size_t>(md_parse(text.data(), static_cast<MD_SIZE>(text.size()), &parser, nullptr));
}

constexpr Row rows[] = {{"markdown-blocks", 0.25, parseBlocks}, {"markdown-all", 1.7, parseAll}};

struct Size {
  const char *name;
  std::size_t bytes;
};
constexpr Size sizes[] = {{"1 KB", 1 << 10}, {"10 KB", 10 << 10}, {"100 KB", 100 << 10}, {"1 MB", 1 << 20}};

void measure(const Row &row, const Size &size) {
  const auto text = chatAnswer(size.bytes);
  const Work ours = [&] { row.work(text); };
  const Work reference = [&] { parseWithMD4C(text); };
  const int ourRuns = runsPerSample(ours);
  const int referenceRuns = runsPerSample(reference);
  std::vector<double> ourTimes;
  std::vector<double> referenceTimes;
  for (int i = 0; i < samples; ++i) {
    ourTimes.push_back(nanosecondsPerRun(ours, ourRuns));
    referenceTimes.push_back(nanosecondsPerRun(reference, referenceRuns));
  }
  const double value = median(ourTimes);
  const double referenceValue = median(referenceTimes);
  const double ratio = value / referenceValue;
  std::printf(
      "{\"id\": \"%s\", \"case\": \"%s\", \"value\": %.0f, \"unit\": \"ns\", \"reference\": "
      "\"md4c, empty callbacks\", \"reference_value\": %.0f, \"ratio\": %.3f, \"budget\": %.2f, "
      "\"holds\": %s}\n",
      row.id, size.name, value, referenceValue, ratio, row.budget, ratio <= row.budget ? "true" : "false");
  std::fflush(stdout);
}

void run(std::span<char *const> ids) {
  for (const auto &row : rows) {
    const bool isAsked =
        std::any_of(ids.begin(), ids.end(), [&](const char *id) { return row.id == std::string_view(id); });
    if (ids.empty() || isAsked) {
      for (const auto &size : sizes) {
        measure(row, size);
      }
    }
  }
}

}  // namespace
}  // namespace lumiwren::bench

int main(int argc, char **argv) {
  // Rows of other programs are asked for as well.
  lumiwren::bench::run(std::span(argv + 1, static_cast<std::size_t>(argc - 1)));
}
