#include <KestrelKit/WidgetTimelines.h>

#include <mutex>
#include <utility>

namespace kestrel {
namespace {

std::mutex mutex;

std::function<void()>& installed() {
  static std::function<void()> reload;
  return reload;
}

}  // namespace

void WidgetTimelines::setReload(std::function<void()> reload) {
  const std::lock_guard locked(mutex);
  std::swap(installed(), reload);
}

void WidgetTimelines::reloadAll() {
  std::function<void()> reload;
  {
    const std::lock_guard locked(mutex);
    reload = installed();
  }
  if (reload) {
    reload();
  }
}

}  // namespace kestrel
