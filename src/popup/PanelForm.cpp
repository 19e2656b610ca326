#include "popup/PanelForm.h"

#include <cmath>

namespace lumiwren {

WindowForm roundedForm(QSize window, double cornerRadius) {
  WindowForm form;
  const int rows = static_cast<int>(std::ceil(cornerRadius));
  for (int row = 0; row < rows; ++row) {
    const double fromCentre = cornerRadius - (row + 0.5);
    const int inset = static_cast<int>(
        std::lround(cornerRadius - std::sqrt(cornerRadius * cornerRadius - fromCentre * fromCentre)));
    form.visible.push_back({inset, row, window.width() - 2 * inset, 1});
    form.visible.push_back({inset, window.height() - 1 - row, window.width() - 2 * inset, 1});
  }
  form.visible.push_back({0, rows, window.width(), window.height() - 2 * rows});
  return form;
}

}  // namespace lumiwren
