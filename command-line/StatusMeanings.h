#pragma once

#include <command-line/ExitStatus.h>

#include <string>
#include <utility>
#include <vector>

namespace kestrel {

/// Exit statuses, each with a sentence for people.
using StatusMeanings = std::vector<std::pair<ExitStatus, std::string>>;

/// Those of a program; `refusal` and `fileFailure` as in its ProgramDescription.
StatusMeanings statusMeanings(const std::string& refusal, const std::string& fileFailure);

}  // namespace kestrel
