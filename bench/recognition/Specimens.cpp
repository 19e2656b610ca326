#include "recognition/Specimens.h"

#include "recognition/SpecimenKinds.h"

#include <QStringList>

#include <utility>

namespace lumiwren::bench {
namespace {

// -- what is written
// -------------------------------------------------------------------------------------------

const QString release = QStringLiteral(
    "The new release reads its settings once, when it starts, and writes them back only after a change. "
    "Files larger than 64 MB are opened in the background (see chapter 7), so typing stays smooth. Please "
    "report problems to support@example.org or call +49 30 901820.");
const QString meeting = QStringLiteral(
    "Hi Julia, can we move Thursday's review from 9:30 to 11:15? Room B-204 is free until noon, and Piotr's "
    "train arrives at 10:52. I'll bring the Q3 numbers: revenue is up 12.5%, costs are down by $48,300. "
    "Thanks!");
const QString physics = QStringLiteral(
    "When a wave meets a gap of roughly its own length, it spreads out behind it in every direction. Light "
    "does so, too, but its waves are so short (0.4 to 0.7 micrometres) that we rarely notice. That is why "
    "shadows look sharp although, strictly speaking, they are not.");
const QString garden = QStringLiteral(
    "Early in March the old gardener would walk slowly along the wall, touching each pear tree as if it were "
    "an animal that had to be woken with care. \"Not yet,\" he used to say; \"the frost is only hiding.\" "
    "Nobody contradicted him, for he had been right in all the years that anyone could remember.");
const QString privacy = QStringLiteral(
    "We keep your e-mail address, the date of your last visit and nothing else. You may ask for a copy, or "
    "have "
    "everything deleted, at any time. Section 4 explains which partners receive anonymous totals.");
const QString german = QStringLiteral(
    "Übermäßig große Dateien öffnet das Programm im Hintergrund, damit Eingaben flüssig bleiben. Prüfen Sie "
    "vor der Änderung, ob alle Geräte ausgeschaltet sind; für Schäden übernehmen wir keine Gewähr. "
    "Rückfragen "
    "beantwortet Frau Schröder täglich von 8 bis 12 Uhr in Zimmer 17.");
const QString germanMail = QStringLiteral(
    "Sehr geehrter Herr Müller, vielen Dank für Ihre Bestellung vom 3. März. Die Lieferung verzögert sich "
    "leider um zwei Tage, weil ein Teil noch geprüft werden muss. Mit freundlichen Grüßen, Jörg Weiß");
const QString russian = QStringLiteral(
    "Программа читает настройки один раз при запуске и записывает их только после изменения. Большие файлы "
    "открываются в фоновом режиме, поэтому набор текста не замедляется. Если что-то пошло не так, напишите "
    "нам, и мы ответим в течение двух дней.");
const QString russianNews = QStringLiteral(
    "Вчера вечером в городе открылась новая библиотека. В ней три читальных зала и небольшое кафе с видом на "
    "реку. Записаться можно бесплатно, нужен только паспорт.");
const QStringList japanese{
    QStringLiteral("新しい設定は、再起動した後に有効になります。"),
    QStringLiteral("大きなファイルを開くときは、少し時間がかかります。"),
    QStringLiteral("質問がある場合は、サポートまでご連絡ください。"),
    QStringLiteral("毎週月曜日の午前中に、自動で保存されます。"),
};
const QStringList japaneseNotice{
    QStringLiteral("お知らせ"),
    QStringLiteral("来週の会議は水曜日の午後三時に変更になりました。"),
    QStringLiteral("場所は二階の大会議室です。"),
    QStringLiteral("資料は事前にメールで送ります。"),
};
const QStringList python{
    QStringLiteral("def load(path, limit=4096):"),
    QStringLiteral("    \"\"\"Returns the first lines of a file.\"\"\""),
    QStringLiteral("    with open(path, encoding=\"utf-8\") as file:"),
    QStringLiteral("        lines = [line.rstrip() for line in file]"),
    QStringLiteral("    if not lines or len(lines) > limit:"),
    QStringLiteral("        raise ValueError(f\"{path}: {len(lines)} lines\")"),
    QStringLiteral("    return {i: s for i, s in enumerate(lines, 1)}"),
};
const QStringList cpp{
    QStringLiteral("template <typename T>"),
    QStringLiteral("T *find(std::vector<T> &list, const Key &key) {"),
    QStringLiteral("  for (std::size_t i = 0; i < list.size(); ++i) {"),
    QStringLiteral("    if (list[i].key == key && !list[i].hidden) {"),
    QStringLiteral("      return &list[i];  // the first one wins"),
    QStringLiteral("    }"),
    QStringLiteral("  }"),
    QStringLiteral("  return nullptr;"),
    QStringLiteral("}"),
};
const QStringList json{
    QStringLiteral("{"),
    QStringLiteral("  \"name\": \"north-station\","),
    QStringLiteral("  \"enabled\": true,"),
    QStringLiteral("  \"ports\": [8080, 8443],"),
    QStringLiteral("  \"retry\": {\"count\": 3, \"delay_ms\": 250},"),
    QStringLiteral("  \"owner\": null"),
    QStringLiteral("}"),
};
const QStringList shell{
    QStringLiteral("$ tar -xzf backup-2024-05-17.tar.gz -C /srv/data"),
    QStringLiteral("$ du -sh /srv/data/* | sort -rh | head -n 3"),
    QStringLiteral("1.9G    /srv/data/images"),
    QStringLiteral("640M    /srv/data/mail"),
    QStringLiteral("12K     /srv/data/README.txt"),
    QStringLiteral("$ grep -c \"error\" /var/log/syslog && echo done"),
    QStringLiteral("27"),
    QStringLiteral("done"),
};
const std::vector<std::vector<QString>> stock{
    {QStringLiteral("Item"), QStringLiteral("Quantity"), QStringLiteral("Price"), QStringLiteral("Total")},
    {QStringLiteral("Copper wire"), QStringLiteral("120"), QStringLiteral("0.85"), QStringLiteral("102.00")},
    {QStringLiteral("Switch, black"), QStringLiteral("16"), QStringLiteral("4.20"), QStringLiteral("67.20")},
    {QStringLiteral("Junction box"), QStringLiteral("9"), QStringLiteral("12.50"), QStringLiteral("112.50")},
    {QStringLiteral("Cable ties"), QStringLiteral("400"), QStringLiteral("0.03"), QStringLiteral("12.00")},
    {QStringLiteral("Fuse 16 A"), QStringLiteral("25"), QStringLiteral("1.10"), QStringLiteral("27.50")},
};

// -- how it looks
// ----------------------------------------------------------------------------------------------

const Look light{QColor(0xff, 0xff, 0xff), QColor(0x1a, 0x1a, 0x1a)};
const Look grey{QColor(0xef, 0xf0, 0xf1), QColor(0x23, 0x26, 0x29)};
const Look faint{QColor(0xff, 0xff, 0xff), QColor(0x8a, 0x8f, 0x94)};
const Look dark{QColor(0x1e, 0x1e, 0x1e), QColor(0xd4, 0xd4, 0xd4)};
const Look slate{QColor(0x2b, 0x30, 0x3b), QColor(0xc0, 0xc5, 0xce)};
const Look redOnBlue{QColor(0x10, 0x18, 0x60), QColor(0xff, 0x50, 0x40)};
const Look greenOnRed{QColor(0xa0, 0x20, 0x20), QColor(0x60, 0xe0, 0x60)};
const Look yellowOnWhite{QColor(0xff, 0xff, 0xff), QColor(0xc8, 0xa0, 0x00)};
const Look blueOnCream{QColor(0xfd, 0xf6, 0xe3), QColor(0x26, 0x8b, 0xd2)};
const Look whiteOnPurple{QColor(0x6b, 0x4f, 0xc8), QColor(0xff, 0xff, 0xff)};
const Look blackOnOrange{QColor(0xff, 0x90, 0x20), QColor(0x10, 0x10, 0x10)};

const QString dejavu = QStringLiteral("DejaVu Sans");
const QString noto = QStringLiteral("Noto Sans");
const QString liberation = QStringLiteral("Liberation Sans");
const QString notoSerif = QStringLiteral("Noto Serif");
const QString liberationSerif = QStringLiteral("Liberation Serif");
const QString dejavuMono = QStringLiteral("DejaVu Sans Mono");
const QString liberationMono = QStringLiteral("Liberation Mono");
const QString notoJapanese = QStringLiteral("Noto Sans CJK JP");

// -- what it is drawn as
// ---------------------------------------------------------------------------------------

constexpr auto subpixel = SpecimenCanvas::Smoothing::Subpixel;

Draw dialog(const QString &family, int size, bool isDark) {
  return [=] {
    const Look body = isDark ? Look{QColor(0x35, 0x35, 0x35), QColor(0xee, 0xee, 0xee)} : grey;
    SpecimenCanvas canvas(420, 170, 1, body.ground);
    canvas.fill(0, 0, 420, 28, isDark ? QColor(0x22, 0x22, 0x22) : QColor(0xd8, 0xdb, 0xde));
    canvas.setInk(body.ink);
    canvas.setFont(family, size, QFont::Bold);
    canvas.centered(0, 0, 420, 28, QStringLiteral("Save changes"));
    canvas.setFont(family, size);
    canvas.paragraph(
        20, 44, 380,
        QStringLiteral("The document \"Budget 2025.ods\" has been modified. Do you want to save your "
                       "changes or discard them? This cannot be undone."));
    canvas.frame(84, 126, 100, 28, QColor(0x80, 0x80, 0x80), 4);
    canvas.centered(84, 126, 100, 28, QStringLiteral("Don't Save"));
    canvas.frame(194, 126, 100, 28, QColor(0x80, 0x80, 0x80), 4);
    canvas.centered(194, 126, 100, 28, QStringLiteral("Cancel"), true);
    canvas.fill(304, 126, 100, 28, QColor(0x2a, 0x6f, 0xd6), 4);
    canvas.setInk(Qt::white);
    canvas.centered(304, 126, 100, 28, QStringLiteral("Save"), true);
    return canvas;
  };
}

/// A dark bar above a light page, with a line that is selected.
Draw mixedPage(const QString &family, int size) {
  return [=] {
    SpecimenCanvas canvas(520, 230, 1, Qt::white);
    canvas.fill(0, 0, 520, 36, QColor(0x24, 0x29, 0x2e));
    canvas.setFont(family, size, QFont::Bold);
    canvas.setInk(Qt::white);
    canvas.text(16, 10, QStringLiteral("Projects"));
    canvas.text(120, 10, QStringLiteral("Calendar"), true);
    canvas.text(226, 10, QStringLiteral("Messages (3)"), true);
    canvas.setFont(family, size);
    canvas.setInk(QColor(0x20, 0x20, 0x20));
    int y = canvas.paragraph(16, 52, 480, privacy) + 6;
    canvas.fill(0, y, 520, canvas.lineHeight() + 6, QColor(0x30, 0x78, 0xe0));
    canvas.setInk(Qt::white);
    canvas.text(16, y + 4, QStringLiteral("Download a copy of my data"));
    canvas.setInk(QColor(0x20, 0x20, 0x20));
    y += canvas.lineHeight() + 10;
    canvas.text(16, y + 4, QStringLiteral("Delete my account for ever"));
    return canvas;
  };
}

/// An editor with a dark sidebar beside a light text.
Draw sidebar(const QString &family, int size) {
  return [=] {
    SpecimenCanvas canvas(600, 200, 1, Qt::white);
    canvas.fill(0, 0, 150, 200, QColor(0x2d, 0x2a, 0x3e));
    canvas.setFont(family, size);
    canvas.setInk(QColor(0xe6, 0xe0, 0xff));
    int y = 14;
    for (const auto *const entry : {"Inbox", "Starred", "Sent mail", "Drafts", "Archive", "Spam folder"}) {
      canvas.text(16, y, QString::fromLatin1(entry));
      y += 28;
    }
    canvas.setInk(QColor(0x20, 0x20, 0x20));
    canvas.paragraph(174, 14, 410, meeting);
    return canvas;
  };
}

Draw terminal(const QString &family, int size, int scale = 1) {
  return [=] {
    SpecimenCanvas canvas(size * 36, size * 14, scale, QColor(0x30, 0x0a, 0x24));
    canvas.setFont(family, size);
    int y = size / 2;
    for (const auto &line : shell) {
      canvas.setInk(line.startsWith(u'$') ? QColor(0x8a, 0xe2, 0x34) : QColor(0xee, 0xee, 0xec));
      canvas.text(size / 2, y, line);
      y += canvas.lineHeight();
    }
    return canvas;
  };
}

/// Code in the colours of an editor.
Draw colouredCode(const QString &family, int size, bool isDark) {
  return [=] {
    struct Span {
      int column;
      const char *text;
      QColor ink;
    };
    const QColor plain = isDark ? QColor(0xd4, 0xd4, 0xd4) : QColor(0x24, 0x29, 0x2f);
    const QColor word = isDark ? QColor(0x56, 0x9c, 0xd6) : QColor(0xcf, 0x22, 0x2e);
    const QColor string = isDark ? QColor(0xce, 0x91, 0x78) : QColor(0x0a, 0x30, 0x69);
    const QColor note = isDark ? QColor(0x6a, 0x99, 0x55) : QColor(0x6e, 0x77, 0x81);
    const std::vector<std::vector<Span>> rows{
        {{0, "// Writes the report and returns its size.", note}},
        {{0, "async function", word}, {15, "writeReport(path, rows) {", plain}},
        {{2, "const", word}, {8, "header =", plain}, {17, "\"id;name;total\";", string}},
        {{2, "let", word},
         {6, "body = rows.map((r) => r.join(", plain},
         {36, "\";\"", string},
         {39, "));", plain}},
        {{2, "if", word}, {5, "(rows.length === 0) {", plain}},
        {{4, "throw new", word},
         {14, "Error(", plain},
         {20, "\"nothing to write\"", string},
         {38, ");", plain}},
        {{2, "}", plain}},
        {{2, "return await", word}, {15, "save(path, [header, ...body]);", plain}},
        {{0, "}", plain}},
    };
    SpecimenCanvas canvas(size * 34, size * 17, 1, isDark ? dark.ground : light.ground);
    canvas.setFont(family, size);
    int y = size;
    for (const auto &spans : rows) {
      for (const auto &span : spans) {
        canvas.setInk(span.ink);
        // The letters stand in cells, so that no gap shows where colours change.
        canvas.cell(size, y, span.column, QString::fromLatin1(span.text),
                    span.column != spans.front().column);
      }
      y += canvas.lineHeight();
    }
    return canvas;
  };
}

/// Buttons in strong colours, and two labels on shaded ground.
Draw buttons(const QString &family, int size) {
  return [=] {
    SpecimenCanvas canvas(480, 150, 1, QColor(0xf6, 0xf6, 0xf6));
    canvas.setFont(family, size);
    canvas.setInk(QColor(0x33, 0x33, 0x33));
    canvas.text(20, 12, QStringLiteral("Choose what happens with unused accounts:"));
    const struct {
      const char *text;
      QColor ground;
      QColor ink;
    } all[] = {{"Keep them", QColor(0x2e, 0x8b, 0x57), Qt::white},
               {"Warn first", QColor(0xf0, 0xad, 0x4e), Qt::black},
               {"Delete now", QColor(0xd9, 0x30, 0x25), Qt::white}};
    int x = 20;
    for (const auto &each : all) {
      canvas.fill(x, 44, 130, 32, each.ground, 6);
      canvas.setInk(each.ink);
      canvas.centered(x, 44, 130, 32, QString::fromLatin1(each.text), x > 20);
      x += 150;
    }
    canvas.shade(0, 94, 480, 56, QColor(0x5a, 0x6e, 0x8c), QColor(0x28, 0x38, 0x50));
    canvas.setInk(Qt::white);
    canvas.text(20, 102, QStringLiteral("Signed in as marta.lindqvist"));
    canvas.setInk(QColor(0xc8, 0xd4, 0xe8));
    canvas.text(20, 124, QStringLiteral("Last backup: yesterday at 18:45"));
    return canvas;
  };
}

}  // namespace

std::vector<Specimen> specimens() {
  return {
      // Small text, the hardest of all.
      {"11-dejavu-light", "11 px", "eng", paragraph(release, dejavu, 11, light)},
      {"11-dejavu-dark", "11 px", "eng", paragraph(meeting, dejavu, 11, dark)},
      {"11-noto-light", "11 px", "eng", paragraph(physics, noto, 11, light)},
      {"11-noto-slate", "11 px", "eng", paragraph(privacy, noto, 11, slate)},
      {"11-liberation-grey", "11 px", "eng", paragraph(meeting, liberation, 11, grey)},
      {"11-notoserif-light", "11 px", "eng", paragraph(garden, notoSerif, 11, light)},
      {"11-liberationserif-dark", "11 px", "eng", paragraph(release, liberationSerif, 11, dark)},
      {"11-mono-python-light", "11 px", "eng", lines(python, dejavuMono, 11, light)},
      {"11-mono-cpp-dark", "11 px", "eng", lines(cpp, dejavuMono, 11, dark)},
      {"11-table-light", "11 px", "eng", table(stock, noto, 11, light, false)},
      {"11-lcd-dejavu-light", "11 px", "eng", paragraph(physics, dejavu, 11, light, 1, subpixel)},
      {"11-german-noto-light", "11 px", "deu", paragraph(german, noto, 11, light)},
      // Running text as most of it is.
      {"12-dejavu-dark", "text", "eng", paragraph(privacy, dejavu, 12, dark)},
      {"12-noto-light", "text", "eng", paragraph(meeting, noto, 12, light)},
      {"12-liberation-light", "text", "eng", paragraph(garden, liberation, 12, light)},
      {"13-dejavu-light", "text", "eng", paragraph(physics, dejavu, 13, light)},
      {"13-noto-dark", "text", "eng", paragraph(release, noto, 13, dark)},
      {"13-liberation-slate", "text", "eng", paragraph(meeting, liberation, 13, slate)},
      {"13-notoserif-light", "text", "eng", paragraph(privacy, notoSerif, 13, light)},
      {"14-liberationserif-grey", "text", "eng", paragraph(garden, liberationSerif, 14, grey)},
      {"14-noto-light", "text", "eng", paragraph(release, noto, 14, light)},
      {"16-dejavu-light", "text", "eng", paragraph(meeting, dejavu, 16, light)},
      {"16-notoserif-dark", "text", "eng", paragraph(physics, notoSerif, 16, dark)},
      // Code.
      {"12-mono-cpp-light", "code", "eng", lines(cpp, liberationMono, 12, light)},
      {"13-mono-json-dark", "code", "eng", lines(json, dejavuMono, 13, dark)},
      {"13-mono-python-grey", "code", "eng", lines(python, liberationMono, 13, grey)},
      {"14-mono-cpp-dark", "code", "eng", lines(cpp, dejavuMono, 14, dark)},
      {"13-coloured-code-dark", "code", "eng", colouredCode(dejavuMono, 13, true)},
      {"13-coloured-code-light", "code", "eng", colouredCode(dejavuMono, 13, false)},
      {"13-terminal", "code", "eng", terminal(dejavuMono, 13)},
      {"12-terminal-liberation", "code", "eng", terminal(liberationMono, 12)},
      // Layouts.
      {"13-table-grid", "layout", "eng", table(stock, noto, 13, light, true)},
      {"13-table-dark", "layout", "eng", table(stock, dejavu, 13, dark, false)},
      {"13-columns-light", "layout", "eng", columns(physics, garden, noto, 13, light)},
      {"12-columns-serif-dark", "layout", "eng", columns(physics, garden, notoSerif, 12, dark)},
      {"13-dialog-light", "layout", "eng", dialog(noto, 13, false)},
      {"13-dialog-dark", "layout", "eng", dialog(dejavu, 12, true)},
      {"13-mixed-page", "layout", "eng", mixedPage(noto, 13)},
      {"12-mixed-page-liberation", "layout", "eng", mixedPage(liberation, 12)},
      {"13-sidebar", "layout", "eng", sidebar(noto, 13)},
      {"13-buttons", "layout", "eng", buttons(noto, 13)},
      // Colours.
      {"13-red-on-blue", "colour", "eng", paragraph(privacy, noto, 13, redOnBlue)},
      {"13-green-on-red", "colour", "eng", paragraph(release, dejavu, 13, greenOnRed)},
      {"13-yellow-on-white", "colour", "eng", paragraph(meeting, noto, 13, yellowOnWhite)},
      {"12-blue-on-cream", "colour", "eng", paragraph(physics, dejavu, 12, blueOnCream)},
      {"13-white-on-purple", "colour", "eng", paragraph(privacy, liberation, 13, whiteOnPurple)},
      {"12-black-on-orange", "colour", "eng", paragraph(garden, noto, 12, blackOnOrange)},
      {"12-faint", "colour", "eng", paragraph(release, noto, 12, faint)},
      // Subpixel rendering.
      {"12-lcd-noto-light", "subpixel", "eng", paragraph(garden, noto, 12, light, 1, subpixel)},
      {"13-lcd-liberation-dark", "subpixel", "eng", paragraph(privacy, liberation, 13, dark, 1, subpixel)},
      {"13-lcd-mono-light", "subpixel", "eng", lines(cpp, dejavuMono, 13, light, 1, subpixel)},
      // Two pixels for each point.
      {"11-dejavu-light-2x", "scale 2", "eng", paragraph(release, dejavu, 11, light, 2)},
      {"13-noto-dark-2x", "scale 2", "eng", paragraph(meeting, noto, 13, dark, 2)},
      {"13-terminal-2x", "scale 2", "eng", terminal(dejavuMono, 13, 2)},
      {"16-notoserif-light-2x", "scale 2", "eng", paragraph(garden, notoSerif, 16, light, 2)},
      // Other languages.
      {"13-german-dejavu-light", "languages", "deu", paragraph(german, dejavu, 13, light)},
      {"12-german-noto-dark", "languages", "deu", paragraph(germanMail, noto, 12, dark)},
      {"13-russian-noto-light", "languages", "rus", paragraph(russian, noto, 13, light)},
      {"12-russian-dejavu-dark", "languages", "rus", paragraph(russianNews, dejavu, 12, dark)},
      {"14-japanese-light", "languages", "jpn", lines(japanese, notoJapanese, 14, light)},
      {"16-japanese-dark", "languages", "jpn", lines(japaneseNotice, notoJapanese, 16, dark)},
      {"13-japanese-2x", "languages", "jpn", lines(japanese, notoJapanese, 13, light, 2)},
  };
}

}  // namespace lumiwren::bench
