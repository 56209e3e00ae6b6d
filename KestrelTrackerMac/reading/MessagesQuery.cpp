#include <KestrelKit/foundation/Instant.h>
#include <KestrelTrackerMac/reading/MessagesQuery.h>
#include <sqlite3.h>

#include <cmath>

namespace kestrel::companion {
namespace {

/// A date of the database: seconds in older rows, nanoseconds in newer ones.
Instant instantOf(double date) {
  constexpr double mostSeconds = 1e12;
  constexpr double nanosecondsPerSecond = 1e9;
  return instantSinceReferenceDate(std::abs(date) > mostSeconds ? date / nanosecondsPerSecond : date);
}

}  // namespace

MessageActivitySample MessagesQuery::sample(sqlite3_stmt* statement) {
  MessageActivitySample sample;
  sample.timestamp = instantOf(sqlite3_column_double(statement, date));
  if (sqlite3_column_type(statement, textLength) != SQLITE_NULL) {
    sample.textLength = sqlite3_column_int64(statement, textLength);
  }
  sample.isFromMe = sqlite3_column_int(statement, isFromMe) != 0;
  sample.conversationID = sqlite3_column_int64(statement, conversation);
  return sample;
}

}  // namespace kestrel::companion
