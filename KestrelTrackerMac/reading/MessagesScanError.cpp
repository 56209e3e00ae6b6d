#include <KestrelTrackerMac/reading/MessagesScanError.h>

#include <utility>

namespace kestrel::companion {

std::string_view errorDescription(MessagesScanError error) noexcept {
  switch (error) {
    case MessagesScanError::accessRequired:
      return "Tidewell can’t read Messages yet. Enable Full Disk Access, then try again.";
    case MessagesScanError::databaseUnavailable:
      return "Messages history isn’t available on this Mac.";
    case MessagesScanError::unsupportedDatabase:
      return "This version of the Messages database isn’t supported yet.";
    case MessagesScanError::queryFailed:
      return "Messages activity couldn’t be summarized. No history was saved or sent.";
  }
  std::unreachable();
}

}  // namespace kestrel::companion
