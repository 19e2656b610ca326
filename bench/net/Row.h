#pragma once

#include <nlohmann/json.hpp>

#include <algorithm>
#include <chrono>
#include <functional>
#include <iostream>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace lumiwren::bench {

/// One line of results: what it took, beside what the reference took in the same run.
struct Row {
  std::string id;
  double value = 0;
  std::string unit;
  std::string reference;  // "absolute" when the budget is in `unit` itself
  double referenceValue = 1;
  double budget = 0;
  std::optional<double> p99;

  void print() const {
    const double ratio = value / referenceValue;
    nlohmann::ordered_json line{{"id", id},
                                {"value", value},
                                {"unit", unit},
                                {"reference", reference},
                                {"reference_value", referenceValue},
                                {"ratio", ratio},
                                {"budget", budget},
                                {"holds", ratio <= budget}};
    if (p99) {
      line["p99"] = *p99;
    }
    std::cout << line.dump() << std::endl;
  }
};

/// The value that the fraction `rank` of all values do not exceed.
inline double quantile(std::vector<double> values, double rank) {
  std::sort(values.begin(), values.end());
  const auto last = static_cast<double>(values.size() - 1);
  return values.at(static_cast<std::size_t>(last * rank + 0.5));
}
inline double median(const std::vector<double> &values) {
  return quantile(values, 0.5);
}

inline double milliseconds(const std::function<void()> &action) {
  const auto start = std::chrono::steady_clock::now();
  action();
  return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count();
}

/// A group of rows, which runs when one of its ids, or none at all, is among the arguments.
struct Group {
  std::vector<std::string_view> ids;
  std::function<void()> run;
};

inline int runGroups(const std::vector<std::string> &wanted, const std::vector<Group> &groups) {
  for (const auto &group : groups) {
    const bool isWanted = wanted.empty() || std::any_of(wanted.begin(), wanted.end(), [&](const auto &id) {
                            return std::find(group.ids.begin(), group.ids.end(), id) != group.ids.end();
                          });
    if (isWanted) {
      group.run();
    }
  }
  return 0;
}

}  // namespace lumiwren::bench
