#include "platform/linux/session/DisplayEnd.h"

#include "platform/linux/x11/X11Session.h"

#include <QGuiApplication>

namespace lumiwren {
namespace {

struct DisplayWatch {
  void *connection = nullptr;
  void (*ended)() = nullptr;
  QtMessageHandler previousHandler = nullptr;
};

DisplayWatch &displayWatch() {
  static DisplayWatch watch;
  return watch;
}

// The toolkit writes to its log that the connection is lost, in whatever words, before it calls exit().
void noteMessage(QtMsgType type, const QMessageLogContext &context, const QString &message) {
  const DisplayWatch &watch = displayWatch();
  watch.previousHandler(type, context, message);
  if (isConnectionLost(watch.connection)) {
    watch.ended();
  }
}

}  // namespace

Handle observeDisplayEnd(void (*ended)()) {
  const auto *const x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
  if (x11 == nullptr) {
    return {};
  }
  // Other threads may write to the log as soon as the handler is there.
  displayWatch() = {x11->connection(), ended, qInstallMessageHandler(nullptr)};
  qInstallMessageHandler(noteMessage);
  return Handle([] { qInstallMessageHandler(displayWatch().previousHandler); });
}

}  // namespace lumiwren
