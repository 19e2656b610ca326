#include "app/Commands.h"

#include "app/RunningProgram.h"

#include <QCoreApplication>
#include <QDBusConnection>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <cstdio>
#include <cstdlib>

namespace lumiwren {
namespace {

using Answer = RunningProgram::Answer;
using Command = CommandLine::Command;
using Outcome = RunningProgram::Outcome;

Answer ask(const RunningProgram &program, const CommandLine &commandLine) {
  switch (commandLine.command) {
    case Command::RunAction:
      return program.call(QStringLiteral("RunAction"), {QString::fromStdString(commandLine.action)});
    case Command::Actions:
      return program.call(QStringLiteral("ListActions"));
    case Command::Settings:
      return program.call(QStringLiteral("ShowSettings"));
    case Command::Quit:
      return program.callRunning(QStringLiteral("Quit"));
    default:
      return program.call(QStringLiteral("ShowMenu"));
  }
}

/// On one line, whatever a name holds.
QByteArray oneLine(QString text) {
  for (QChar &character : text) {
    if (character.category() == QChar::Other_Control || character == QChar::LineSeparator ||
        character == QChar::ParagraphSeparator) {
      character = u' ';
    }
  }
  return text.toUtf8();
}

void printActions(const QString &list, bool isJSON) {
  const auto document = QJsonDocument::fromJson(list.toUtf8());
  if (isJSON) {
    std::fputs(document.toJson(QJsonDocument::Indented).constData(), stdout);
    return;
  }
  for (const auto &value : document.array()) {
    const QJsonObject action = value.toObject();
    std::printf("%s\t%s\t%s\n", oneLine(action[QLatin1String("id")].toString()).constData(),
                oneLine(action[QLatin1String("hotkey")].toString()).constData(),
                oneLine(action[QLatin1String("name")].toString()).constData());
  }
}

int failed(const char *reason) {
  std::fprintf(stderr, "lumiwren: %s\n", reason);
  return EXIT_FAILURE;
}

}  // namespace

int askRunningProgram(const CommandLine &commandLine) {
  int argumentCount = 1;
  char name[] = "lumiwren";
  char *arguments[] = {name, nullptr};
  const QCoreApplication application(argumentCount, arguments);
  const RunningProgram program(
      QDBusConnection::connectToBus(QDBusConnection::SessionBus, QStringLiteral("lumiwren")));
  const Answer answer = ask(program, commandLine);
  switch (answer.outcome) {
    case Outcome::Done:
      if (commandLine.command == Command::Actions) {
        printActions(answer.text, commandLine.isJSON);
      }
      return EXIT_SUCCESS;
    case Outcome::Refused:
      return failed(oneLine(answer.text).constData());
    case Outcome::Silent:
      return failed("it is running, but does not answer");
    case Outcome::Gone:
      // What has ended meanwhile need not be ended.
      return commandLine.command == Command::Quit ? EXIT_SUCCESS : failed("it has just ended");
    case Outcome::NotRunning:
      break;
  }
  return failed("it is not running");
}

}  // namespace lumiwren
