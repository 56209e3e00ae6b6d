// The data of a message between phone and watch: what is read of it, the message made of that carries back.

#include <KestrelKit/WatchStateTransfer.h>

#include <cstddef>
#include <cstdint>
#include <string>

#include "RoundTrip.h"

using namespace kestrel;
using fuzz::require;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const Data bytes{std::string(reinterpret_cast<const char*>(data), size)};
  const WatchStateTransfer::Payload payload = {{std::string(WatchStateTransfer::stateKey), bytes},
                                               {std::string(WatchStateTransfer::receiptKey), bytes}};
  if (const auto state = WatchStateTransfer::stateIn(payload)) {
    require(state->version == WatchStateSnapshot::currentVersion, "another version is not read");
    const auto again = WatchStateTransfer::statePayload(*state);
    require(again && WatchStateTransfer::stateIn(*again) == state, "a state comes back as it was");
    require(!WatchStateTransfer::receiptIn(*again), "a message with a state has no receipt");
  }
  if (const auto receipt = WatchStateTransfer::receiptIn(payload)) {
    const auto again = WatchStateTransfer::receiptPayload(*receipt);
    require(again && WatchStateTransfer::receiptIn(*again) == receipt, "a receipt comes back as it was");
    require(!WatchStateTransfer::stateIn(*again), "a message with a receipt has no state");
  }
  return 0;
}
