#pragma once

#include "support/XServer.h"

#include <gtest/gtest.h>

#include <QApplication>

#include <cstdlib>
#include <memory>

namespace lumiwren::testing {

/// A real X server with the toolkit on it, for all tests of a suite.
class ToolkitTest : public ::testing::Test {
protected:
  static void SetUpTestSuite() {
    server_ = std::make_unique<XServer>();
    setenv("DISPLAY", server_->display().c_str(), 1);
    setenv("QT_QPA_PLATFORM", "xcb", 1);
    static int count = 1;
    static char name[] = "test";
    static char *arguments[] = {name, nullptr};
    application_ = std::make_unique<QApplication>(count, arguments);
  }
  static void TearDownTestSuite() {
    application_.reset();
    server_.reset();
  }

  static XServer &server() { return *server_; }

private:
  static inline std::unique_ptr<XServer> server_;
  static inline std::unique_ptr<QApplication> application_;
};

}  // namespace lumiwren::testing
