#pragma once

#include "actions/CustomActionManager.h"
#include "platform/testing/FakeApplicationWindows.h"
#include "platform/testing/FakeEventMonitors.h"
#include "platform/testing/FakePanelWindows.h"
#include "platform/testing/FakeScreens.h"
#include "platform/testing/FakeUserDefaults.h"
#include "settings/ActionEditorView.h"
#include "settings/ActionList.h"
#include "settings/ActionRow.h"
#include "settings/ActionsSettingsPanel.h"
#include "settings/ActionsSettingsView.h"
#include "settings/ActionsSettingsWindowController.h"
#include "ui/Alert.h"
#include "ui/Motion.h"
#include "ui/TextArea.h"
#include "ui/TextField.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QApplication>
#include <QKeyEvent>
#include <QLabel>
#include <QPushButton>

#include <stdexcept>
#include <string>
#include <vector>

namespace lumiwren::testing {

inline bool hasName(const QAbstractButton &button, const char *name) {
  return button.accessibleName() == QLatin1String(name) || button.text() == QLatin1String(name);
}

/// The visible buttons of that name, in the order in which they were made.
inline std::vector<QAbstractButton *> buttons(const QWidget &within, const char *name) {
  std::vector<QAbstractButton *> found;
  for (auto *const candidate : within.findChildren<QAbstractButton *>()) {
    if (candidate->isVisible() && hasName(*candidate, name)) {
      found.push_back(candidate);
    }
  }
  return found;
}

inline QAbstractButton &button(const QWidget &within, const char *name, std::size_t index = 0) {
  const auto found = buttons(within, name);
  return index < found.size() ? *found[index] : throw std::runtime_error(std::string("no button ") + name);
}

/// The visible texts, in the order in which they were made.
inline std::vector<std::string> texts(const QWidget &within) {
  std::vector<std::string> found;
  for (const auto *const label : within.findChildren<QLabel *>()) {
    if (label->isVisible()) {
      found.push_back(label->text().toStdString());
    }
  }
  return found;
}

/// What the keyboard sends to the widget that has it.
inline void press(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier, const QString &text = {}) {
  for (const auto type : {QEvent::KeyPress, QEvent::KeyRelease}) {
    if (auto *const focused = QApplication::focusWidget()) {
      QKeyEvent event(type, key, modifiers, text);
      QApplication::sendEvent(focused, &event);
    }
  }
}
inline void type(const QString &text) {
  for (const QChar character : text) {
    press(Qt::Key_unknown, Qt::NoModifier, character);
  }
}

/// Posted events, and the end of what is deleted later.
inline void settle() {
  QCoreApplication::processEvents();
  QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
  QCoreApplication::processEvents();
}

/// What the window of the actions is made with. Nothing moves.
class ActionsTest : public ::testing::Test {
protected:
  ActionsTest() { setReducesMotion(true); }
  ~ActionsTest() override {
    setReducesMotion(false);
    settle();
  }

  static CustomAction action(const std::string &name,
                             CustomAction::InputType inputType = CustomAction::InputType::TextSelection) {
    return {UUID::random(), name, {18, 0xA0000}, "prompt of " + name, inputType, false};
  }

  MainQueue queue;
  FakeEventMonitors monitors;
  FakeScreens screens;
  FakePanelWindows panelWindows;
  FakeApplicationWindows applicationWindows;
  FakeUserDefaults defaults;
  CustomActionManager manager{defaults};
};

/// The whole window.
class ActionsWindowTest : public ActionsTest {
protected:
  void show() {
    controller.showWindow();
    panel().activateWindow();
    settle();
  }
  ActionsSettingsPanel &panel() { return *controller.panel(); }
  ActionsSettingsView &view() { return *panel().findChild<ActionsSettingsView *>(); }
  ActionList &list() { return *panel().findChild<ActionList *>(); }
  ActionRow &row(std::size_t index) { return *list().rows().at(index); }
  ActionEditorView *editor() { return panel().findChild<ActionEditorView *>(); }
  Alert *alert() { return panel().findChild<Alert *>(); }
  TextField &nameField() { return *editor()->findChild<TextField *>(); }
  TextArea &promptArea() { return *editor()->findChild<TextArea *>(); }

  void click(const QWidget &within, const char *name, std::size_t index = 0) {
    button(within, name, index).click();
    settle();
  }
  std::vector<std::string> names() {
    std::vector<std::string> result;
    for (const auto *const each : list().rows()) {
      result.push_back(each->accessibleName().toStdString());
    }
    return result;
  }
  std::vector<std::string> storedNames() const {
    std::vector<std::string> result;
    for (const auto &each : manager.actions()) {
      result.push_back(each.name);
    }
    return result;
  }
  void deleteAll() {
    for (const auto &each : std::vector(manager.actions())) {
      manager.deleteAction(each);
    }
  }

  ActionsSettingsWindowController controller{manager,      monitors,           screens,
                                             panelWindows, applicationWindows, queue};
};

}  // namespace lumiwren::testing
