#pragma once

#include <KestrelKit/AppGroupDefaults.h>
#include <KestrelKit/WatchConnectionEvidence.h>
#include <KestrelKit/foundation/Notifications.h>
#include <KestrelKit/foundation/SharedDefaults.h>

#include <functional>
#include <memory>
#include <mutex>
#include <string_view>

namespace kestrel {

/// What is known of the link to the watch. Changes follow one another: no two, of whichever threads or, where
/// the defaults are a suite, processes, lose each other's.
///
/// No operation fails: what cannot be written is lost, which the defaults can tell their opener. Any thread.
class WatchConnectionEvidenceStore {
 public:
  explicit WatchConnectionEvidenceStore(std::shared_ptr<SharedDefaults> defaults = appGroupDefaults());

  const std::shared_ptr<SharedDefaults> defaults;
  const std::string_view key = "watch.currentStateDeliveryEvidence.v1";

  /// Posted about `object` after each change, on the thread that made it: an observer may use the store. What
  /// another store or process changes is not announced here.
  static constexpr std::string_view didChange = "WatchConnectionEvidenceStore.didChange";
  const NotificationObject object;

  /// A record as it is made, where none is stored that decodes.
  WatchConnectionEvidence current() const;

  /// Stores `evidence` in the place of what there is.
  void replace(const WatchConnectionEvidence& evidence);

  /// Has `mutation` change a copy of the current evidence, and stores it if it is another then. `mutation`
  /// must not use the store.
  ///
  /// What has no JSON form (an instant beyond the year 9999) is not written, and is announced as a change.
  void update(const std::function<void(WatchConnectionEvidence& evidence)>& mutation);

 private:
  std::mutex lock_;
};

}  // namespace kestrel
