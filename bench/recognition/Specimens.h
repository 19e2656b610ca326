#pragma once

#include "recognition/SpecimenCanvas.h"

#include <functional>
#include <string>
#include <vector>

namespace lumiwren::bench {

/// A picture of the recognition set.
struct Specimen {
  std::string name;
  std::string group;
  std::string language = "eng";  // the one that Tesseract's command is given
  std::function<SpecimenCanvas()> draw;
};

/// The whole set: the same pictures on every machine that has the same fonts.
std::vector<Specimen> specimens();

}  // namespace lumiwren::bench
