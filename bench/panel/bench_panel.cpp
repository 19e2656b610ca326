#include "base/Task.h"
#include "markdown/ChatAnswer.h"
#include "markdown/views/MarkdownTextView.h"
#include "net/Row.h"
#include "popup/ExplanationPopupView.h"
#include "popup/KeyablePanel.h"
#include "popup/PopupParts.h"
#include "support/PaintCounter.h"
#include "support/XServer.h"
#include "ui/MainQueueLoop.h"

#include <QApplication>
#include <QScrollArea>
#include <QScrollBar>
#include <QTextBrowser>
#include <QTimer>

#include <stdlib.h>

#include <fstream>
#include <future>
#include <numeric>
#include <stdexcept>
#include <thread>

// What it costs to show an answer: the real panel on an X server of its own. The reference is the toolkit's
// own Markdown view of the same size, which is given the whole text each time; it is sampled, because at 40
// KB one of its refreshes takes as long as a hundred of ours.

namespace {

using namespace lumiwren;
using bench::Row;

constexpr std::size_t chunkSize = 4;
constexpr std::size_t referenceSamples = 60;
constexpr std::size_t warmUp = 50;

struct Panel : testing::PopupParts {
  const MainQueueLoop loop{queue};
  ExplanationPopupController controller = makeController();

  Panel() { open(); }
  void open() {
    controller.show("What the user selected", std::nullopt, true, std::nullopt);
    controller.updateContent("What the user selected", "", true, std::nullopt);
    QApplication::processEvents();
  }
  void close() {
    controller.dismiss();
    QApplication::processEvents();
  }
  QScrollArea &conversation() { return *controller.panel()->findChild<QScrollArea *>(); }
  MarkdownTextView *answer() { return controller.panel()->findChild<MarkdownTextView *>(); }
};

struct Refreshes {
  std::vector<double> times;  // ms
  std::vector<double> touchedBlocks;
};

/// Streams a text into the visible panel and draws it after each chunk, at the end of the conversation.
Refreshes stream(Panel &panel, const std::string &text) {
  Refreshes result;
  panel.controller.popupState().removeAllMessages();
  panel.controller.popupState().addMessage("assistant", "");
  panel.controller.hostingView()->refresh();
  auto &conversation = panel.conversation();
  auto &bar = *conversation.verticalScrollBar();
  auto &answer = *panel.answer();
  const testing::PaintCounter painted(answer);
  for (std::size_t size = chunkSize; size <= text.size(); size += chunkSize) {
    panel.controller.popupState().updateMessageContent(0, text.substr(0, size));
    result.times.push_back(bench::milliseconds([&] {
      panel.controller.hostingView()->refresh();
      bar.setValue(bar.maximum());
      // What has become dirty, and nothing else, as with the next frame.
      QApplication::sendPostedEvents();
    }));
    result.touchedBlocks.push_back(static_cast<double>(answer.touchedBlocks()));
  }
  if (painted.count * 10 < result.times.size() * 9) {  // Some chunks change nothing that is seen.
    throw std::runtime_error("the panel was not drawn after each chunk");
  }
  return result;
}

std::vector<double> streamIntoReference(const std::string &text, QSize size) {
  QTextBrowser browser;
  browser.setFrameShape(QFrame::NoFrame);
  browser.resize(size);
  browser.show();
  QApplication::processEvents();
  std::vector<double> times;
  for (std::size_t sample = 1; sample <= referenceSamples; ++sample) {
    const auto part = QString::fromStdString(text.substr(0, text.size() * sample / referenceSamples));
    times.push_back(bench::milliseconds([&] {
      browser.setMarkdown(part);
      browser.verticalScrollBar()->setValue(browser.verticalScrollBar()->maximum());
      QApplication::sendPostedEvents();
    }));
  }
  return times;
}

double mean(const std::vector<double> &values) {
  return std::accumulate(values.begin(), values.end(), 0.0) / static_cast<double>(values.size());
}

void measureRefresh() {
  Panel panel;
  stream(panel, bench::chatAnswer(chunkSize * warmUp));
  double worst = 0;
  for (const auto &[name, size] : {std::pair{"4 KB", 4'096}, {"40 KB", 40'960}, {"100 KB", 102'400}}) {
    const std::string text = bench::chatAnswer(static_cast<std::size_t>(size));
    const auto ours = stream(panel, text);
    const auto theirs = streamIntoReference(text, panel.conversation().size());
    const std::string id = size > 40'960 ? "refresh-100k" : "refresh";
    Row{id,
        mean(ours.times),
        "ms",
        std::string("QTextBrowser::setMarkdown, ") + name,
        mean(theirs),
        0.1,
        bench::quantile(ours.times, 0.99)}
        .print();
    if (size <= 40'960) {
      worst = std::max(worst, bench::quantile(ours.times, 0.99));
    } else {
      Row{"refresh-blocks",
          mean(ours.touchedBlocks),
          "blocks of a chunk",
          "absolute",
          1,
          1.2,
          bench::quantile(ours.touchedBlocks, 1)}
          .print();
    }
  }
  Row{"refresh-p99", worst, "ms", "absolute", 1, 4, worst}.print();
}

/// Notes how long the event loop does other things at a time, while it lives.
class Holds {
public:
  Holds() {
    QObject::connect(&beat_, &QTimer::timeout, [this] {
      const auto now = std::chrono::steady_clock::now();
      times_.push_back(std::chrono::duration<double, std::milli>(now - last_).count());
      last_ = now;
    });
    beat_.start(0);
  }
  const std::vector<double> &times() const { return times_; }

private:
  QTimer beat_;
  std::chrono::steady_clock::time_point last_ = std::chrono::steady_clock::now();
  std::vector<double> times_;
};

/// The longest time for which the event loop does nothing else while chunks come as fast as they are taken.
void measureHold() {
  constexpr std::size_t chunks = 5'000;
  Panel panel;
  const std::string text = bench::chatAnswer(chunks * chunkSize);
  const Holds holds;
  std::thread stream([&] {
    for (std::size_t index = 1; index <= chunks; ++index) {
      std::promise<void> taken;
      panel.controller.updateContent("What the user selected", text.substr(0, index * chunkSize), true,
                                     std::nullopt);
      panel.queue.post([&] { taken.set_value(); });
      taken.get_future().wait();
    }
    panel.queue.post([] { QApplication::quit(); });
  });
  QApplication::exec();
  stream.join();
  Row{"main-hold", bench::quantile(holds.times(), 1),   "ms", "absolute", 1,
      16,          bench::quantile(holds.times(), 0.99)}
      .print();
}

double residentMegabytes() {
  std::ifstream statm("/proc/self/statm");
  double pages = 0;
  statm >> pages >> pages;
  return pages * 4096 / 1e6;
}

/// An answer of a megabyte that comes at once, its last part shown, and closed again.
void measureMegabyte() {
  Panel panel;
  stream(panel, bench::chatAnswer(40'960));
  panel.close();
  panel.open();
  const double before = residentMegabytes();
  const std::string text = bench::chatAnswer(1'000'000);
  auto *const bar = panel.conversation().verticalScrollBar();
  panel.controller.updateContent("What the user selected", text, false, std::nullopt);
  const Holds holds;
  do {
    QApplication::processEvents();
    bar->setValue(bar->maximum());
  } while (!panel.answer() || panel.answer()->length() == 0 || !panel.answer()->isComplete());
  Row{"megabyte-hold", bench::quantile(holds.times(), 1), "ms", "absolute", 1, 100, std::nullopt}.print();
  Row{"megabyte-memory", residentMegabytes() - before, "MB more", "absolute", 1, 100, std::nullopt}.print();
  panel.close();
  Row{"megabyte-closed", residentMegabytes() - before, "MB more", "absolute", 1, 10, std::nullopt}.print();
}

}  // namespace

int main(int argc, char **argv) {
  const std::vector<std::string> wanted(argv + 1, argv + argc);
  const std::vector<bench::Group> groups{
      {{"refresh", "refresh-p99", "refresh-100k", "refresh-blocks"}, measureRefresh},
      {{"main-hold"}, measureHold},
      {{"megabyte-hold", "megabyte-memory", "megabyte-closed"}, measureMegabyte}};
  const testing::XServer server;
  for (const auto &[name, value] : server.environment()) {
    setenv(name.c_str(), value.c_str(), 1);
  }
  setenv("QT_QPA_PLATFORM", "xcb", 1);
  const QApplication application(argc, argv);
  QApplication::setQuitOnLastWindowClosed(false);
  return bench::runGroups(wanted, groups);
}
