// A chart for the documentation, written as SVG.

#pragma once

#include <optional>
#include <string>
#include <vector>

namespace bench {

// Groups of bars, one bar a series in each group, with the value above each bar.
struct BarChart {
  struct Group {
    std::string name;
    std::vector<std::optional<double>> values;  // one for each series; nothing: no bar, "none" in its place
  };
  std::string title;
  std::string unit;      // "%": what is written behind the numbers of the axis
  double largest = 0.0;  // the axis ends here; 0: at the largest value
  std::vector<std::string> series;
  std::vector<Group> groups;

  std::string svg() const;
};

// Writes the chart to a file. Ends the program with a message when that fails.
void writeChart(const BarChart& chart, const std::string& path);

}  // namespace bench
