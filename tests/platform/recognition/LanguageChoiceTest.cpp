#include "platform/linux/recognition/LanguageChoice.h"

#include <gtest/gtest.h>

#include <cstdlib>

namespace lumiwren {

void PrintTo(const LanguageSet &set, std::ostream *stream) {
  *stream << set.languages << (set.isForAccents ? " (accents)" : "");
}

namespace {

using Sets = std::vector<LanguageSet>;

TEST(LanguageChoice, IsNoneWithoutData) {
  EXPECT_EQ(languageSets({}, {"de_DE.UTF-8"}), Sets{});
  EXPECT_EQ(languageSets({"osd", "equ", "jpn_vert"}, {}), Sets{});
}

TEST(LanguageChoice, LeadsWithEnglish) {
  EXPECT_EQ(languageSets({"osd", "rus", "eng"}, {"ru_RU.UTF-8"}), (Sets{{"eng"}, {"rus"}}));
}

TEST(LanguageChoice, JoinsLanguagesOfOneScriptAndPutsAccentsBehind) {
  EXPECT_EQ(languageSets({"deu", "eng", "jpn"}, {}), (Sets{{"eng"}, {"deu+eng", true}, {"jpn"}}));
}

TEST(LanguageChoice, PrefersTheLanguagesOfTheUser) {
  EXPECT_EQ(languageSets({"ces", "deu", "eng", "fra", "spa", "ukr", "rus"}, {"es_MX", "de", "uk_UA.UTF-8"}),
            (Sets{{"eng"}, {"spa+deu+eng", true}, {"ukr+rus"}}));
}

TEST(LanguageChoice, DoesWithoutEnglish) {
  EXPECT_EQ(languageSets({"deu", "fra"}, {"fr_FR"}), (Sets{{"fra+deu"}}));
  EXPECT_EQ(languageSets({"jpn"}, {}), (Sets{{"jpn"}}));
}

TEST(LanguageChoice, TellsScriptsOfOneLanguageApart) {
  EXPECT_EQ(languageSets({"chi_sim", "chi_tra", "eng"}, {"zh_TW.UTF-8"}),
            (Sets{{"eng"}, {"chi_tra"}, {"chi_sim"}}));
  EXPECT_EQ(languageSets({"srp", "srp_latn", "eng"}, {"sr_RS.UTF-8@latin"}),
            (Sets{{"eng"}, {"srp_latn+eng", true}, {"srp"}}));
}

TEST(LanguageChoice, TakesUnknownDataForAScriptOfItsOwn) {
  EXPECT_EQ(languageSets({"eng", "tlh"}, {}), (Sets{{"eng"}, {"tlh"}}));
}

TEST(LanguageChoice, IsNeverEndless) {
  EXPECT_LE(languageSets(
                {"eng", "deu", "ara", "ben", "chr", "ell", "heb", "hin", "jpn", "kat", "kor", "lao", "rus"},
                {"ko_KR"})
                .size(),
            8U);
}

}  // namespace
}  // namespace lumiwren
