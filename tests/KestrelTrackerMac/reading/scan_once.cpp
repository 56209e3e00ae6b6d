// Scans a Messages database once, for a test that watches from outside, and prints how many messages it
// counted.
//
//   scan_once PATH DAYS

#include <KestrelTrackerMac/reading/MessagesDatabase.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>

int main(int count, char** arguments) {
  if (count != 3) {
    return 2;
  }
  const kestrel::Instant now = kestrel::instantSinceReferenceDate(790'000'000);
  if (kestrel::companion::probeMessagesAccess(arguments[1]) !=
      kestrel::companion::MessagesAccessState::ready) {
    return 1;
  }
  const auto summary = kestrel::companion::scanMessages(arguments[1], std::atol(arguments[2]), now);
  if (!summary) {
    return 1;
  }
  std::int64_t messages = 0;
  for (const auto& day : summary->daily) {
    messages += day.sentCount + day.receivedCount;
  }
  std::printf("%lld\n", static_cast<long long>(messages));
}
