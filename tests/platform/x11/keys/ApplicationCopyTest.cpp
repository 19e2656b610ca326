// Copies what is selected in real applications while the user still holds the hotkey.

#include "platform/KeyCodes.h"
#include "platform/x11/keys/CopyDesktop.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <linux/input-event-codes.h>

#include <fstream>

namespace lumiwren::testing {
namespace {

using ::testing::ElementsAre;

// Not a letter: Qt's text fields take a letter with Alt and Shift for text, and type it over the selection.
constexpr std::uint16_t hotkeyKey = KEY_F9;
const InputEvent hotkey{EventKind::KeyDown, 101, modifier::option | modifier::shift};

class ApplicationCopyTest : public ::testing::Test {
protected:
  std::unique_ptr<Process> startGTKEditor() const {
    return desktop_.start({"/usr/bin/python3", LUMIWREN_TESTS "/support/lab/helpers/gtk_editor.py", "Editor",
                           "some words", "text", "normal", "40", "40"});
  }
  std::unique_ptr<Process> startQtEditor() const {
    return desktop_.start({QT_EDITOR, "Editor", "some words"});
  }
  std::unique_ptr<Process> startChromium() const {
    const auto page = desktop_.directory() / "page.html";
    // The title tells when the page has the focus; before that, keys would go nowhere.
    std::ofstream(page) << R"(<!doctype html><meta charset=utf-8><title>Page</title>
<textarea autofocus>some words</textarea>
<script>
(function wait() {
  if (document.hasFocus() && document.activeElement.value) document.title = 'Editor';
  else requestAnimationFrame(wait);
})();
</script>)";
    return desktop_.start({"chromium", "--no-sandbox", "--disable-gpu", "--no-first-run", "--disable-sync",
                           "--disable-background-networking", "--password-store=basic",
                           "--user-data-dir=" + (desktop_.directory() / "profile").string(),
                           "--app=file://" + page.string()});
  }

  /// The user selects everything, presses the hotkey and holds it while the copy is made.
  void copyWithTheHotkeyHeld() {
    desktop_.hands().tapTogether({KEY_LEFTCTRL, KEY_A});
    desktop_.waitForSelection("PRIMARY", "some words");
    desktop_.settle();

    desktop_.hands().pressAll({KEY_LEFTALT, KEY_LEFTSHIFT, hotkeyKey});
    EXPECT_THAT(desktop_.probe().take(1), ElementsAre(hotkey));
    desktop_.copy().postCopy({});
    desktop_.waitForSelection("CLIPBOARD", "some words");
    expectNothingDown();

    desktop_.hands().releaseAll({hotkeyKey, KEY_LEFTSHIFT, KEY_LEFTALT});
    desktop_.settle();
    expectNothingDown();
  }
  void expectNothingDown() {
    EXPECT_TRUE(desktop_.server().heldKeys().none()) << desktop_.server().heldKeys();
    EXPECT_EQ(desktop_.server().modifiers(), 0);
  }

  /// The text and the selection are as they were: what is typed now replaces it all.
  void expectTextUntouched() {
    desktop_.hands().tap(KEY_1);
    desktop_.hands().tapTogether({KEY_LEFTCTRL, KEY_A});
    desktop_.waitForSelection("PRIMARY", "1");
  }

  void copyInOtherLayouts() {
    desktop_.hands().tapTogether({KEY_LEFTCTRL, KEY_A});
    desktop_.waitForSelection("PRIMARY", "some words");
    struct {
      std::vector<std::string> layout;
      std::uint8_t group;
    } const cases[] = {{{"us,ru"}, 1}, {{"ru"}, 0}, {{"us(dvorak)"}, 0}, {{"us,us(dvorak)"}, 1}};
    for (const auto &[layout, group] : cases) {
      SCOPED_TRACE(layout.front());
      std::vector<std::string> command{"setxkbmap"};
      command.insert(command.end(), layout.begin(), layout.end());
      desktop_.run(command);
      desktop_.server().lockGroup(group);
      desktop_.putOnClipboard("something else");
      desktop_.settle();

      desktop_.hands().pressAll({KEY_LEFTALT, KEY_LEFTSHIFT, hotkeyKey});
      EXPECT_THAT(desktop_.probe().take(1), ElementsAre(hotkey));
      desktop_.copy().postCopy({});
      desktop_.waitForSelection("CLIPBOARD", "some words");
      desktop_.hands().releaseAll({hotkeyKey, KEY_LEFTSHIFT, KEY_LEFTALT});
      desktop_.settle();
      expectNothingDown();
    }
  }

  /// A terminal with a line in it and a program that must not be interrupted.
  void copyFromTerminal(std::vector<std::string> command) {
    const auto record = desktop_.directory() / "record";
    std::ofstream(record).flush();
    const auto reader = desktop_.start({"tail", "-n", "+1", "-f", record});
    command.insert(
        command.end(),
        {"/usr/bin/python3", LUMIWREN_TESTS "/support/lab/helpers/terminal_program.py", record, "oneword"});
    const auto terminal = desktop_.start(command);
    desktop_.waitForFront("Terminal");
    ASSERT_TRUE(reader->waitForLine("shown"));
    desktop_.clickInFront(30, 10, 2);
    desktop_.waitForSelection("PRIMARY", "oneword");
    desktop_.settle();

    desktop_.hands().pressAll({KEY_LEFTALT, KEY_LEFTSHIFT, hotkeyKey});
    EXPECT_THAT(desktop_.probe().take(1), ElementsAre(hotkey));
    desktop_.copy().postCopy({});
    desktop_.waitForSelection("CLIPBOARD", "oneword");
    desktop_.hands().releaseAll({hotkeyKey, KEY_LEFTSHIFT, KEY_LEFTALT});
    desktop_.settle();
    expectNothingDown();

    // An interrupt that the user means does arrive, as the first one.
    desktop_.hands().tapTogether({KEY_LEFTCTRL, KEY_C});
    EXPECT_EQ(reader->readLine(), "interrupted");
    desktop_.hands().tapTogether({KEY_LEFTCTRL, KEY_C});
    EXPECT_EQ(reader->readLine(), "interrupted");
    EXPECT_EQ(reader->readLine(std::chrono::milliseconds(0)), std::nullopt);
  }

  CopyDesktop desktop_;
};

TEST_F(ApplicationCopyTest, GTK) {
  const auto editor = startGTKEditor();
  desktop_.waitForFront("Editor");
  copyWithTheHotkeyHeld();
  expectTextUntouched();
}

TEST_F(ApplicationCopyTest, Qt) {
  const auto editor = startQtEditor();
  desktop_.waitForFront("Editor");
  copyWithTheHotkeyHeld();
  expectTextUntouched();
}

TEST_F(ApplicationCopyTest, Chromium) {
  const auto browser = startChromium();
  desktop_.waitForFront("Editor");
  copyWithTheHotkeyHeld();
  expectTextUntouched();
}

TEST_F(ApplicationCopyTest, XTerm) {
  // However long a busy machine takes for it, two clicks are a double click.
  copyFromTerminal({"xterm", "-T", "Terminal", "+sb", "-xrm", "*multiClickTime: 60000", "-e"});
}

TEST_F(ApplicationCopyTest, VTETerminal) {
  copyFromTerminal({"/usr/bin/python3", LUMIWREN_TESTS "/support/lab/helpers/vte_terminal.py", "Terminal"});
}

TEST_F(ApplicationCopyTest, GTKInOtherLayouts) {
  const auto editor = startGTKEditor();
  desktop_.waitForFront("Editor");
  copyInOtherLayouts();
}

TEST_F(ApplicationCopyTest, QtInOtherLayouts) {
  const auto editor = startQtEditor();
  desktop_.waitForFront("Editor");
  copyInOtherLayouts();
}

TEST_F(ApplicationCopyTest, ChromiumInOtherLayouts) {
  const auto browser = startChromium();
  desktop_.waitForFront("Editor");
  copyInOtherLayouts();
}

}  // namespace
}  // namespace lumiwren::testing
