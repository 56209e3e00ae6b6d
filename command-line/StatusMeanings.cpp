#include "StatusMeanings.h"

namespace kestrel {

std::vector<std::pair<ExitStatus, std::string>> statusMeanings(const ProgramDescription& description) {
  std::vector<std::pair<ExitStatus, std::string>> meanings;
  meanings.emplace_back(ExitStatus::done, "Done.");
  if (!description.refusal.empty()) {
    meanings.emplace_back(ExitStatus::refused, description.refusal);
  }
  meanings.emplace_back(ExitStatus::wrongUse, "Wrong use of the command line.");
  meanings.emplace_back(ExitStatus::fileFailed, "A file, or standard output, could not be read or written.");
  meanings.emplace_back(ExitStatus::ruleBroken,
                        "The input broke a rule that is taken for granted, such as a sum within 64 bits.");
  return meanings;
}

}  // namespace kestrel
