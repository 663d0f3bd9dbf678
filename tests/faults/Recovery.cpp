#include "tests/faults/Recovery.h"

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <string>
#include <vector>

#include "tests/faults/Failure.h"
#include "tests/faults/Host.h"
#include "tests/faults/Operations.h"
#include "tests/faults/Trial.h"

namespace zt::torture {

namespace {

constexpr std::chrono::seconds kPatience{60};

/// In the order in which the system lists them, which is the one of sending again.
std::vector<std::string> reportFiles(const std::string& store) {
  std::vector<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(store)) {
    if (entry.path().extension() == ".ztr") names.push_back(entry.path().filename().string());
  }
  return names;
}

/// Sending again stops at the first time-out, which happens on a busy machine; then once more.
void resend(const Scene& scene) {
  constexpr int kMost = 5;
  for (int i = 0; i < kMost; ++i) {
    const auto start = std::chrono::steady_clock::now();
    Trial trial(
        [&scene](const Teller&) { makeDocument(scene.configurationUrl())->sendSavedReports(); });
    const TrialEnd end = trial.wait(kPatience);
    if (end.how != TrialEnd::How::kReturned) throw Failure("cannot send again: " + end.told);
    if (std::chrono::steady_clock::now() - start < kExchangeTimeout) return;
  }
}

}  // namespace

void judgeRecovery(Scene& scene, const std::string& cutShort) {
  if (!std::filesystem::is_directory(scene.store())) return;
  const FolderContent before = scene.stored();
  std::vector<std::string> files = reportFiles(scene.store());
  files.erase(files.begin(), std::find(files.begin(), files.end(), cutShort));
  resend(scene);
  judgeResent(scene, before);
  std::vector<std::string> left = reportFiles(scene.store());
  std::sort(left.begin(), left.end());
  std::sort(files.begin(), files.end());
  if (left != files) throw Failure("sending again did not stop at the file that was cut short");
  if (cutShort.empty()) return;

  std::filesystem::remove(scene.store() + "/" + cutShort);
  const FolderContent behind = scene.stored();
  resend(scene);
  judgeResent(scene, behind);
  if (!reportFiles(scene.store()).empty()) throw Failure("a complete report stays stored");
}

}  // namespace zt::torture
