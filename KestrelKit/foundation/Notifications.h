#pragma once

#include <boost/signals2/connection.hpp>

#include <cstdint>
#include <functional>
#include <string_view>

namespace kestrel {

/// What notifications are about: a member of the object that posts them. No two of a process are equal, not
/// even one after the other in the same place, so that an observer that outlives its object hears of no
/// other.
class NotificationObject {
 public:
  NotificationObject();
  NotificationObject(const NotificationObject&) = delete;
  NotificationObject& operator=(const NotificationObject&) = delete;

  bool operator==(const NotificationObject&) const = default;

 private:
  friend class Notifications;
  std::uint64_t identity_;
};

/// Ends an observation when it goes out of scope, or with disconnect(). A call that another thread has begun
/// may still be under way then.
using NotificationObservation = boost::signals2::scoped_connection;

/// The notification centre of the process. Any thread.
class Notifications {
 public:
  Notifications() = delete;

  /// Has `observer` called for each notification `name` of `object`, on the thread that posts it, until the
  /// observation ends. An observer may do whatever its thread may: post, observe, end any observation, its
  /// own included. It must not throw. The object may go before the observation.
  [[nodiscard]] static NotificationObservation observe(std::string_view name,
                                                       const NotificationObject& object,
                                                       std::function<void()> observer);

  /// Calls the observers, in the order in which they were registered, and returns when they have.
  static void post(std::string_view name, const NotificationObject& object);
};

}  // namespace kestrel
