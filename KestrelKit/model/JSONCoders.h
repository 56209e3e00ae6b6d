#pragma once

#include <KestrelKit/foundation/DateStrategy.h>
#include <KestrelKit/foundation/JsonDecoder.h>
#include <KestrelKit/foundation/JsonEncoder.h>

namespace kestrel {

/// The shared coders, through which every record with an instant is written and read: ISO 8601, otherwise as
/// they come. Immutable; any thread.
struct JSONCoders {
  JSONCoders() = delete;

  static constexpr JsonEncoder encoder{DateStrategy::iso8601};
  static constexpr JsonDecoder decoder{DateStrategy::iso8601};
};

}  // namespace kestrel
