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

/// The set that recognition was made with: the same pictures on every machine that has the same fonts.
std::vector<Specimen> specimens();
/// Pictures with other texts, fonts and colours, that nothing was ever adjusted to.
std::vector<Specimen> heldOutSpecimens();

}  // namespace lumiwren::bench
