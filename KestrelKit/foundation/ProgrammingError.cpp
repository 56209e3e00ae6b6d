#include <KestrelKit/foundation/ProgrammingError.h>

#include <atomic>
#include <cstdio>
#include <cstdlib>

namespace kestrel {
namespace {

void abortWithALine(std::string_view violation) {
  std::fprintf(stderr, "programming error: %.*s\n", static_cast<int>(violation.size()), violation.data());
  std::abort();
}

std::atomic<ProgrammingErrorEnding> chosenEnding{&abortWithALine};

}  // namespace

void programmingError(std::string_view violation) noexcept {
  chosenEnding.load()(violation);
  std::abort();
}

void setProgrammingErrorEnding(ProgrammingErrorEnding ending) noexcept {
  chosenEnding.store(ending != nullptr ? ending : &abortWithALine);
}

}  // namespace kestrel
