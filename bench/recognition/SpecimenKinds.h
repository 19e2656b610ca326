#pragma once

#include "recognition/SpecimenCanvas.h"

#include <QStringList>

#include <functional>
#include <vector>

namespace lumiwren::bench {

struct Look {
  QColor ground;
  QColor ink;
};

/// Draws one picture.
using Draw = std::function<SpecimenCanvas()>;

/// One paragraph of about sixty letters in a line. Sizes of letters are in points.
Draw paragraph(const QString &words, const QString &family, int size, const Look &look, int scale = 1,
               SpecimenCanvas::Smoothing smoothing = SpecimenCanvas::Smoothing::Grey);
/// Lines as they are, program text for the most part.
Draw lines(const QStringList &all, const QString &family, int size, const Look &look, int scale = 1,
           SpecimenCanvas::Smoothing smoothing = SpecimenCanvas::Smoothing::Grey);
/// Rows of four cells, the first of them bold.
Draw table(const std::vector<std::vector<QString>> &rows, const QString &family, int size, const Look &look,
           bool hasGrid);
/// Two columns of running text.
Draw columns(const QString &left, const QString &right, const QString &family, int size, const Look &look);

}  // namespace lumiwren::bench
