#include "StatusMeanings.h"

namespace kestrel {

StatusMeanings statusMeanings(const std::string& refusal, const std::string& fileFailure) {
  StatusMeanings meanings;
  meanings.emplace_back(ExitStatus::done, "Done.");
  if (!refusal.empty()) {
    meanings.emplace_back(ExitStatus::refused, refusal);
  }
  meanings.emplace_back(ExitStatus::wrongUse, "Wrong use of the command line.");
  meanings.emplace_back(ExitStatus::fileFailed, fileFailure);
  meanings.emplace_back(ExitStatus::ruleBroken,
                        "The input broke a rule that is taken for granted: a sum beyond 64 bits, say.");
  return meanings;
}

}  // namespace kestrel
