#pragma once

#include <functional>

namespace kestrel {

/// The timelines of the widgets, which the platform draws ahead of time: what they show is as old as their
/// last reload. Any thread.
class WidgetTimelines {
 public:
  WidgetTimelines() = delete;

  /// Has `reload` called whenever the widgets are to show something new, on the thread that changed it; a
  /// front end installs what its platform offers. An empty function, as at first: nothing happens. It may
  /// install another, and must not throw.
  static void setReload(std::function<void()> reload);

  /// Asks for new timelines of all widgets.
  static void reloadAll();
};

}  // namespace kestrel
