#pragma once

namespace lumiwren {

/// Distances in and between what stands in a window, in points.
namespace spacing {
constexpr int tiny = 4;
constexpr int small = 8;
constexpr int medium = 12;
constexpr int large = 16;
constexpr int extraLarge = 20;
constexpr int section = 24;
constexpr int page = 32;
}  // namespace spacing

/// The radius of round corners, in points.
namespace radius {
constexpr int control = 6;
constexpr int box = 8;
}  // namespace radius

/// The height of buttons and fields in points; it grows with the text.
constexpr int controlHeight = 28;

}  // namespace lumiwren
