// SPDX-License-Identifier: Apache-2.0
// The main() of a target without libFuzzer: runs it with every file of the folders that are named
// on the command line, in the order of their names, and prints their number.

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
    // Printed and flushed first, to show which input ends the program if one does.
    std::cout << path << std::endl;
    std::ifstream file(path, std::ios::binary);
    const std::string input(std::istreambuf_iterator<char>(file), {});
    LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(input.data()), input.size());
  }
  std::cout << files.size() << " inputs\n";
  return files.empty() ? 2 : 0;
}
