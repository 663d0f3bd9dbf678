#include <gmock/gmock.h>

#include "tests/faults/Preload.h"

int main(int count, char** words) {
  zt::torture::ensureInterposer(words);
  testing::InitGoogleMock(&count, words);
  return RUN_ALL_TESTS();
}
