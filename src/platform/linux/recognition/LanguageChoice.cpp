#include "platform/linux/recognition/LanguageChoice.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdlib>
#include <iterator>
#include <sstream>
#include <tuple>
#include <utility>

namespace lumiwren {
namespace {

struct Language {
  std::string_view data;    // as Tesseract names it
  std::string_view locale;  // as locales name it; empty where none does
  std::string_view script;
};

constexpr std::string_view latin = "Latin";
constexpr std::string_view english = "eng";

/// Every language that Debian has data for; what is not listed is a script of its own.
constexpr std::array knownLanguages{
    Language{"afr", "af", latin},
    Language{"amh", "am", "Ethiopic"},
    Language{"ara", "ar", "Arabic"},
    Language{"asm", "as", "Bengali"},
    Language{"aze", "az", latin},
    Language{"aze_cyrl", "az", "Cyrillic"},
    Language{"bel", "be", "Cyrillic"},
    Language{"ben", "bn", "Bengali"},
    Language{"bod", "bo", "Tibetan"},
    Language{"bos", "bs", latin},
    Language{"bre", "br", latin},
    Language{"bul", "bg", "Cyrillic"},
    Language{"cat", "ca", latin},
    Language{"ceb", "ceb", latin},
    Language{"ces", "cs", latin},
    Language{"chi_sim", "zh_CN", "Chinese, simplified"},
    Language{"chi_tra", "zh_TW", "Chinese, traditional"},
    Language{"chr", "chr", "Cherokee"},
    Language{"cos", "co", latin},
    Language{"cym", "cy", latin},
    Language{"dan", "da", latin},
    Language{"deu", "de", latin},
    Language{"div", "dv", "Thaana"},
    Language{"dzo", "dz", "Tibetan"},
    Language{"ell", "el", "Greek"},
    Language{"eng", "en", latin},
    Language{"enm", "", latin},
    Language{"epo", "eo", latin},
    Language{"est", "et", latin},
    Language{"eus", "eu", latin},
    Language{"fao", "fo", latin},
    Language{"fas", "fa", "Arabic"},
    Language{"fil", "fil", latin},
    Language{"fin", "fi", latin},
    Language{"fra", "fr", latin},
    Language{"frk", "", latin},
    Language{"frm", "", latin},
    Language{"fry", "fy", latin},
    Language{"gla", "gd", latin},
    Language{"gle", "ga", latin},
    Language{"glg", "gl", latin},
    Language{"grc", "", "Greek"},
    Language{"guj", "gu", "Gujarati"},
    Language{"hat", "ht", latin},
    Language{"heb", "he", "Hebrew"},
    Language{"hin", "hi", "Devanagari"},
    Language{"hrv", "hr", latin},
    Language{"hun", "hu", latin},
    Language{"hye", "hy", "Armenian"},
    Language{"iku", "iu", "Canadian Aboriginal"},
    Language{"ind", "id", latin},
    Language{"isl", "is", latin},
    Language{"ita", "it", latin},
    Language{"ita_old", "", latin},
    Language{"jav", "jv", latin},
    Language{"jpn", "ja", "Japanese"},
    Language{"kan", "kn", "Kannada"},
    Language{"kat", "ka", "Georgian"},
    Language{"kat_old", "", "Georgian"},
    Language{"kaz", "kk", "Cyrillic"},
    Language{"khm", "km", "Khmer"},
    Language{"kir", "ky", "Cyrillic"},
    Language{"kmr", "ku", latin},
    Language{"kor", "ko", "Hangul"},
    Language{"lao", "lo", "Lao"},
    Language{"lat", "la", latin},
    Language{"lav", "lv", latin},
    Language{"lit", "lt", latin},
    Language{"ltz", "lb", latin},
    Language{"mal", "ml", "Malayalam"},
    Language{"mar", "mr", "Devanagari"},
    Language{"mkd", "mk", "Cyrillic"},
    Language{"mlt", "mt", latin},
    Language{"mon", "mn", "Cyrillic"},
    Language{"mri", "mi", latin},
    Language{"msa", "ms", latin},
    Language{"mya", "my", "Myanmar"},
    Language{"nep", "ne", "Devanagari"},
    Language{"nld", "nl", latin},
    Language{"nor", "nb", latin},
    Language{"oci", "oc", latin},
    Language{"ori", "or", "Oriya"},
    Language{"pan", "pa", "Gurmukhi"},
    Language{"pol", "pl", latin},
    Language{"por", "pt", latin},
    Language{"pus", "ps", "Arabic"},
    Language{"que", "qu", latin},
    Language{"ron", "ro", latin},
    Language{"rus", "ru", "Cyrillic"},
    Language{"san", "sa", "Devanagari"},
    Language{"sin", "si", "Sinhala"},
    Language{"slk", "sk", latin},
    Language{"slv", "sl", latin},
    Language{"snd", "sd", "Arabic"},
    Language{"spa", "es", latin},
    Language{"spa_old", "", latin},
    Language{"sqi", "sq", latin},
    Language{"srp", "sr", "Cyrillic"},
    Language{"srp_latn", "sr@latin", latin},
    Language{"sun", "su", latin},
    Language{"swa", "sw", latin},
    Language{"swe", "sv", latin},
    Language{"syr", "syr", "Syriac"},
    Language{"tam", "ta", "Tamil"},
    Language{"tat", "tt", "Cyrillic"},
    Language{"tel", "te", "Telugu"},
    Language{"tgk", "tg", "Cyrillic"},
    Language{"tha", "th", "Thai"},
    Language{"tir", "ti", "Ethiopic"},
    Language{"ton", "to", latin},
    Language{"tur", "tr", latin},
    Language{"uig", "ug", "Arabic"},
    Language{"ukr", "uk", "Cyrillic"},
    Language{"urd", "ur", "Arabic"},
    Language{"uzb", "uz", latin},
    Language{"uzb_cyrl", "uz", "Cyrillic"},
    Language{"vie", "vi", latin},
    Language{"yid", "yi", "Hebrew"},
    Language{"yor", "yo", latin},
};

/// More at once cost time with every line and help none of them.
constexpr std::size_t maximumSetSize = 3;
/// Each costs memory, and time with all that nobody can read.
constexpr std::size_t maximumSets = 8;

std::string_view scriptOf(std::string_view data) {
  const auto *const found = std::find_if(knownLanguages.begin(), knownLanguages.end(),
                                         [&](const auto &each) { return each.data == data; });
  return found != knownLanguages.end() ? found->script : data;
}

/// Data for layout alone, and for lines that run downwards.
bool isForReading(std::string_view data) {
  return data != "osd" && data != "equ" && !data.ends_with("_vert");
}

/// Whether a locale ("sr_RS.UTF-8@latin") is of the language of `data`.
bool isLocaleOf(std::string_view data, std::string_view locale) {
  const auto modifier = locale.find('@');
  const auto place = locale.substr(0, locale.find('.'));
  const auto language = place.substr(0, place.find('_'));
  return std::any_of(knownLanguages.begin(), knownLanguages.end(), [&](const auto &each) {
    if (each.data != data || each.locale.empty()) {
      return false;
    }
    return each.locale == language || each.locale == place.substr(0, place.find('@')) ||
           (modifier != std::string_view::npos &&
            each.locale ==
                std::string(language.substr(0, language.find('@'))) + std::string(locale.substr(modifier)));
  });
}

std::string joined(const std::vector<std::string> &names) {
  std::string list;
  for (const auto &name : names) {
    list += (list.empty() ? "" : "+") + name;
  }
  return list;
}

}  // namespace

std::vector<LanguageSet> languageSets(const std::vector<std::string> &installed,
                                      const std::vector<std::string> &userLanguages) {
  const auto rank = [&](const std::string &data) {
    const auto user = std::find_if(userLanguages.begin(), userLanguages.end(),
                                   [&](const auto &locale) { return isLocaleOf(data, locale); });
    return std::tuple(scriptOf(data) != latin, data != english, user - userLanguages.begin(), data);
  };
  std::vector<std::string> ordered;
  std::copy_if(installed.begin(), installed.end(), std::back_inserter(ordered), isForReading);
  std::sort(ordered.begin(), ordered.end(), [&](const auto &a, const auto &b) { return rank(a) < rank(b); });

  std::vector<std::pair<std::string_view, std::vector<std::string>>> scripts;
  for (const auto &data : ordered) {
    const auto script = std::find_if(scripts.begin(), scripts.end(),
                                     [&](const auto &each) { return each.first == scriptOf(data); });
    if (script == scripts.end()) {
      scripts.push_back({scriptOf(data), {data}});
    } else if (script->second.size() < maximumSetSize) {
      script->second.push_back(data);
    }
  }
  std::vector<LanguageSet> sets;
  for (auto &[script, members] : scripts) {
    const bool isEnglishFirst = members.size() > 1 && members.front() == english;
    sets.push_back({isEnglishFirst ? members.front() : joined(members)});
    if (isEnglishFirst) {
      std::rotate(members.begin(), members.begin() + 1, members.end());
      sets.push_back({joined(members), true});
    }
  }
  sets.resize(std::min(sets.size(), maximumSets));
  return sets;
}

std::vector<std::string> userLanguages() {
  // As gettext reads them, but that "C" is nobody's language.
  std::vector<std::string> locales;
  const auto add = [&](const char *name, char separator) {
    const char *const value = std::getenv(name);
    std::istringstream list(value != nullptr ? value : "");
    for (std::string locale; std::getline(list, locale, separator);) {
      if (!locale.empty()) {
        locales.push_back(locale);
      }
    }
  };
  add("LANGUAGE", ':');
  for (const char *const name : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
    add(name, '\0');
  }
  return locales;
}

}  // namespace lumiwren
