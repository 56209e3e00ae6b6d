#include <KestrelKit/foundation/MemoryDefaults.h>
#include <KestrelKit/foundation/SharedDefaults.h>

namespace kestrel {

const std::shared_ptr<SharedDefaults>& SharedDefaults::standard() {
  static const std::shared_ptr<SharedDefaults> defaults = std::make_shared<MemoryDefaults>();
  return defaults;
}

}  // namespace kestrel
