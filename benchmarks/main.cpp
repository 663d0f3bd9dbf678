// SPDX-License-Identifier: Apache-2.0
#include <malloc.h>
#include <stdlib.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <exception>
#include <limits>
#include <new>
#include <string_view>
#include <tuple>
#include <utility>

#include "benchmarks/Figure.h"

// Measures each figure and its peer, and prints the table:
//
//     zt_figures [GROUP]...    default: all groups

namespace {

thread_local zt::bench::Allocations allocated{0, 0};

/// Precedes each block of memory.
struct alignas(std::max_align_t) Header {
  std::size_t size;
};

}  // namespace

void* operator new(std::size_t size) {
  auto* const header = static_cast<Header*>(malloc(sizeof(Header) + size));
  if (header == nullptr) throw std::bad_alloc();
  header->size = size;
  ++allocated.count;
  allocated.bytesInUse += static_cast<std::int64_t>(size);
  return header + 1;
}

void operator delete(void* memory) noexcept {
  if (memory == nullptr) return;
  Header* const header = static_cast<Header*>(memory) - 1;
  allocated.bytesInUse -= static_cast<std::int64_t>(header->size);
  free(header);
}

void operator delete(void* memory, std::size_t /*size*/) noexcept { operator delete(memory); }

namespace zt::bench {

Allocations allocations() { return allocated; }

double secondsOf(const Work& work) {
  const auto start = std::chrono::steady_clock::now();
  work();
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

std::vector<double> fastest(std::size_t rounds, const std::vector<Work>& works) {
  std::vector<double> best(works.size(), std::numeric_limits<double>::max());
  for (std::size_t round = 0; round < rounds; ++round) {
    for (std::size_t i = 0; i < works.size(); ++i) best[i] = std::min(best[i], secondsOf(works[i]));
  }
  return best;
}

namespace {

std::string printed(double value, int digits) {
  std::array<char, 64> text;
  const int length = std::snprintf(text.data(), text.size(), "%.*f", digits, value);
  return {text.data(), static_cast<std::size_t>(length)};
}

Figure beside(const Peer& peer, const std::string& name, double ours, const std::string& unit) {
  return {name, measure(ours, unit), peer.name + ": " + measure(peer.value, unit), "", "", false};
}

using Row = std::array<std::string, 6>;

/// The table as Markdown, its columns aligned.
std::string table(const std::vector<Figure>& figures) {
  std::vector<Row> rows{{"Figure", "ours", "peer", "limit", "ratio", "verdict"}};
  for (const Figure& figure : figures) {
    rows.push_back({figure.name, figure.ours, figure.peer, figure.limit, figure.ratio,
                    figure.passes ? "pass" : "fail"});
  }
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

struct Group {
  std::string_view name;
  std::vector<Figure> (*measure)();
};

constexpr Group kGroups[] = {
    {"field", fieldFigures},           {"stamp", timestampFigures},
    {"request", requestFigures},       {"interface", interfaceFigures},
    {"million", millionFieldsFigures}, {"delivery", deliveryFigures},
    {"walk", processWalkFigures},      {"resend", resendFigures},
    {"background", backgroundFigures}, {"first", firstReportFigures},
    {"idle", idleHostFigures},         {"probe", probeFigures},
    {"python", pythonFigures},         {"inbox", inboxFigures},
};

bool isNamed(const Group& group, int count, char** words) {
  for (int i = 1; i < count; ++i) {
    if (group.name == words[i]) return true;
  }
  return count == 1;
}

void measure(const Group& group, std::vector<Figure>& figures) {
  std::fprintf(stderr, "measuring: %s\n", group.name.data());
  for (auto& figure : group.measure()) figures.push_back(std::move(figure));
  malloc_trim(0);  // so that the next group does not inherit this group's memory
}

int run(int count, char** words) {
  std::vector<Figure> figures;
  for (const Group& group : kGroups) {
    if (isNamed(group, count, words)) measure(group, figures);
  }
  if (figures.empty()) {
    std::fputs("usage: zt_figures [GROUP]...\ngroups:", stderr);
    for (const Group& group : kGroups) std::fprintf(stderr, " %s", group.name.data());
    std::fputs("\n", stderr);
    return 2;
  }
  std::fputs(table(figures).c_str(), stdout);
  return 0;
}

}  // namespace

std::string measure(double value, const std::string& unit) {
  return printed(value, value < 10 ? 2 : value < 100 ? 1 : 0) + " " + unit;
}

Figure atMostTimes(double limit, const std::string& name, double ours, const Peer& peer,
                   const std::string& unit) {
  Figure figure = beside(peer, name, ours, unit);
  figure.limit = "at most " + printed(limit, 2) + " times";
  figure.ratio = printed(ours / peer.value, 2);
  figure.passes = ours <= limit * peer.value;
  return figure;
}

Figure timesFaster(double limit, const std::string& name, double ours, const Peer& peer,
                   const std::string& unit) {
  Figure figure = beside(peer, name, ours, unit);
  figure.limit = printed(limit, 0) + " times faster";
  figure.ratio = printed(peer.value / ours, 1);
  figure.passes = peer.value >= limit * ours;
  return figure;
}

Figure atLeastTimes(double limit, const std::string& name, double ours, const Peer& peer,
                    const std::string& unit) {
  Figure figure = beside(peer, name, ours, unit);
  figure.limit = "at least " + printed(limit, 2) + " times";
  figure.ratio = printed(ours / peer.value, 2);
  figure.passes = ours >= limit * peer.value;
  return figure;
}

Figure atMost(double limit, const std::string& name, double ours, const std::string& unit) {
  return {name, measure(ours, unit), "", "at most " + measure(limit, unit), "", ours <= limit};
}

}  // namespace zt::bench

int main(int count, char** words) {
  try {
    return zt::bench::run(count, words);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "zt_figures: %s\n", error.what());
    return 1;
  }
}
