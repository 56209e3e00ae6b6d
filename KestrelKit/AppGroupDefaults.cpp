#include <KestrelKit/AppGroupDefaults.h>
#include <KestrelKit/SharedAppGroup.h>
#include <KestrelKit/foundation/AppGroupContainer.h>
#include <KestrelKit/foundation/SqliteDefaults.h>

namespace kestrel {

std::shared_ptr<SharedDefaults> appGroupDefaults() {
  if (const auto container = AppGroupContainer::of(sharedAppGroup)) {
    if (const auto suite = SqliteDefaults::open(*container)) {
      return *suite;
    }
  }
  return SharedDefaults::standard();
}

}  // namespace kestrel
