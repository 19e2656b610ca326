#include "recognition/SpecimenKinds.h"
#include "recognition/Specimens.h"

namespace lumiwren::bench {
namespace {

const QString harbour = QStringLiteral(
    "The ferry leaves at 6:20 from the north quay and needs an hour and a half. Bicycles go on the lower "
    "deck; "
    "dogs travel free of charge. If the wind rises above force eight, the crossing is cancelled and tickets "
    "stay valid until the end of the month.");
const QString kitchen = QStringLiteral(
    "Peel two onions, cut them small and let them sweat in butter for ten minutes. Add 350 g of lentils, a "
    "bay "
    "leaf and 1.2 litres of stock, then simmer everything for 40 minutes. Vinegar, never more than a "
    "spoonful, "
    "goes in at the very end.");
const QString contract = QStringLiteral(
    "The tenant shall return all keys on the last day of the agreement. Deposits of up to three monthly "
    "rents "
    "(section 12) are repaid within six weeks, less the cost of repairs. Oral side agreements are void.");
const QString astronomy = QStringLiteral(
    "Jupiter turns once in less than ten hours, so fast that it bulges at its equator. Its four large moons "
    "were first seen in January 1610. Through a small telescope they are bright points in a row, which "
    "change "
    "places from night to night.");
const QString guests = QStringLiteral(
    "Table 4 is for Jürgen Böhm, Käthe Schröder and Mr O'Brien; the Müllers sit with Zoë and André at number "
    "9. "
    "Please put the vegetarian menu in front of François, who arrives late from Düsseldorf.");
const QString wetter = QStringLiteral(
    "Am Vormittag löst sich der Nebel zögernd auf, später scheint häufig die Sonne. Die Höchstwerte liegen "
    "zwischen 7 Grad in der Lüneburger Heide und 13 Grad am Bodensee. In der Nacht kühlt es auf Werte um den "
    "Gefrierpunkt ab, örtlich wird es glatt.");
const QString bahn = QStringLiteral(
    "Der Zug nach Hannover hat heute etwa 25 Minuten Aufenthalt im Bahnhof. Reisende nach Bremen steigen "
    "bitte "
    "am selben Gleis um. Getränke gibt es im mittleren Wagen.");
const QString pogoda = QStringLiteral(
    "Утром в горах ожидается густой туман, днём небольшой дождь. Ветер слабый, температура воздуха около "
    "девяти "
    "градусов. Водителей просят соблюдать осторожность на дорогах.");
const QStringList rust{
    QStringLiteral("fn parse(input: &str) -> Result<Vec<u32>, Error> {"),
    QStringLiteral("    let mut values = Vec::with_capacity(16);"),
    QStringLiteral("    for (row, part) in input.split(',').enumerate() {"),
    QStringLiteral("        match part.trim().parse::<u32>() {"),
    QStringLiteral("            Ok(value) if value < 1_000 => values.push(value),"),
    QStringLiteral("            _ => return Err(Error::Invalid { row }),"),
    QStringLiteral("        }"),
    QStringLiteral("    }"),
    QStringLiteral("    Ok(values)"),
    QStringLiteral("}"),
};
const QStringList query{
    QStringLiteral("SELECT c.name, COUNT(*) AS orders, SUM(o.total)"),
    QStringLiteral("FROM customers c"),
    QStringLiteral("JOIN orders o ON o.customer_id = c.id"),
    QStringLiteral("WHERE o.created_at >= '2023-07-01'"),
    QStringLiteral("  AND c.country IN ('NL', 'PT', 'FI')"),
    QStringLiteral("GROUP BY c.name HAVING SUM(o.total) > 250.00"),
    QStringLiteral("ORDER BY 3 DESC LIMIT 20;"),
};
const QStringList log{
    QStringLiteral("2024-11-03 22:14:07 INFO  listening on 0.0.0.0:9090"),
    QStringLiteral("2024-11-03 22:14:09 WARN  cache is 87% full, dropping 312 entries"),
    QStringLiteral("2024-11-03 22:15:41 ERROR upload failed: connection reset by peer"),
    QStringLiteral("2024-11-03 22:15:41 INFO  retrying in 5 s (attempt 2 of 6)"),
    QStringLiteral("2024-11-03 22:15:46 INFO  upload finished, 18.4 MB in 0.9 s"),
};
const std::vector<std::vector<QString>> league{
    {QStringLiteral("Club"), QStringLiteral("Played"), QStringLiteral("Goals"), QStringLiteral("Points")},
    {QStringLiteral("Rovers"), QStringLiteral("14"), QStringLiteral("31:12"), QStringLiteral("33")},
    {QStringLiteral("United North"), QStringLiteral("14"), QStringLiteral("27:15"), QStringLiteral("29")},
    {QStringLiteral("Harbour FC"), QStringLiteral("13"), QStringLiteral("22:20"), QStringLiteral("20")},
    {QStringLiteral("Old Mill"), QStringLiteral("14"), QStringLiteral("9:38"), QStringLiteral("6")},
};

const Look paper{QColor(0xf4, 0xee, 0xdc), QColor(0x3b, 0x2f, 0x22)};
const Look snow{QColor(0xfa, 0xfa, 0xfc), QColor(0x2e, 0x34, 0x40)};
const Look night{QColor(0x0d, 0x11, 0x17), QColor(0xc9, 0xd1, 0xd9)};
const Look forest{QColor(0x12, 0x3a, 0x2a), QColor(0xdd, 0xee, 0xcc)};
const Look amber{QColor(0x14, 0x10, 0x08), QColor(0xff, 0xb0, 0x20)};
const Look rose{QColor(0xff, 0xe4, 0xea), QColor(0x90, 0x10, 0x40)};
const Look teal{QColor(0x00, 0x6d, 0x77), QColor(0xff, 0xff, 0xff)};
const Look pale{QColor(0xf2, 0xf2, 0xf2), QColor(0x84, 0x84, 0x90)};

const QString dejavuSerif = QStringLiteral("DejaVu Serif");
const QString narrow = QStringLiteral("Liberation Sans Narrow");
const QString display = QStringLiteral("Noto Sans Display");
const QString serifDisplay = QStringLiteral("Noto Serif Display");
const QString mono = QStringLiteral("DejaVu Sans Mono");
const QString liberationMono = QStringLiteral("Liberation Mono");

constexpr auto subpixel = SpecimenCanvas::Smoothing::Subpixel;

}  // namespace

std::vector<Specimen> heldOutSpecimens() {
  const std::string group = "held out";
  return {
      {"11-dejavuserif-snow", group, "eng", paragraph(harbour, dejavuSerif, 11, snow)},
      {"11-display-night", group, "eng", paragraph(kitchen, display, 11, night)},
      {"12-dejavuserif-paper", group, "eng", paragraph(contract, dejavuSerif, 12, paper)},
      {"12-display-forest", group, "eng", paragraph(astronomy, display, 12, forest)},
      {"13-serifdisplay-snow", group, "eng", paragraph(harbour, serifDisplay, 13, snow)},
      {"13-dejavuserif-teal", group, "eng", paragraph(kitchen, dejavuSerif, 13, teal)},
      {"14-narrow-rose", group, "eng", paragraph(contract, narrow, 14, rose)},
      {"15-narrow-night", group, "eng", paragraph(astronomy, narrow, 15, night)},
      {"17-serifdisplay-paper", group, "eng", paragraph(kitchen, serifDisplay, 17, paper)},
      {"13-display-pale", group, "eng", paragraph(harbour, display, 13, pale)},
      {"13-guests-display", group, "eng", paragraph(guests, display, 13, snow)},
      {"12-lcd-dejavuserif", group, "eng", paragraph(astronomy, dejavuSerif, 12, snow, 1, subpixel)},
      {"12-rust-night", group, "eng", lines(rust, mono, 12, night)},
      {"14-query-snow", group, "eng", lines(query, liberationMono, 14, snow)},
      {"12-log-amber", group, "eng", lines(log, mono, 12, amber)},
      {"13-league-paper", group, "eng", table(league, dejavuSerif, 13, paper, true)},
      {"12-columns-rose", group, "eng", columns(harbour, contract, dejavuSerif, 12, rose)},
      {"12-dejavuserif-night-2x", group, "eng", paragraph(kitchen, dejavuSerif, 12, night, 2)},
      {"12-wetter-dejavuserif", group, "deu", paragraph(wetter, dejavuSerif, 12, paper)},
      {"13-bahn-display", group, "deu", paragraph(bahn, display, 13, forest)},
      {"13-pogoda-dejavuserif", group, "rus", paragraph(pogoda, dejavuSerif, 13, snow)},
  };
}

}  // namespace lumiwren::bench
