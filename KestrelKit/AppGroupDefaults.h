#pragma once

#include <KestrelKit/foundation/SharedDefaults.h>

#include <memory>

namespace kestrel {

/// The defaults that all front ends share: the suite of the application group, opened anew at each call.
/// Where it cannot be opened, the process's standard defaults, which no other process sees. Any thread, as
/// long as none changes the environment.
std::shared_ptr<SharedDefaults> appGroupDefaults();

}  // namespace kestrel
