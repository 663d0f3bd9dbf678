#include <malloc.h>

#include <cstdio>
#include <exception>
#include <string_view>
#include <vector>

#include "benchmarks/figures/Figure.h"

// Measures each figure beside its peer and prints the table:
//
//     zt_figures [GROUP]...    all groups, or those named

namespace {

struct Group {
  std::string_view name;
  std::vector<zt::bench::Figure> (*measure)();
};

constexpr Group kGroups[] = {
    {"field", zt::bench::fieldFigures},       {"stamp", zt::bench::timeStampFigures},
    {"request", zt::bench::requestFigures},   {"million", zt::bench::millionFieldsFigures},
    {"delivery", zt::bench::deliveryFigures}, {"walk", zt::bench::processWalkFigures},
    {"resend", zt::bench::resendFigures},     {"first", zt::bench::firstReportFigures},
    {"idle", zt::bench::idleHostFigures},     {"probe", zt::bench::probeFigures},
    {"inbox", zt::bench::inboxFigures},
};

bool isNamed(const Group& group, int count, char** words) {
  for (int i = 1; i < count; ++i) {
    if (group.name == words[i]) return true;
  }
  return count == 1;
}

void measure(const Group& group, std::vector<zt::bench::Figure>& figures) {
  std::fprintf(stderr, "measuring: %s\n", group.name.data());
  for (auto& figure : group.measure()) figures.push_back(std::move(figure));
  malloc_trim(0);  // so that one group's memory is not another's
}

}  // namespace

int main(int count, char** words) {
  try {
    std::vector<zt::bench::Figure> figures;
    for (const Group& group : kGroups) {
      if (isNamed(group, count, words)) measure(group, figures);
    }
    if (figures.empty()) {
      std::fputs("zt_figures: usage: zt_figures [GROUP]..., each of", stderr);
      for (const Group& group : kGroups) std::fprintf(stderr, " %s", group.name.data());
      std::fputs("\n", stderr);
      return 2;
    }
    std::fputs(zt::bench::table(figures).c_str(), stdout);
    return 0;
  } catch (const std::exception& fault) {
    std::fprintf(stderr, "zt_figures: %s\n", fault.what());
    return 1;
  }
}
