#pragma once

#include "platform/linux/x11/capture/CaptureDisplay.h"
#include "platform/linux/x11/capture/CaptureScene.h"
#include "platform/linux/x11/capture/FrozenScreen.h"

#include <vector>

namespace lumiwren {

/// The window that covers the whole screen and shows the frozen picture of it. Every picture is put together
/// in the server, out of sight, and only where it differs from the one before.
class CaptureWindow {
public:
  /// Makes the window, which is not shown yet, and asks for the events of the root window that concern it or
  /// the screen itself. `cursor` is the pointer's shape over it, with the hot spot in the middle. What is
  /// given by reference outlives this object.
  CaptureWindow(const CaptureDisplay &display, const FrozenScreen &picture, const Sprite &cursor);
  CaptureWindow(const CaptureWindow &) = delete;
  CaptureWindow &operator=(const CaptureWindow &) = delete;
  ~CaptureWindow();

  xcb_window_t id() const { return window_; }
  xcb_cursor_t cursor() const { return cursor_; }

  /// Shows the window, above everything.
  void show(const CaptureScene &scene);
  /// Draws what is different. To be called only when isReady().
  void draw(const CaptureScene &scene);
  /// Whether the server has drawn what it was told to: more than it can draw is never asked of it.
  bool isReady();
  void hide();

  /// Keeps the window drawn and above everything. Any event may be given.
  void handle(const xcb_generic_event_t &event);

private:
  /// A sprite of the scene, in the server.
  struct Uploaded {
    PixelRect rect;
    xcb_render_picture_t picture;
  };

  /// Puts the scene together and shows it in `region`.
  void paint(const PixelRegion &region) const;
  void paintTile(const PixelRect &tile, const std::vector<Uploaded> &sprites) const;
  /// The sprite in the server; to be freed.
  xcb_render_picture_t picture(const Sprite &sprite) const;
  void raise();

  const CaptureDisplay &display_;
  const FrozenScreen &frozen_;
  xcb_connection_t *server_;
  xcb_window_t window_;
  xcb_pixmap_t tile_;  // where a part is put together before it is shown
  xcb_render_picture_t tilePicture_;
  xcb_gcontext_t context_;
  xcb_cursor_t cursor_;
  CaptureScene scene_;
  unsigned drawing_ = 0;  // the request whose answer tells that the last picture is drawn; 0 for none
  int raises_ = 0;
};

}  // namespace lumiwren
