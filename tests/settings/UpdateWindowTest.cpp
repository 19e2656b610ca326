#include "settings/UpdateWindow.h"

#include "platform/testing/FakeApplicationWindows.h"
#include "ui/Fonts.h"
#include "ui/Keyboard.h"

#include <gtest/gtest.h>

#include <QAccessible>
#include <QCoreApplication>
#include <QPointer>

#include <stdexcept>
#include <string>
#include <vector>

namespace lumiwren {
namespace {

using testing::pressKey;
using Choice = UpdateUserDriver::Choice;
using Occasion = UpdateUserDriver::Occasion;

class UpdateWindowTest : public ::testing::Test {
protected:
  ~UpdateWindowTest() override { setTextScale(1); }

  QWidget &window() {
    EXPECT_NE(updates.window(), nullptr);
    return *updates.window();
  }
  bool isShown() { return updates.window() != nullptr && updates.window()->isVisible(); }
  QStringList buttons() {
    QStringList labels;
    for (auto *const each : window().findChildren<PushButton *>()) {
      if (each->isVisible()) {
        labels << each->accessibleName();
      }
    }
    return labels;
  }
  PushButton &button(const char *label) {
    for (auto *const each : window().findChildren<PushButton *>()) {
      if (each->isVisible() && each->accessibleName() == QLatin1String(label)) {
        return *each;
      }
    }
    throw std::runtime_error(std::string("no button ") + label);
  }
  QStringList texts() {
    QStringList found;
    for (auto *const each : window().findChildren<TextLabel *>()) {
      if (each->isVisible()) {
        found << each->text();
      }
    }
    return found;
  }
  TextArea &notes() { return *window().findChild<TextArea *>(); }
  QProgressBar &bar() { return *window().findChild<QProgressBar *>(); }
  ProgressIndicator &wheel() { return *window().findChild<ProgressIndicator *>(); }

  void check() {
    updates.showChecking([this] { ++cancelled; });
  }
  void find(Occasion occasion, const std::string &noteText = "Better") {
    updates.showFound({.version = "2.0", .notes = noteText}, occasion,
                      [this](Choice choice) { choices.push_back(choice); });
  }
  void download() {
    updates.showDownloading("2.0", [this] { ++cancelled; });
  }

  testing::FakeApplicationWindows windows;
  UpdateWindow updates{windows};
  int cancelled = 0;
  std::vector<Choice> choices;
};

TEST_F(UpdateWindowTest, NothingIsThereUntilThereIsSomethingToShow) {
  EXPECT_EQ(updates.window(), nullptr);
  updates.bringToFront();
  updates.showProgress(1, 2);
  EXPECT_EQ(updates.window(), nullptr);
}

TEST_F(UpdateWindowTest, WhoAsksSeesTheCheckInFrontAndItsResultInTheSameWindow) {
  check();
  ASSERT_TRUE(isShown());
  const QPointer<QWidget> first(&window());
  EXPECT_EQ(first->windowTitle(), QStringLiteral("Software Update"));
  EXPECT_EQ(windows.activated, std::vector<NativeWindow>{first->winId()});
  EXPECT_EQ(texts(), QStringList{QStringLiteral("Checking for updates...")});
  EXPECT_EQ(buttons(), QStringList{QStringLiteral("Cancel")});
  EXPECT_TRUE(wheel().isVisible());
  EXPECT_FALSE(notes().isVisible());
  EXPECT_FALSE(bar().isVisible());

  updates.showUpToDate("1.0");
  EXPECT_EQ(&window(), first);
  EXPECT_EQ(texts(), (QStringList{QStringLiteral("Lumiwren is up to date"),
                                  QStringLiteral("Lumiwren 1.0 is the newest version.")}));
  EXPECT_FALSE(wheel().isVisible());
  EXPECT_EQ(windows.activated.size(), 1U) << "the user may be somewhere else by now";
  button("Close").click();
  EXPECT_FALSE(isShown());
  EXPECT_EQ(cancelled, 0);
}

TEST_F(UpdateWindowTest, CancelAndEscapeAndTheCloseButtonCancelACheckOnce) {
  check();
  button("Cancel").click();
  EXPECT_FALSE(isShown());
  EXPECT_EQ(cancelled, 1);
  check();
  pressKey(window(), Qt::Key_Escape);
  EXPECT_FALSE(isShown());
  EXPECT_EQ(cancelled, 2);
  check();
  window().close();
  EXPECT_FALSE(isShown());
  EXPECT_EQ(cancelled, 3);
}

TEST_F(UpdateWindowTest, AnOfferHasItsNotesAsTheyAre) {
  const std::string text = "<b>Not bold</b>\n\u2022 One\n&amp;";
  check();
  find(Occasion::Asked, text);
  EXPECT_EQ(texts().front(), QStringLiteral("Lumiwren 2.0 is available"));
  EXPECT_TRUE(notes().isVisible());
  EXPECT_TRUE(notes().isReadOnly());
  EXPECT_EQ(notes().toPlainText(), QString::fromStdString(text));
  EXPECT_EQ(buttons(), (QStringList{QStringLiteral("Skip This Version"), QStringLiteral("Remind Me Later"),
                                    QStringLiteral("Install")}));
  EXPECT_TRUE(button("Install").isDefault());
  EXPECT_EQ(window().focusWidget(), &button("Install"));
}

TEST_F(UpdateWindowTest, WithoutNotesThereIsNoFieldForThem) {
  find(Occasion::Asked, "");
  EXPECT_FALSE(notes().isVisible());
}

TEST_F(UpdateWindowTest, EachButtonGivesItsAnswerAndClosesTheWindow) {
  for (const auto &[label, choice] :
       {std::pair("Skip This Version", Choice::Skip), std::pair("Remind Me Later", Choice::RemindLater),
        std::pair("Install", Choice::Install)}) {
    choices.clear();
    find(Occasion::Asked);
    button(label).click();
    EXPECT_EQ(choices, std::vector{choice}) << label;
    EXPECT_FALSE(isShown()) << label;
  }
}

TEST_F(UpdateWindowTest, ToCloseAnOfferIsToDecideLaterAndReturnIsToInstall) {
  find(Occasion::Asked);
  pressKey(window(), Qt::Key_Escape);
  find(Occasion::Asked);
  window().close();
  find(Occasion::Asked);
  pressKey(notes(), Qt::Key_Return);
  EXPECT_EQ(choices, (std::vector{Choice::RemindLater, Choice::RemindLater, Choice::Install}));
  EXPECT_FALSE(isShown());
}

TEST_F(UpdateWindowTest, WhatIsFoundOnScheduleDoesNotTakeTheKeyboard) {
  find(Occasion::Scheduled);
  ASSERT_TRUE(isShown());
  EXPECT_TRUE(windows.activated.empty());
  EXPECT_TRUE(window().testAttribute(Qt::WA_ShowWithoutActivating));
  updates.bringToFront();
  EXPECT_EQ(windows.activated, std::vector<NativeWindow>{window().winId()});
}

TEST_F(UpdateWindowTest, TheDownloadTakesThePlaceOfTheOffer) {
  updates.showFound({.version = "2.0", .notes = "Better"}, Occasion::Scheduled,
                    [this](Choice) { download(); });
  const QPointer<QWidget> first(&window());
  button("Install").click();
  ASSERT_TRUE(isShown());
  EXPECT_EQ(&window(), first);
  EXPECT_EQ(texts(), QStringList{QStringLiteral("Downloading Lumiwren 2.0")});
  EXPECT_TRUE(wheel().isVisible());

  updates.showProgress(1'500'000, 0);
  EXPECT_EQ(texts().back(), QStringLiteral("1.5 MB"));
  EXPECT_TRUE(wheel().isVisible());
  EXPECT_FALSE(bar().isVisible());
  updates.showProgress(1'500'000, 3'000'000);
  EXPECT_EQ(texts().back(), QStringLiteral("1.5 MB of 3.0 MB"));
  EXPECT_FALSE(wheel().isVisible());
  EXPECT_TRUE(bar().isVisible());
  EXPECT_EQ(bar().value() * 2, bar().maximum());

  updates.showHandedOver("2.0");
  EXPECT_EQ(texts().front(), QStringLiteral("Lumiwren 2.0 is ready to be installed"));
  EXPECT_FALSE(bar().isVisible());
  button("Close").click();
  EXPECT_FALSE(isShown());
  EXPECT_EQ(cancelled, 0);
}

TEST_F(UpdateWindowTest, ADownloadIsCancelledByItsButtonAndByClosing) {
  download();
  button("Cancel").click();
  EXPECT_EQ(cancelled, 1);
  download();
  pressKey(window(), Qt::Key_Escape);
  EXPECT_EQ(cancelled, 2);
  EXPECT_FALSE(isShown());
}

TEST_F(UpdateWindowTest, AFailureHasItsReasonAsPlainText) {
  updates.showFailure("The server <b>said</b> no &amp; left.");
  EXPECT_EQ(texts(), (QStringList{QStringLiteral("The update failed"),
                                  QStringLiteral("The server <b>said</b> no &amp; left.")}));
  EXPECT_EQ(window().findChild<TextLabel *>()->textFormat(), Qt::PlainText);
  pressKey(window(), Qt::Key_Return);
  EXPECT_FALSE(isShown());
}

TEST_F(UpdateWindowTest, ClosedItsWindowIsGoneAndEndsWithItsOwner) {
  QPointer<QWidget> shown;
  {
    UpdateWindow temporary(windows);
    temporary.showChecking([this] { ++cancelled; });
    shown = temporary.window();
    temporary.window()->close();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_FALSE(shown);
    temporary.showChecking([this] { ++cancelled; });
    shown = temporary.window();
  }
  EXPECT_FALSE(shown);
  EXPECT_EQ(cancelled, 1);
}

TEST_F(UpdateWindowTest, EveryControlHasANameForAssistiveTechnology) {
  find(Occasion::Asked);
  EXPECT_EQ(QAccessible::queryAccessibleInterface(&notes())->text(QAccessible::Name),
            QStringLiteral("Release Notes"));
  EXPECT_EQ(QAccessible::queryAccessibleInterface(&bar())->text(QAccessible::Name),
            QStringLiteral("Download Progress"));
  for (auto *const each : window().findChildren<PushButton *>()) {
    EXPECT_FALSE(each->accessibleName().isEmpty());
  }
}

TEST_F(UpdateWindowTest, NothingIsCutOffInLargeText) {
  for (const double scale : {1.0, 1.5, 2.0}) {
    setTextScale(scale);
    find(Occasion::Asked);
    QCoreApplication::processEvents();
    for (auto *const each : window().findChildren<TextLabel *>()) {
      if (each->isVisible()) {
        EXPECT_GE(each->height(), each->heightForWidth(each->width())) << scale;
      }
    }
    for (auto *const each : window().findChildren<PushButton *>()) {
      EXPECT_GE(each->width(), each->sizeHint().width()) << scale;
      EXPECT_TRUE(window().rect().contains(QRect(each->mapTo(&window(), QPoint()), each->size()))) << scale;
    }
    window().close();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
  }
}

}  // namespace
}  // namespace lumiwren
