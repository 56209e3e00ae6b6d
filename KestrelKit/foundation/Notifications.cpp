#include <KestrelKit/foundation/Notifications.h>

#include <boost/signals2/signal.hpp>

#include <atomic>
#include <string>
#include <utility>

namespace kestrel {
namespace {

using Posted = boost::signals2::signal<void(std::string_view name, std::uint64_t object)>;

Posted& posted() {
  static Posted signal;
  return signal;
}

std::uint64_t nextIdentity() {
  static std::atomic<std::uint64_t> last = 0;
  return ++last;
}

}  // namespace

NotificationObject::NotificationObject() : identity_(nextIdentity()) {}

NotificationObservation Notifications::observe(std::string_view name, const NotificationObject& object,
                                               std::function<void()> observer) {
  return posted().connect([wantedName = std::string(name), wantedObject = object.identity_,
                           call = std::move(observer)](std::string_view postedName, std::uint64_t about) {
    if (about == wantedObject && postedName == wantedName) {
      call();
    }
  });
}

void Notifications::post(std::string_view name, const NotificationObject& object) {
  posted()(name, object.identity_);
}

}  // namespace kestrel
