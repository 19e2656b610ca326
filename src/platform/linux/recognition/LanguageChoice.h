#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace lumiwren {

/// Languages to read with at once.
struct LanguageSet {
  std::string languages;  // as the engine takes them, the most important first: "eng+deu"
  /// Reads the Latin script's other languages, which the first set does not know, and English a little worse.
  bool isForAccents = false;
  friend bool operator==(const LanguageSet &, const LanguageSet &) = default;
};

/// The sets to choose from: one for each script of the `installed` data. The first is the Latin script's,
/// when there is any: English alone, because each language that is asked takes its time, with another for
/// accents behind it; without English all of them. The languages of `userLanguages`
/// (of locales, "de_DE.UTF-8") come before others, which are in the order of the alphabet.
std::vector<LanguageSet> languageSets(const std::vector<std::string> &installed,
                                      const std::vector<std::string> &userLanguages);

/// The locales of the user's messages, as the environment has them, the preferred one first.
std::vector<std::string> userLanguages();

}  // namespace lumiwren
