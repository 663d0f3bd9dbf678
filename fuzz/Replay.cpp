// The main of a target where there is no fuzzer: gives it every file of the folders named on the
// command line, in the order of their names, and says how many there were.

#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <set>
#include <string>

#include "fuzz/FuzzTarget.h"

int main(int count, char** words) {
  std::set<std::string> files;
  for (int word = 1; word < count; ++word) {
    for (const auto& entry : std::filesystem::directory_iterator(words[word])) {
      if (entry.is_regular_file()) files.insert(entry.path().string());
    }
  }
  for (const std::string& path : files) {
    // The name stands there before its input is tried, for one that ends the program.
    std::cout << path << std::endl;
    std::ifstream file(path, std::ios::binary);
    const std::string input(std::istreambuf_iterator<char>(file), {});
    LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(input.data()), input.size());
  }
  std::cout << files.size() << " inputs\n";
  return files.empty() ? 2 : 0;
}
