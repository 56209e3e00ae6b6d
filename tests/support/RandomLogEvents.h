#pragma once

#include <KestrelKit/DogfoodLog.h>
#include <support/RandomFields.h>

#include <rapidcheck.h>

#include <cstdint>

// Random events of the log: what rc::gen::arbitrary gives.

namespace rc {

template <>
struct Arbitrary<kestrel::DogfoodLog::Event> {
  static Gen<kestrel::DogfoodLog::Event> arbitrary() {
    using namespace kestrel::testing;
    using R = kestrel::DogfoodLog::Event;
    return gen::build<R>(gen::set(&R::timestamp, anyInstant()), gen::set(&R::kind, anyCase<R::Kind>()),
                         gen::set(&R::date, anyText()), gen::set(&R::stateRaw, anyText()),
                         gen::set(&R::confidence, orNone(gen::arbitrary<std::int64_t>())),
                         gen::set(&R::source, orNone(anyText())));
  }
};

}  // namespace rc
