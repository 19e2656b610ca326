#include "app/ProgramInstance.h"

#include "app/Eventually.h"
#include "app/RunningProgram.h"
#include "app/SessionBus.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QDBusConnectionInterface>

#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace lumiwren {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

using testing::eventually;
using Outcome = RunningProgram::Outcome;

class ProgramInstanceTest : public ::testing::Test {
protected:
  ProgramInstanceTest() {
    first_->claim();
    first_->serve({.showMenu = [this] { done_.emplace_back("menu"); },
                   .showSettings = [this] { done_.emplace_back("settings"); },
                   .quit = [this] { done_.emplace_back("quit"); },
                   .actionNamed = [this](const QString &name) -> std::function<void()> {
                     if (name != QLatin1String("Shorten")) {
                       return {};
                     }
                     return [this] { done_.emplace_back("run"); };
                   },
                   .actions = [] { return QStringLiteral("[]"); }});
  }
  QDBusMessage callFreedesktop(const char *method, const QVariantList &arguments) {
    return testing::call(bus_.connect(),
                         QDBusMessage::createMethodCall(
                             QLatin1String(ProgramInstance::name), QLatin1String(ProgramInstance::path),
                             QStringLiteral("org.freedesktop.Application"), QLatin1String(method)),
                         arguments);
  }
  /// Asks as another process does, whose calls block, while this thread's event loop runs.
  RunningProgram::Answer ask(const std::function<RunningProgram::Answer(const RunningProgram &)> &question) {
    std::optional<RunningProgram::Answer> answer;
    const QDBusConnection bus = bus_.connect();
    std::thread other([&] {
      const auto given = question(RunningProgram(bus));
      QMetaObject::invokeMethod(qApp, [&answer, given] { answer = given; });
    });
    EXPECT_TRUE(eventually([&] { return answer.has_value(); }));
    other.join();
    return answer.value_or(RunningProgram::Answer{Outcome::Silent, {}});
  }

  testing::SessionBus bus_;
  std::vector<std::string> done_;
  std::optional<ProgramInstance> first_{std::in_place, bus_.connect()};
};

TEST_F(ProgramInstanceTest, OfManyOneIsTheFirst) {
  EXPECT_TRUE(bus_.connect().interface()->isServiceRegistered(QLatin1String(ProgramInstance::name)));
  for (int count = 0; count < 10; ++count) {
    EXPECT_FALSE(ProgramInstance(bus_.connect()).claim());
  }
}

TEST_F(ProgramInstanceTest, WithoutABusThereIsNoOther) {
  const auto none =
      QDBusConnection::connectToBus(QStringLiteral("unix:path=/nonexistent/bus"), QStringLiteral("no-bus"));
  EXPECT_TRUE(ProgramInstance(none).claim());
  EXPECT_TRUE(ProgramInstance(none).claim());
  EXPECT_EQ(RunningProgram(none).activate().outcome, Outcome::NotRunning);
}

TEST_F(ProgramInstanceTest, StartingAgainIsToldToTheFirst) {
  EXPECT_EQ(ask([](const RunningProgram &program) { return program.activate(); }).outcome, Outcome::Done);
  EXPECT_TRUE(eventually([this] { return !done_.empty(); }));
  EXPECT_THAT(done_, ElementsAre("menu"));
}

TEST_F(ProgramInstanceTest, EveryCommandHasItsMethod) {
  for (const char *const method : {"ShowMenu", "ShowSettings", "Quit"}) {
    EXPECT_EQ(ask([&](const RunningProgram &program) { return program.call(QLatin1String(method)); }).outcome,
              Outcome::Done);
  }
  const auto run = ask([](const RunningProgram &program) {
    return program.call(QStringLiteral("RunAction"), {QStringLiteral("Shorten")});
  });
  EXPECT_EQ(run.outcome, Outcome::Done);
  EXPECT_TRUE(eventually([this] { return done_.size() == 4; }));
  EXPECT_THAT(done_, ElementsAre("menu", "settings", "quit", "run"));
  EXPECT_EQ(
      ask([](const RunningProgram &program) { return program.call(QStringLiteral("ListActions")); }).text,
      QStringLiteral("[]"));
}

TEST_F(ProgramInstanceTest, AnActionThatDoesNotExistIsRefused) {
  const auto answer = ask([](const RunningProgram &program) {
    return program.call(QStringLiteral("RunAction"), {QStringLiteral("Lengthen")});
  });
  EXPECT_EQ(answer.outcome, Outcome::Refused);
  EXPECT_EQ(answer.text, QStringLiteral("no action has this name or identifier"));
  EXPECT_THAT(done_, IsEmpty());
}

TEST_F(ProgramInstanceTest, ADesktopCanAskForTheSame) {
  const QVariantMap data;
  EXPECT_EQ(callFreedesktop("Activate", {data}).type(), QDBusMessage::ReplyMessage);
  EXPECT_EQ(callFreedesktop("Open", {QStringList(), data}).type(), QDBusMessage::ReplyMessage);
  const auto activate = [&](const char *action, const QVariantList &parameters) {
    return callFreedesktop("ActivateAction",
                           {QString::fromLatin1(action), QVariant::fromValue(parameters), data})
        .type();
  };
  for (const char *const action : {"menu", "settings", "quit"}) {
    EXPECT_EQ(activate(action, {}), QDBusMessage::ReplyMessage);
  }
  EXPECT_EQ(activate("run-action", {QStringLiteral("Shorten")}), QDBusMessage::ReplyMessage);
  EXPECT_TRUE(eventually([this] { return done_.size() == 6; }));
  EXPECT_THAT(done_, ElementsAre("menu", "menu", "menu", "settings", "quit", "run"));
}

TEST_F(ProgramInstanceTest, WhatADesktopCannotAskForIsRefused) {
  const auto error = [&](const char *action, const QVariantList &parameters) {
    return callFreedesktop("ActivateAction",
                           {QString::fromLatin1(action), QVariant::fromValue(parameters), QVariantMap()})
        .errorName();
  };
  const auto invalid = QStringLiteral("org.freedesktop.DBus.Error.InvalidArgs");
  EXPECT_EQ(error("unknown", {}), invalid);
  EXPECT_EQ(error("run-action", {}), invalid);
  EXPECT_EQ(error("run-action", {QStringLiteral("Lengthen")}),
            QStringLiteral("com.lumiwren.Error.NoSuchAction"));
  EXPECT_THAT(done_, IsEmpty());
}

TEST_F(ProgramInstanceTest, OneThatDoesNotAnswerIsWaitedForOnlySoLong) {
  // This thread, whose loop does not run meanwhile, is the first one's too.
  const auto begin = std::chrono::steady_clock::now();
  EXPECT_EQ(RunningProgram(bus_.connect()).activate().outcome, Outcome::Silent);
  EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(2));
}

TEST_F(ProgramInstanceTest, OneThatEndsMeanwhileIsNoneThatHangs) {
  const QDBusConnection bus = bus_.connect();
  RunningProgram::Answer answer;
  std::thread other([&] { answer = RunningProgram(bus).activate(); });
  first_->resign();
  first_.reset();
  other.join();
  EXPECT_TRUE(answer.outcome == Outcome::Gone || answer.outcome == Outcome::NotRunning);
  EXPECT_TRUE(ProgramInstance(bus_.connect()).claim());
}

TEST_F(ProgramInstanceTest, NobodyToAskIsToldApart) {
  first_->resign();
  const RunningProgram program(bus_.connect());
  EXPECT_EQ(program.activate().outcome, Outcome::NotRunning);
  EXPECT_EQ(program.call(QStringLiteral("ShowMenu")).outcome, Outcome::NotRunning);
  EXPECT_EQ(program.callRunning(QStringLiteral("Quit")).outcome, Outcome::NotRunning);
}

}  // namespace
}  // namespace lumiwren
