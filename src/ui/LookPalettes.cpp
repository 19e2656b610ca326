#include "ui/LookPalettes.h"

#include "ui/Palette.h"

#include <utility>

namespace lumiwren {
namespace {

/// What is not stated follows from these.
struct Look {
  QRgb window;
  QRgb base;
  QRgb alternateBase;
  QRgb button;
  QRgb toolTip;
  QRgb text;
  QRgb placeholder;
  QRgb link;
  QRgb linkVisited;
  // Edges, from the brightest to the darkest.
  QRgb light;
  QRgb midlight;
  QRgb mid;
  QRgb dark;
  QRgb shadow;
  QRgb disabledText;
  QRgb disabledHighlight;
};

QPalette palette(const Look &look) {
  QPalette result;
  for (const auto &[role, color] : {std::pair{QPalette::Window, look.window},
                                    {QPalette::WindowText, look.text},
                                    {QPalette::Base, look.base},
                                    {QPalette::AlternateBase, look.alternateBase},
                                    {QPalette::Text, look.text},
                                    {QPalette::PlaceholderText, look.placeholder},
                                    {QPalette::Button, look.button},
                                    {QPalette::ButtonText, look.text},
                                    {QPalette::BrightText, qRgb(0xff, 0xff, 0xff)},
                                    {QPalette::ToolTipBase, look.toolTip},
                                    {QPalette::ToolTipText, look.text},
                                    {QPalette::Link, look.link},
                                    {QPalette::LinkVisited, look.linkVisited},
                                    {QPalette::HighlightedText, qRgb(0xff, 0xff, 0xff)},
                                    {QPalette::Light, look.light},
                                    {QPalette::Midlight, look.midlight},
                                    {QPalette::Mid, look.mid},
                                    {QPalette::Dark, look.dark},
                                    {QPalette::Shadow, look.shadow}}) {
    result.setColor(role, QColor(color));
  }
  result.setColor(QPalette::Highlight, lumiwrenPurple());
  for (const auto role :
       {QPalette::WindowText, QPalette::Text, QPalette::ButtonText, QPalette::PlaceholderText,
        QPalette::HighlightedText, QPalette::ToolTipText, QPalette::Link, QPalette::LinkVisited}) {
    result.setColor(QPalette::Disabled, role, QColor(look.disabledText));
  }
  result.setColor(QPalette::Disabled, QPalette::Base, QColor(look.window));
  result.setColor(QPalette::Disabled, QPalette::Highlight, QColor(look.disabledHighlight));
  return result;
}

}  // namespace

QPalette lightPalette() {
  return palette({.window = 0xf4f4f5,
                  .base = 0xffffff,
                  .alternateBase = 0xf8f8f9,
                  .button = 0xfcfcfd,
                  .toolTip = 0xffffff,
                  .text = 0x1d1d1f,
                  .placeholder = 0x6a6a70,
                  .link = 0x0b5cc4,
                  .linkVisited = 0x6b3fb0,
                  .light = 0xffffff,
                  .midlight = 0xf9f9fa,
                  .mid = 0xc6c6ca,
                  .dark = 0x9c9ca2,
                  .shadow = 0x6b6b70,
                  .disabledText = 0x98989e,
                  .disabledHighlight = 0xdcdce0});
}

QPalette darkPalette() {
  return palette({.window = 0x2a2a2d,
                  .base = 0x1e1e20,
                  .alternateBase = 0x242427,
                  .button = 0x3a3a3e,
                  .toolTip = 0x3a3a3e,
                  .text = 0xececee,
                  .placeholder = 0xa3a3a9,
                  .link = 0x6cb4ff,
                  .linkVisited = 0xc0a2ff,
                  .light = 0x5a5a60,
                  .midlight = 0x48484d,
                  .mid = 0x202023,
                  .dark = 0x161618,
                  .shadow = 0x000000,
                  .disabledText = 0x7c7c83,
                  .disabledHighlight = 0x48484d});
}

}  // namespace lumiwren
