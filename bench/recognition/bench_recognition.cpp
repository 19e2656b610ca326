// How well and how fast the text on screens is read, against Tesseract's own command with its defaults.

#include "base/Task.h"
#include "net/Row.h"
#include "platform/linux/recognition/PNGDecoder.h"
#include "platform/linux/recognition/TesseractRecognizer.h"
#include "recognition/CharacterErrors.h"
#include "recognition/Specimens.h"

#include <QBuffer>
#include <QFile>
#include <QGuiApplication>
#include <QProcess>
#include <QTemporaryDir>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <map>
#include <stdexcept>
#include <string>
#include <vector>

namespace lumiwren::bench {
namespace {

constexpr int rounds = 5;

struct Drawn {
  Specimen specimen;
  QString words;
  Image image;
  QString file;
};

struct Reading {
  double errors = 0;  // for each character
  std::vector<double> times;
};

struct Result {
  const Drawn *drawn;
  Reading ours;
  Reading command;         // with one thread
  Reading defaultCommand;  // as Debian ships it
};

std::vector<Drawn> draw(const QString &folder) {
  std::vector<Drawn> all;
  for (const auto &specimen : specimens()) {
    const auto canvas = specimen.draw();
    QByteArray png;
    QBuffer buffer(&png);
    buffer.open(QIODevice::WriteOnly);
    canvas.image().save(&buffer, "PNG");
    Drawn drawn{specimen, canvas.words(), Image{Bytes(png.begin(), png.end())},
                folder + u'/' + QString::fromStdString(specimen.name)};
    for (const auto &[suffix, bytes] : {std::pair(".png", png), std::pair(".txt", drawn.words.toUtf8())}) {
      QFile file(drawn.file + QLatin1String(suffix));
      if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size()) {
        throw std::runtime_error("cannot write " + file.fileName().toStdString());
      }
    }
    all.push_back(std::move(drawn));
  }
  return all;
}

}  // namespace
}  // namespace lumiwren::bench

int main(int argc, char **argv) {
  using namespace lumiwren::bench;
  qputenv("QT_QPA_PLATFORM", "offscreen");
  qputenv("FONTCONFIG_FILE", LUMIWREN_BENCH_FONTS);
  QGuiApplication application(argc, argv);
  draw(QString::fromLocal8Bit(argv[1]));
}
