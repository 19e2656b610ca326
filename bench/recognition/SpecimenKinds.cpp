#include "recognition/SpecimenKinds.h"

namespace lumiwren::bench {

Draw paragraph(const QString &words, const QString &family, int size, const Look &look, int scale,
               SpecimenCanvas::Smoothing smoothing) {
  return [=] {
    SpecimenCanvas canvas(size * 34, size * 12, scale, look.ground);
    canvas.setSmoothing(smoothing);
    canvas.setFont(family, size);
    canvas.setInk(look.ink);
    canvas.paragraph(size, size, size * 32, words);
    return canvas;
  };
}

Draw lines(const QStringList &all, const QString &family, int size, const Look &look, int scale,
           SpecimenCanvas::Smoothing smoothing) {
  return [=] {
    SpecimenCanvas canvas(size * 34, size * 2 * static_cast<int>(all.size()), scale, look.ground);
    canvas.setSmoothing(smoothing);
    canvas.setFont(family, size);
    canvas.setInk(look.ink);
    int y = size / 2;
    for (const auto &line : all) {
      // Only the line's place shows how far it is indented.
      const auto indent = line.size() - line.trimmed().size();
      canvas.text(size + static_cast<int>(indent) * size * 6 / 10, y, line.trimmed());
      y += canvas.lineHeight();
    }
    return canvas;
  };
}

Draw table(const std::vector<std::vector<QString>> &rows, const QString &family, int size, const Look &look,
           bool hasGrid) {
  return [=] {
    SpecimenCanvas canvas(size * 32, size * 2 * static_cast<int>(rows.size()) + size, 1, look.ground);
    canvas.setInk(look.ink);
    const std::vector<int> xs{size, size * 13, size * 20, size * 26};
    int y = size / 2;
    for (const auto &row : rows) {
      canvas.setFont(family, size, y < size ? QFont::Bold : QFont::Normal);
      canvas.row(xs, y, row);
      if (hasGrid) {
        canvas.fill(0, y + size * 7 / 4 - size / 4, size * 32, 1, QColor(0x90, 0x90, 0x90));
      }
      y += size * 2;
    }
    for (const int x : xs) {
      if (hasGrid) {
        canvas.fill(x - size / 2, 0, 1, size * 2 * static_cast<int>(rows.size()), QColor(0x90, 0x90, 0x90));
      }
    }
    return canvas;
  };
}

Draw columns(const QString &left, const QString &right, const QString &family, int size, const Look &look) {
  return [=] {
    SpecimenCanvas canvas(size * 50, size * 18, 1, look.ground);
    canvas.setFont(family, size);
    canvas.setInk(look.ink);
    canvas.paragraph(size, size, size * 22, left);
    canvas.paragraph(size * 27, size, size * 22, right);
    return canvas;
  };
}

}  // namespace lumiwren::bench
