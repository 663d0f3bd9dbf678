#pragma once

#include <memory>
#include <span>
#include <string>

#include "tests/faults/FolderContent.h"
#include "tests/faults/Scene.h"
#include "ztportal/portal/ZtPortalData.h"

namespace zt::torture {

/// What an operation has to do with the reports.
enum class Purpose { kSend, kSave, kSaveAgain, kResend, kProbe };

/// One run of an operation.
struct Attempt {
  FolderContent before;  ///< of the store
  std::shared_ptr<ZtPortalData> document;
  bool accepted = false;
};

/// Something that a host does with the library, under circumstances that matter.
struct Operation {
  const char* name;
  Purpose purpose;
  const char* answer;  ///< of the server: a word of its `--answer`
  bool storeExists;    ///< with the files that are to stay as they are, or are to be sent

  /// Brings the data folder and the server into the state in which the operation finds them.
  void prepare(Scene& scene, Attempt& attempt) const;
  /// Makes the document, which asks the server. One that is to be saved again is saved.
  void make(const Scene& scene, Attempt& attempt) const;
  /// Does what it is called.
  void act(Attempt& attempt) const;
};

std::span<const Operation> operations();

/// What has to have come of an attempt.
struct Expectation {
  bool undisturbed = true;  ///< the operation had its full effect
  bool mayLose = false;     ///< the report could not be saved; half of it is wrong all the same
};

/// Throws a Failure unless everything of `attempt` is as it should be.
void judge(const Operation& operation, Scene& scene, const Attempt& attempt,
           const Expectation& expectation);

/// Each of `before` is in the store unchanged, or with the server and no longer in the store.
void judgeResent(Scene& scene, const FolderContent& before);

}  // namespace zt::torture
