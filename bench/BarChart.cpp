#include "bench/BarChart.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <fstream>

namespace bench {
namespace {

constexpr double kBar = 26;
constexpr double kGap = 22;
constexpr double kLeft = 64;
constexpr double kTop = 64;
constexpr double kHeight = 260;
constexpr std::array<const char*, 6> kColours = {"#30638e", "#d1495b", "#edae49",
                                                 "#66a182", "#8d6a9f", "#5c5c5c"};

std::string number(double value, const char* format = "%.1f") {
  char text[64];
  std::snprintf(text, sizeof text, format, value);
  return text;
}

std::string text(double x, double y, const std::string& what, const char* anchor, int size) {
  return "<text x=\"" + number(x) + "\" y=\"" + number(y) + "\" text-anchor=\"" + anchor + "\" font-size=\"" +
         std::to_string(size) + "\">" + what + "</text>\n";
}

}  // namespace

std::string BarChart::svg() const {
  double top = largest;
  for (const Group& group : groups) {
    for (const auto& value : group.values) top = std::max(top, value.value_or(0));
  }
  if (top <= 0) top = 1;
  const double groupWidth = kBar * static_cast<double>(series.size()) + kGap;
  const double width = std::max(kLeft + groupWidth * static_cast<double>(groups.size()) + kGap, 560.0);
  const double bottom = kTop + kHeight;
  std::string out = "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"" + number(width) + "\" height=\"" +
                    number(bottom + 44) + "\" font-family=\"sans-serif\" fill=\"#222\">\n" +
                    "<rect width=\"100%\" height=\"100%\" fill=\"#fff\"/>\n" +
                    text(kLeft, 22, title, "start", 15);
  double x = kLeft;
  for (std::size_t s = 0; s < series.size(); ++s) {
    out += "<rect x=\"" + number(x) + "\" y=\"34\" width=\"10\" height=\"10\" fill=\"" +
           kColours[s % kColours.size()] + "\"/>\n" + text(x + 14, 43, series[s], "start", 12);
    x += 30 + 7.0 * static_cast<double>(series[s].size());
  }
  for (int line = 0; line <= 4; ++line) {
    const double y = bottom - kHeight * line / 4;
    out += "<line x1=\"" + number(kLeft) + "\" x2=\"" + number(width - 8) + "\" y1=\"" + number(y) +
           "\" y2=\"" + number(y) + "\" stroke=\"#ccc\"/>\n" +
           text(kLeft - 6, y + 4, number(top * line / 4, "%.4g") + unit, "end", 11);
  }
  x = kLeft + kGap / 2;
  for (const Group& group : groups) {
    for (std::size_t s = 0; s < group.values.size(); ++s) {
      const double left = x + kBar * static_cast<double>(s);
      const double middle = left + kBar / 2;
      if (!group.values[s]) {
        out += text(middle, bottom - 4, "none", "middle", 9);
        continue;
      }
      const double height = kHeight * *group.values[s] / top;
      out += "<rect x=\"" + number(left + 1) + "\" y=\"" + number(bottom - height) + "\" width=\"" +
             number(kBar - 2) + "\" height=\"" + number(height) + "\" fill=\"" +
             kColours[s % kColours.size()] + "\"/>\n" +
             text(middle, bottom - height - 4, number(*group.values[s], "%.3g"), "middle", 9);
    }
    out += text(x + groupWidth / 2 - kGap / 2, bottom + 18, group.name, "middle", 12);
    x += groupWidth;
  }
  return out + "</svg>\n";
}

void writeChart(const BarChart& chart, const std::string& path) {
  std::ofstream file(path);
  file << chart.svg();
  file.close();
  if (file.fail()) {
    std::fprintf(stderr, "%s: cannot be written\n", path.c_str());
    std::exit(1);
  }
}

}  // namespace bench
