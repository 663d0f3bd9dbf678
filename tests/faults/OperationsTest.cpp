#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <functional>
#include <stdexcept>
#include <string>

#include "tests/faults/Failure.h"
#include "tests/faults/Host.h"
#include "tests/faults/Operations.h"

// That the campaigns see what they look for: each row spoils one thing that the library did right.

namespace zt::torture {
namespace {

const Operation& operationNamed(const std::string& name) {
  for (const Operation& operation : operations()) {
    if (operation.name == name) return operation;
  }
  throw std::runtime_error("no operation " + name);
}

void write(const std::string& path, const std::string& content) {
  std::ofstream(path, std::ios::binary) << content;
}

class OperationsTest : public ::testing::Test {
 protected:
  /// What is said of the operation when `spoil` was done to the store after it; empty for praise.
  std::string judged(const std::string& name, const std::function<void(Attempt&)>& spoil) {
    const Operation& operation = operationNamed(name);
    Attempt attempt;
    operation.prepare(scene, attempt);
    operation.make(scene, attempt);
    operation.act(attempt);
    spoil(attempt);
    try {
      judge(operation, scene, attempt, {});
      return "";
    } catch (const Failure& failure) {
      return failure.what();
    }
  }
  std::string fileOf(const Attempt& attempt) {
    return scene.store() + "/" + fileNameOf(*attempt.document);
  }

  Scene scene;
};

TEST_F(OperationsTest, WhatTheLibraryDoesUndisturbedIsRight) {
  for (const Operation& operation : operations()) {
    EXPECT_EQ(judged(operation.name, [](Attempt&) {}), "") << operation.name;
  }
}

TEST_F(OperationsTest, WhatIsWrongIsSeen) {
  const struct {
    const char* operation;
    std::function<void(Attempt&)> spoil;
    std::string said;
  } rows[] = {
      {"save", [&](Attempt& attempt) { std::filesystem::remove(fileOf(attempt)); },
       "lost: neither confirmed nor in the store"},
      {"send, refused", [&](Attempt& attempt) { std::filesystem::resize_file(fileOf(attempt), 9); },
       "the report in the store is not as written"},
      {"send, accepted",
       [&](Attempt& attempt) { write(fileOf(attempt), attempt.document->getSoapString()); },
       "confirmed, and in the store all the same"},
      {"send, accepted", [&](Attempt&) { scene.inbox().clear(); },
       "confirmed, but the server does not have it"},
      {"send, refused", [](Attempt& attempt) { attempt.accepted = true; }, "not the usual result"},
      {"save", [&](Attempt&) { write(scene.store() + "/notes.txt", "changed"); },
       "another file of the store was changed: notes.txt"},
      {"save", [&](Attempt&) { std::filesystem::remove(scene.store() + "/notes.txt"); },
       "another file of the store is gone: notes.txt"},
      {"save", [&](Attempt&) { write(scene.store() + "/other", ""); },
       "the store has a file too many"},
      {"resend", [&](Attempt&) { write(scene.store() + "/{1}.ztr", ""); },
       "the store has a file too many: {1}.ztr"},
      {"resend", [&](Attempt&) { std::filesystem::remove(scene.store() + "/notes.txt"); },
       "lost: neither in the store nor with the server: notes.txt"},
      {"resend", [&](Attempt&) { scene.inbox().clear(); },
       "lost: neither in the store nor with the server: " + scene.savedEarlier().begin()->first},
      {"resend",
       [&](Attempt&) {
         const auto& [name, text] = *scene.savedEarlier().begin();
         write(scene.store() + "/" + name, text);
       },
       "the server takes all, and some stay stored"},
  };
  for (const auto& row : rows) EXPECT_EQ(judged(row.operation, row.spoil), row.said);
}

}  // namespace
}  // namespace zt::torture
