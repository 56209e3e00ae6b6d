#include <KestrelKit/foundation/ProgrammingError.h>

#include <atomic>
#include <cstdio>
#include <cstdlib>

namespace kestrel {
namespace {

std::atomic<ProgrammingErrorEnding> chosenEnding{&std::abort};

}  // namespace

void programmingError(std::string_view violation) noexcept {
  std::fprintf(stderr, "programming error: %.*s\n", static_cast<int>(violation.size()), violation.data());
  chosenEnding.load()();
  std::abort();
}

void setProgrammingErrorEnding(ProgrammingErrorEnding ending) noexcept {
  chosenEnding.store(ending != nullptr ? ending : &std::abort);
}

}  // namespace kestrel
