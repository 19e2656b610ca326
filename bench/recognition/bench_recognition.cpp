// How well and how fast the text on screens is read, against Tesseract's own command with its defaults.
// usage: bench_recognition [ID...] | --table FOLDER      (--table: every picture, left in the folder with its
// text)

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

#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <map>
#include <numeric>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace lumiwren::bench {
namespace {

constexpr int ourRounds = 5;
constexpr int commandRounds = 3;

struct Picture {
  Specimen specimen;
  QString words;
  Image image;
  QString file;  // without ".png"
};

struct Measured {
  double errors = 0;  // characters
  double time = 0;    // ms, median
};

struct Result {
  const Picture *picture;
  double characters;
  Measured ours;
  Measured command;         // with one thread
  Measured commandDefault;  // as Debian ships it
};

void write(const QString &name, const QByteArray &bytes) {
  QFile file(name);
  if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size()) {
    throw std::runtime_error("cannot write " + name.toStdString());
  }
}

std::vector<Picture> pictures(const std::vector<Specimen> &set, const QString &folder) {
  std::vector<Picture> all;
  for (const auto &specimen : set) {
    const auto canvas = specimen.draw();
    QByteArray png;
    QBuffer buffer(&png);
    buffer.open(QIODevice::WriteOnly);
    canvas.image().save(&buffer, "PNG");
    const QString file = folder + u'/' + QString::fromStdString(specimen.name);
    write(file + QStringLiteral(".png"), png);
    write(file + QStringLiteral(".txt"), canvas.words().toUtf8());
    all.push_back({specimen, canvas.words(), Image{Bytes(png.begin(), png.end())}, file});
  }
  return all;
}

QString read(TextRecognizer &recognizer, const Image &image) {
  const auto bitmap = PNGDecoder().bitmap(image);
  if (!bitmap) {
    throw std::runtime_error("a picture cannot be decoded");
  }
  QStringList lines;
  for (const auto &line : recognizer.recognize(*bitmap, {})) {
    lines.push_back(QString::fromStdString(line.topCandidate.value_or("")));
  }
  return lines.join(u'\n');
}

QString readByCommand(const Picture &picture, bool isSingleThread) {
  QProcess command;
  auto environment = QProcessEnvironment::systemEnvironment();
  if (isSingleThread) {
    environment.insert(QStringLiteral("OMP_THREAD_LIMIT"), QStringLiteral("1"));
  }
  command.setProcessEnvironment(environment);
  command.start(QStringLiteral("tesseract"),
                {picture.file + QStringLiteral(".png"), QStringLiteral("stdout"), QStringLiteral("-l"),
                 QString::fromStdString(picture.specimen.language)});
  if (!command.waitForFinished(-1) || command.exitCode() != 0) {
    throw std::runtime_error("the command tesseract fails");
  }
  return QString::fromUtf8(command.readAllStandardOutput());
}

Measured measure(int rounds, const Picture &picture, double characters,
                 const std::function<QString()> &reading) {
  Measured measured;
  std::vector<double> times;
  QString text;
  for (int round = 0; round < rounds; ++round) {
    times.push_back(milliseconds([&] { text = reading(); }));
  }
  measured.time = median(times);
  measured.errors = characterErrorRate(picture.words.toStdU32String(), text.toStdU32String()) * characters;
  return measured;
}

std::vector<Result> measureAll(const std::vector<Picture> &all) {
  TesseractRecognizer recognizer;
  std::vector<Result> results;
  for (const auto &picture : all) {
    const auto characters = static_cast<double>(picture.words.simplified().toStdU32String().size());
    read(recognizer, picture.image);  // what is loaded once is not counted
    results.push_back(
        {&picture, characters,
         measure(ourRounds, picture, characters, [&] { return read(recognizer, picture.image); }),
         measure(commandRounds, picture, characters, [&] { return readByCommand(picture, true); }),
         measure(1, picture, characters, [&] { return readByCommand(picture, false); })});
  }
  return results;
}

double sum(const std::vector<Result> &results, const std::function<double(const Result &)> &value) {
  return std::accumulate(results.begin(), results.end(), 0.0,
                         [&](double before, const Result &result) { return before + value(result); });
}

double percent(const std::vector<Result> &results, const std::function<double(const Result &)> &errors) {
  return 100 * sum(results, errors) / sum(results, [](const auto &each) { return each.characters; });
}

double ourErrors(const Result &result) {
  return result.ours.errors;
}
double commandErrors(const Result &result) {
  return result.command.errors;
}

/// Percentage points that the worst picture, compared with the command's reading, has more.
double worst(const std::vector<Result> &results) {
  double most = -100;
  for (const auto &result : results) {
    most = std::max(most, 100 * (result.ours.errors - result.command.errors) / result.characters);
  }
  return most;
}

void printSet(const std::vector<Result> &results) {
  const auto count = static_cast<double>(results.size());
  const double ours = sum(results, [](const auto &each) { return each.ours.time; }) / count;
  const double one = sum(results, [](const auto &each) { return each.command.time; }) / count;
  const double plain = sum(results, [](const auto &each) { return each.commandDefault.time; }) / count;
  Row{"ocr-time", ours, "ms", "tesseract with one thread", one, 0.75, {}}.print();
  Row{"ocr-time-default", ours, "ms", "tesseract as Debian ships it", plain, 0.25, {}}.print();

  std::vector<Result> small;
  std::ranges::copy_if(results, std::back_inserter(small),
                       [](const auto &each) { return each.picture->specimen.group == "11 px"; });
  Row{"ocr-errors",
      percent(results, ourErrors),
      "%",
      "tesseract with its defaults",
      percent(results, commandErrors),
      0.5,
      {}}
      .print();
  Row{"ocr-errors-11px",
      percent(small, ourErrors),
      "%",
      "tesseract with its defaults",
      percent(small, commandErrors),
      0.2,
      {}}
      .print();
  Row{"ocr-worst", worst(results), "points", "absolute", 1, 0.5, {}}.print();
}

void printHeldOut(const std::vector<Result> &results) {
  Row{"ocr-errors-held-out",
      percent(results, ourErrors),
      "%",
      "tesseract with its defaults",
      percent(results, commandErrors),
      0.5,
      {}}
      .print();
  Row{"ocr-worst-held-out", worst(results), "points", "absolute", 1, 0.5, {}}.print();
}

void printLine(const std::string &name, const std::vector<Result> &results) {
  const auto count = static_cast<double>(results.size());
  std::printf("%-28s %8.2f %8.2f %8.0f %8.0f %8.0f\n", name.c_str(), percent(results, ourErrors),
              percent(results, commandErrors),
              sum(results, [](const auto &each) { return each.ours.time; }) / count,
              sum(results, [](const auto &each) { return each.command.time; }) / count,
              sum(results, [](const auto &each) { return each.commandDefault.time; }) / count);
}

void printTable(const std::vector<Result> &results) {
  std::printf("%-28s %8s %8s %8s %8s %8s\n", "", "errors", "command", "ms", "command", "default");
  std::vector<std::string> order;
  std::map<std::string, std::vector<Result>> groups;
  for (const auto &result : results) {
    printLine(result.picture->specimen.name, {result});
    auto &group = groups[result.picture->specimen.group];
    if (group.empty()) {
      order.push_back(result.picture->specimen.group);
    }
    group.push_back(result);
  }
  for (const auto &group : order) {
    printLine("= " + group, groups[group]);
  }
  printLine("= all", results);
}

/// From a program that has read nothing yet to the text, but for the program's own start; twice as many
/// rounds, as every one counts.
void measureCold(const std::vector<Picture> &all) {
  const auto &picture = all.front();
  const auto program = QCoreApplication::applicationFilePath();
  std::vector<double> ours;
  std::vector<double> command;
  for (int round = 0; round < 2 * commandRounds; ++round) {
    QProcess fresh;
    fresh.start(program, {QStringLiteral("--cold"), picture.file + QStringLiteral(".png")});
    if (!fresh.waitForFinished(-1) || fresh.exitCode() != 0) {
      throw std::runtime_error("the cold reading fails");
    }
    ours.push_back(fresh.readAllStandardOutput().toDouble());
    command.push_back(milliseconds([&] { readByCommand(picture, true); }));
  }
  Row{"ocr-cold", median(ours), "ms", "tesseract with one thread", median(command), 2, {}}.print();
}

Image load(const std::string &file) {
  std::ifstream stream(file, std::ios::binary);
  return {Bytes(std::istreambuf_iterator<char>(stream), {})};
}

int readCold(const std::string &file) {
  const auto image = load(file);
  {
    TesseractRecognizer recognizer;
    std::printf("%f\n", milliseconds([&] { read(recognizer, image); }));
  }
  return Task::endAll(std::chrono::seconds(10)) ? 0 : 1;
}

/// Resident memory in MB.
double residentMemory() {
  std::ifstream status("/proc/self/statm");
  double total = 0;
  double resident = 0;
  status >> total >> resident;
  return resident * static_cast<double>(sysconf(_SC_PAGESIZE)) / 1e6;
}

/// Prints the most memory while pictures are read, and what stays when the engine has been let go of; both
/// without what the process had before.
int readAndForget(const std::vector<std::string> &files) {
  std::vector<Image> images;
  std::transform(files.begin(), files.end(), std::back_inserter(images), load);
  const double before = residentMemory();
  {
    TesseractRecognizer::Options options;
    options.keepWarm = std::chrono::milliseconds(200);
    TesseractRecognizer recognizer(options);
    for (const auto &image : images) {
      read(recognizer, image);
    }
    while (recognizer.isLoaded()) {
      std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    std::printf("%f %f\n", static_cast<double>(usage.ru_maxrss) * 1024 / 1e6 - before,
                residentMemory() - before);
  }
  return Task::endAll(std::chrono::seconds(10)) ? 0 : 1;
}

void measureMemory(const std::vector<Picture> &all) {
  QStringList arguments{QStringLiteral("--memory")};
  for (const auto &picture : all) {
    if (picture.specimen.language == "eng" && arguments.size() <= 10) {
      arguments.push_back(picture.file + QStringLiteral(".png"));
    }
  }
  QProcess fresh;
  fresh.start(QCoreApplication::applicationFilePath(), arguments);
  if (!fresh.waitForFinished(-1) || fresh.exitCode() != 0) {
    throw std::runtime_error("reading and forgetting fails");
  }
  const auto values = fresh.readAllStandardOutput().split(' ');
  Row{"ocr-memory", values.at(0).toDouble(), "MB", "absolute", 1, 120, {}}.print();
  Row{"ocr-memory-idle", values.at(1).toDouble(), "MB", "absolute", 1, 24, {}}.print();
}

int run(const std::vector<std::string> &arguments) {
  if (arguments.size() == 2 && arguments[0] == "--table") {
    auto set = specimens();
    std::ranges::copy(heldOutSpecimens(), std::back_inserter(set));
    printTable(measureAll(pictures(set, QString::fromStdString(arguments[1]))));
    return 0;
  }
  const QTemporaryDir folder;
  const auto all = pictures(specimens(), folder.path());
  const auto heldOut = pictures(heldOutSpecimens(), folder.path());
  return runGroups(
      arguments, {{{"ocr-time", "ocr-time-default", "ocr-errors", "ocr-errors-11px", "ocr-worst"},
                   [&] { printSet(measureAll(all)); }},
                  {{"ocr-errors-held-out", "ocr-worst-held-out"}, [&] { printHeldOut(measureAll(heldOut)); }},
                  {{"ocr-cold"}, [&] { measureCold(all); }},
                  {{"ocr-memory", "ocr-memory-idle"}, [&] { measureMemory(all); }}});
}

}  // namespace
}  // namespace lumiwren::bench

int main(int argc, char **argv) {
  using namespace lumiwren;
  using namespace lumiwren::bench;
  const std::vector<std::string> arguments(argv + 1, argv + argc);
  if (arguments.size() == 2 && arguments[0] == "--cold") {
    return readCold(arguments[1]);
  }
  if (arguments.size() > 1 && arguments[0] == "--memory") {
    return readAndForget({arguments.begin() + 1, arguments.end()});
  }
  qputenv("QT_QPA_PLATFORM", "offscreen");
  qputenv("FONTCONFIG_FILE", LUMIWREN_BENCH_FONTS);
  const QGuiApplication application(argc, argv);
  const int status = run(arguments);
  return Task::endAll(std::chrono::seconds(10)) ? status : 1;
}
