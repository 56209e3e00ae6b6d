#include "StatusMeanings.h"

namespace kestrel {

std::vector<std::pair<ExitStatus, std::string>> statusMeanings(const ProgramDescription& description) {
  std::vector<std::pair<ExitStatus, std::string>> meanings;
  meanings.emplace_back(ExitStatus::done, "Done.");
  if (!description.refusal.empty()) {
    meanings.emplace_back(ExitStatus::refused, description.refusal);
  }
  meanings.emplace_back(ExitStatus::wrongUse, "Wrong use of the command line.");
  meanings.emplace_back(ExitStatus::fileFailed, description.fileFailure);
  meanings.emplace_back(ExitStatus::ruleBroken, "A count or sum was too large for 64 bits.");
  return meanings;
}

}  // namespace kestrel
