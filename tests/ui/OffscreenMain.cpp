#include <gtest/gtest.h>

#include <QApplication>

#include <stdlib.h>

/// The main program of tests that draw windows which nobody sees.
int main(int argc, char **argv) {
  ::testing::InitGoogleTest(&argc, argv);
  setenv("QT_QPA_PLATFORM", "offscreen", 1);
  const QApplication application(argc, argv);
  QApplication::setQuitOnLastWindowClosed(false);
  return RUN_ALL_TESTS();
}
