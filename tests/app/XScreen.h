#pragma once

#include <xcb/xcb.h>

#include <QPoint>
#include <QRgb>
#include <QString>

#include <memory>
#include <string>
#include <vector>

namespace lumiwren::testing {

/// What a person sees on an X server's screen and does there.
class XScreen {
public:
  /// Throws std::runtime_error when there is no such server.
  explicit XScreen(const std::string &display);

  xcb_connection_t *connection() const { return connection_.get(); }
  xcb_window_t root() const { return root_; }
  xcb_atom_t atom(const std::string &name) const;

  /// The upper left corners of the visible top-level windows.
  std::vector<QPoint> windows() const;
  /// How many pixels of the screen have that colour.
  int pixels(QRgb colour) const;
  void click(QPoint position, uint8_t button) const;
  void press(uint32_t keysym) const;
  /// Whether a program has taken the keyboard for itself, as one with an open menu does.
  bool keyboardIsGrabbed() const;

private:
  using Connection = std::unique_ptr<xcb_connection_t, decltype(&xcb_disconnect)>;

  Connection connection_;
  Connection focusChanges_;  // has these events only
  xcb_window_t root_ = XCB_NONE;
  mutable bool keyboardIsGrabbed_ = false;
};

}  // namespace lumiwren::testing
