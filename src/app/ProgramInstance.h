#pragma once

#include <QDBusConnection>
#include <QDBusMessage>
#include <QObject>
#include <QString>

#include <functional>

namespace lumiwren {

/// The program in its session, where it is one at a time: who has its name on the session bus. Others reach
/// it there, by the interfaces org.freedesktop.Application and com.lumiwren.Control, and can have it do what
/// its user could do. Nobody can read there what it knows of keys and answers. Main thread.
class ProgramInstance : public QObject {
  Q_OBJECT

public:
  /// The program's name on the bus, the path that belongs to it, and the interface of its own commands.
  static constexpr char name[] = "com.lumiwren.app";
  static constexpr char path[] = "/com/lumiwren/app";
  static constexpr char controlInterface[] = "com.lumiwren.Control";

  /// What others can ask for.
  struct Operations {
    std::function<void()> showMenu;
    std::function<void()> showSettings;
    std::function<void()> quit;
    /// What runs the first action of that identifier, or else of that name; empty when there is none.
    std::function<std::function<void()>(const QString &)> actionNamed;
    /// The actions, as a JSON list of objects with "id", "hotkey", "name" and "inputType".
    std::function<QString()> actions;
  };

  explicit ProgramInstance(const QDBusConnection &bus);

  /// Asks the bus for the name. False when another process has it. Without a bus there is nobody to ask, and
  /// so no other.
  bool claim();
  /// From now on calls are answered; those that have come before were waiting for it.
  void serve(Operations operations);
  /// Gives the name up, so that the next start of the program is not one too many.
  void resign();

private:
  class FreedesktopApplication;
  class ControlInterface;

  /// Has something done in a later turn of the event loop: the caller does not wait for what is shown.
  void later(const std::function<void()> &operation);
  void runAction(const QString &nameOrIdentifier, const QDBusMessage &message);
  void refuse(const QDBusMessage &message, const QString &error, const QString &text);

  QDBusConnection bus_;
  Operations operations_;
};

}  // namespace lumiwren
