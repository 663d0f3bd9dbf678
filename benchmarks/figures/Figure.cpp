#include "benchmarks/figures/Figure.h"

#include <algorithm>
#include <array>
#include <cstdio>

namespace zt::bench {

namespace {

std::string printed(double value, int digits) {
  std::array<char, 64> text;
  const int length = std::snprintf(text.data(), text.size(), "%.*f", digits, value);
  return {text.data(), static_cast<std::size_t>(length)};
}

/// With three digits or so.
std::string number(double value) { return printed(value, value < 10 ? 2 : value < 100 ? 1 : 0); }

Figure beside(const Peer& peer, const std::string& name, double ours, const std::string& unit) {
  return {name, measure(ours, unit), peer.name + ": " + measure(peer.value, unit), "", "", false};
}

using Row = std::array<std::string, 6>;

Row rowOf(const Figure& figure) {
  return {figure.name,  figure.ours,  figure.peer,
          figure.limit, figure.ratio, figure.holds ? "holds" : "misses"};
}

}  // namespace

std::string measure(double value, const std::string& unit) {
  std::string text = number(value);
  text.append(" ").append(unit);
  return text;
}

Figure atMostTimes(double limit, const std::string& name, double ours, const Peer& peer,
                   const std::string& unit) {
  Figure figure = beside(peer, name, ours, unit);
  figure.limit = "at most " + printed(limit, 2) + " times";
  figure.ratio = printed(ours / peer.value, 2);
  figure.holds = ours <= limit * peer.value;
  return figure;
}

Figure timesFaster(double limit, const std::string& name, double ours, const Peer& peer,
                   const std::string& unit) {
  Figure figure = beside(peer, name, ours, unit);
  figure.limit = printed(limit, 0) + " times faster";
  figure.ratio = printed(peer.value / ours, 1);
  figure.holds = peer.value >= limit * ours;
  return figure;
}

Figure atLeastTimes(double limit, const std::string& name, double ours, const Peer& peer,
                    const std::string& unit) {
  Figure figure = beside(peer, name, ours, unit);
  figure.limit = "at least " + printed(limit, 2) + " times";
  figure.ratio = printed(ours / peer.value, 2);
  figure.holds = ours >= limit * peer.value;
  return figure;
}

Figure atMost(double limit, const std::string& name, double ours, const std::string& unit) {
  return {name, measure(ours, unit), "", "at most " + measure(limit, unit), "", ours <= limit};
}

std::string table(const std::vector<Figure>& figures) {
  std::vector<Row> rows{{"Figure", "ours", "peer", "limit", "ratio", "verdict"}};
  for (const Figure& figure : figures) rows.push_back(rowOf(figure));
  std::array<std::size_t, std::tuple_size_v<Row>> widths{};
  for (const Row& row : rows) {
    for (std::size_t i = 0; i < row.size(); ++i) widths[i] = std::max(widths[i], row[i].size());
  }
  std::string text;
  for (const Row& row : rows) {
    for (std::size_t i = 0; i < row.size(); ++i) {
      text.append("| ").append(row[i]).append(widths[i] - row[i].size() + 1, ' ');
    }
    text += "|\n";
    if (&row != &rows.front()) continue;
    for (const std::size_t width : widths) text.append("|").append(width + 2, '-');
    text += "|\n";
  }
  return text;
}

}  // namespace zt::bench
