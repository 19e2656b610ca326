#pragma once

#include <QApplication>

namespace lumiwren::testing {

/// The one application object of a test program, made with the first use.
inline QApplication &testApplication() {
  static int argumentCount = 1;
  static char name[] = "test";
  static char *arguments[] = {name, nullptr};
  static QApplication application(argumentCount, arguments);
  return application;
}

}  // namespace lumiwren::testing
