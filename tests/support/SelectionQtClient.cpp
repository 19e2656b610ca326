// selection_qt_client own text|image | show: the clipboard of a Qt application.
//   own   puts a text and rich text, or a picture, there and prints "ready"
//   show  prints each type with its size and digest

#include <QClipboard>
#include <QCryptographicHash>
#include <QGuiApplication>
#include <QImage>
#include <QMimeData>
#include <QTextStream>

int main(int argc, char **argv) {
  const QGuiApplication application(argc, argv);
  const auto arguments = QGuiApplication::arguments();
  QTextStream out(stdout);
  auto *const clipboard = QGuiApplication::clipboard();
  if (arguments.value(1) == QLatin1String("own")) {
    auto *const data = new QMimeData;
    if (arguments.value(2) == QLatin1String("text")) {
      data->setText(QStringLiteral("grün and 日本語"));
      data->setHtml(QStringLiteral("<b>grün</b> and 日本語"));
    } else {
      QImage image(400, 300, QImage::Format_RGB32);
      for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
          image.setPixel(x, y, qRgb(x * 7 + y, x ^ (y * 13), x * y));
        }
      }
      data->setImageData(image);
    }
    clipboard->setMimeData(data);
    out << "ready\n" << Qt::flush;
    return QGuiApplication::exec();
  }
  const auto *const data = clipboard->mimeData();
  for (const auto &format : data->formats()) {
    if (format == format.toUpper()) {
      continue;  // Targets that describe the transfer; media types have small letters.
    }
    const auto bytes = data->data(format);
    out << format << ' ' << bytes.size() << ' '
        << QCryptographicHash::hash(bytes, QCryptographicHash::Sha256).toHex() << '\n';
  }
  return 0;
}
