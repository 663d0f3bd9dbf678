#include <charconv>
#include <cstddef>
#include <cstdint>
#include <exception>
#include <fstream>
#include <iostream>
#include <iterator>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "tests/mutation/Changes.h"
#include "tests/torture/Random.h"

// zt_mutations order SEED FILE...
//     Every change of the files in an order that follows from the seed, each a line: the file, the
//     change's number in it, the line, what stands there before and after, with tabs between them.
// zt_mutations apply FILE NUMBER
//     The file's text with that change.

namespace {

std::string contentOf(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  if (!file) throw std::runtime_error("cannot read " + path);
  return {std::istreambuf_iterator<char>(file), {}};
}

std::uint64_t numberOf(std::string_view text) {
  std::uint64_t number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc() || end != text.data() + text.size()) {
    throw std::runtime_error("not a number: " + std::string(text));
  }
  return number;
}

void printOrder(std::uint64_t seed, std::span<char* const> files) {
  std::vector<std::string> rows;
  for (const std::string path : files) {
    const std::string source = contentOf(path);
    std::size_t number = 0;
    for (const zt::mutation::Change& change : zt::mutation::changesOf(source)) {
      const auto [line, before, after] = zt::mutation::linesOf(source, change);
      std::string row = path;
      row.append("\t").append(std::to_string(number++)).append("\t").append(std::to_string(line));
      rows.push_back(row.append("\t").append(before).append("\t").append(after));
    }
  }
  zt::torture::Random random(seed, 0);
  for (std::size_t left = rows.size(); left > 0; --left) {
    std::swap(rows[left - 1], rows[static_cast<std::size_t>(random.below(left))]);
    std::cout << rows[left - 1] << '\n';
  }
}

void printChanged(const std::string& path, std::uint64_t number) {
  const std::string source = contentOf(path);
  std::cout << changed(source,
                       zt::mutation::changesOf(source).at(static_cast<std::size_t>(number)));
}

}  // namespace

int main(int count, char** words) try {
  const std::span<char* const> arguments(words, static_cast<std::size_t>(count));
  if (arguments.size() >= 3 && std::string_view(arguments[1]) == "order") {
    printOrder(numberOf(arguments[2]), arguments.subspan(3));
  } else if (arguments.size() == 4 && std::string_view(arguments[1]) == "apply") {
    printChanged(arguments[2], numberOf(arguments[3]));
  } else {
    std::cerr << "usage: zt_mutations order SEED FILE... | zt_mutations apply FILE NUMBER\n";
    return 2;
  }
  return 0;
} catch (const std::exception& error) {
  std::cerr << "zt_mutations: " << error.what() << '\n';
  return 1;
}
