#include "platform/linux/screencapture/RegionChooser.h"

#include "platform/linux/screencapture/Painter.h"
#include "platform/linux/screencapture/SizeLabel.h"

#include <algorithm>
#include <array>
#include <utility>

namespace lumiwren {
namespace {

constexpr std::uint32_t selectButton = 1;
constexpr std::uint32_t menuButton = 3;
constexpr std::uint32_t hairline = 0x99999999;  // white at 60 %
constexpr std::uint32_t outline = 0xffffffff;

/// The step that a key makes, of the arrow keys and those of the keypad.
std::optional<PixelPoint> arrow(KeySym key) {
  switch (key) {
    case keySym::left:
    case keySym::keypadLeft:
      return PixelPoint{-1, 0};
    case keySym::up:
    case keySym::keypadUp:
      return PixelPoint{0, -1};
    case keySym::right:
    case keySym::keypadRight:
      return PixelPoint{1, 0};
    case keySym::down:
    case keySym::keypadDown:
      return PixelPoint{0, 1};
    default:
      return std::nullopt;
  }
}

int lineWidth(double scale) {
  return std::max(1, static_cast<int>(scale));
}

/// Four arms around an open middle, light with a dark rim: seen on any ground.
Sprite crosshair(double scale) {
  const double line = lineWidth(scale);
  const double gap = 4 * scale;
  const double reach = 10 * scale;
  const int half = static_cast<int>(reach + line) + 1;
  const int size = 2 * half + 1;
  Painter painter(size, size);
  // A line of an even width has its middle between two pixels.
  const double middle = half + (lineWidth(scale) % 2 == 0 ? 1.0 : 0.5);
  const std::array arms{Stroke{{middle - reach, middle}, {middle - gap, middle}},
                        Stroke{{middle + gap, middle}, {middle + reach, middle}},
                        Stroke{{middle, middle - reach}, {middle, middle - gap}},
                        Stroke{{middle, middle + gap}, {middle, middle + reach}}};
  painter.strokes(arms, line + 2, {0, 0.55});
  painter.strokes(arms, line, {255, 1});
  return painter.sprite();
}

}  // namespace

RegionChooser::RegionChooser(const PixelRect &bounds, std::vector<CaptureMonitor> monitors,
                             PixelPoint pointer, MovePointer movePointer)
    : monitors_(std::move(monitors)),
      selection_(bounds, pointer),
      movePointer_(std::move(movePointer)),
      cursor_(std::make_shared<const Sprite>(crosshair(monitorAt(pointer).scale))) {}

const CaptureMonitor &RegionChooser::monitorAt(PixelPoint point) const {
  const auto found = std::find_if(monitors_.begin(), monitors_.end(), [point](const CaptureMonitor &monitor) {
    return contains(monitor.frame, point);
  });
  return found == monitors_.end() ? monitors_.front() : *found;
}

RegionChooser::Outcome RegionChooser::accepted() const {
  return selection_.rectangle() ? Outcome::Accepted : Outcome::Open;
}

RegionChooser::Outcome RegionChooser::handle(const CaptureEvent &event) {
  if (event.pointer != selection_.pointer()) {
    selection_.pointerMoved(event.pointer);
  }
  switch (event.kind) {
    case CaptureEvent::Kind::ButtonDown:
      if (event.button == menuButton) {
        return Outcome::Cancelled;
      }
      if (event.button == selectButton) {
        selection_.pressed();
      }
      break;
    case CaptureEvent::Kind::ButtonUp:
      if (event.button == selectButton && selection_.isPressed()) {
        return selection_.rectangle() ? Outcome::Accepted : Outcome::Cancelled;
      }
      break;
    case CaptureEvent::Kind::KeyDown:
      return handleKey(event);
    case CaptureEvent::Kind::KeyUp:
      if (event.key == keySym::space) {
        selection_.setHeld(false);
      }
      break;
    case CaptureEvent::Kind::Motion:
      break;
  }
  return Outcome::Open;
}

RegionChooser::Outcome RegionChooser::handleKey(const CaptureEvent &event) {
  switch (event.key) {
    case keySym::escape:
      return Outcome::Cancelled;
    case keySym::enter:
    case keySym::keypadEnter:
      return accepted();
    case keySym::space:
      selection_.setHeld(true);
      return Outcome::Open;
    default:
      break;
  }
  if (const auto step = arrow(event.key)) {
    if (!selection_.isPressed()) {
      movePointer_(step->x, step->y);
    } else if (event.shift) {
      selection_.moveCorner(step->x, step->y);
    } else {
      selection_.move(step->x, step->y);
    }
  }
  return Outcome::Open;
}

CaptureScene RegionChooser::scene(bool drawsPointer) const {
  CaptureScene scene;
  const auto drawn = selection_.rectangle();
  const PixelPoint place = selection_.isPressed() ? selection_.corner() : selection_.pointer();
  const CaptureMonitor &monitor = monitorAt(place);
  const int line = lineWidth(monitor.scale);
  if (drawn) {
    scene.bright = *drawn;
    // Around the region, none of which is covered.
    const auto [x, y, width, height] = *drawn;
    for (const PixelRect &edge :
         {PixelRect{x - line, y - line, width + 2 * line, line},
          PixelRect{x - line, y + height, width + 2 * line, line}, PixelRect{x - line, y, line, height},
          PixelRect{x + width, y, line, height}}) {
      scene.fills.push_back({edge, outline});
    }
    const auto label = std::make_shared<const Sprite>(sizeLabel(width, height, monitor.scale));
    scene.sprites.push_back({labelPlace({0, 0, label->width, label->height}, *drawn, place, monitor), label});
  } else {
    const PixelRect &frame = monitor.frame;
    const int lineX = place.x - (line - 1) / 2;
    const int lineY = place.y - (line - 1) / 2;
    // Past the pointer's own arms, and in pieces that do not cross: where they did it would be brighter.
    const int clear = cursor_->width / 2 + 2 * line;
    const PixelRegion crossing{{frame.x, lineY, frame.width, line}, {lineX, frame.y, line, frame.height}};
    const PixelRect middle{place.x - clear, place.y - clear, 2 * clear + 1, 2 * clear + 1};
    for (const PixelRect &piece : clipped(subtracted(crossing, middle), frame)) {
      scene.fills.push_back({piece, hairline});
    }
  }
  if (drawsPointer) {
    scene.sprites.push_back(
        {{selection_.pointer().x - cursor_->width / 2, selection_.pointer().y - cursor_->height / 2},
         cursor_});
  }
  return scene;
}

}  // namespace lumiwren
