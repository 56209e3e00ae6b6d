#pragma once

#include <KestrelTrackerMac/reading/MessageActivitySample.h>

struct sqlite3_stmt;

namespace kestrel::companion {

/// The one query that is ever run on the Messages database. Its parameter is the cutoff in seconds since the
/// reference date. Text is never read, only measured.
struct MessagesQuery {
  MessagesQuery() = delete;

  static constexpr const char* text =
      "SELECT\n"
      "    m.ROWID,\n"
      "    m.date,\n"
      "    m.is_from_me,\n"
      "    COALESCE(MIN(cmj.chat_id), -m.ROWID),\n"
      "    CASE WHEN m.text IS NULL THEN NULL ELSE length(m.text) END\n"
      "FROM message AS m\n"
      "LEFT JOIN chat_message_join AS cmj ON cmj.message_id = m.ROWID\n"
      "WHERE (CASE\n"
      "    WHEN ABS(m.date) > 1000000000000 THEN m.date / 1000000000.0\n"
      "    ELSE m.date\n"
      "END) >= ?\n"
      "GROUP BY m.ROWID\n"
      "ORDER BY m.date ASC";

  /// Its columns, but for the first: the row number is there for the grouping only.
  enum Column { date = 1, isFromMe, conversation, textLength };

  /// What the row that `statement` stands on says. On the thread that steps it.
  static MessageActivitySample sample(sqlite3_stmt* statement);
};

}  // namespace kestrel::companion
