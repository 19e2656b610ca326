#pragma once

#include <QDBusConnection>
#include <QString>
#include <QVariantList>

namespace lumiwren {

/// The program that has the session's name, as another process asks things of it. A question blocks, for less
/// than two seconds where the program runs.
class RunningProgram {
public:
  enum class Outcome {
    Done,
    Refused,     // with a text that says why
    NotRunning,  // nobody has the name, and nobody starts a program for it
    Gone,        // it has ended, or given up its name, without an answer
    Silent       // it has the name and does not answer
  };
  struct Answer {
    Outcome outcome = Outcome::Done;
    QString text;
  };

  explicit RunningProgram(const QDBusConnection &bus);

  /// What starting the program again means.
  Answer activate() const;
  /// A method of ProgramInstance's control interface. Where the desktop knows how, it starts the program for
  /// it.
  Answer call(const QString &method, const QVariantList &arguments = {}) const;
  /// The same for a program that runs already.
  Answer callRunning(const QString &method) const;

private:
  Answer send(const QString &interface, const QString &method, const QVariantList &arguments,
              bool startsProgram) const;

  QDBusConnection bus_;
};

}  // namespace lumiwren
