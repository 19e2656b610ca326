#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace lumiwren {

/// The sets of languages to read with, each as the engine takes it ("eng+deu"), one for each script. The
/// first is the Latin script's, with English and those of `userLanguages` (of locales, "de_DE.UTF-8"); the
/// others follow in the order of the user's languages, then of the alphabet.
std::vector<std::string> languageSets(const std::vector<std::string> &installed,
                                      const std::vector<std::string> &userLanguages);

/// The locales of the user's messages, as the environment has them, the preferred one first.
std::vector<std::string> userLanguages();

}  // namespace lumiwren
