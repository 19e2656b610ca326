#pragma once

#include <QDBusConnection>
#include <QObject>
#include <QString>
#include <QVariantMap>

#include <functional>

namespace lumiwren {

/// The program in its session, where it is one at a time: who has its name on the session bus. Others reach
/// it there, by the interface org.freedesktop.Application, whose methods the public slots are. Main thread.
class ProgramInstance : public QObject {
  Q_OBJECT
  Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Application")

public:
  /// The program's name on the bus, and the path that belongs to it.
  static constexpr char name[] = "com.lumiwren.app";
  static constexpr char path[] = "/com/lumiwren/app";

  /// Asks the bus for the name. `onActivate` is called when the program is started again.
  ProgramInstance(const QDBusConnection &bus, std::function<void()> onActivate);

  /// False when another process has the name. Without a bus there is nobody to ask, and so no other.
  bool isFirst() const { return isFirst_; }
  /// Has the process that has the name do what starting it again means. False when it does not answer in
  /// time.
  bool activateFirst() const;

public Q_SLOTS:
  void Activate(const QVariantMap &platformData);

private:
  QDBusConnection bus_;
  const std::function<void()> onActivate_;
  bool isFirst_ = true;
};

}  // namespace lumiwren
