#pragma once

#include <KestrelKit/foundation/Instant.h>

#include <cstdint>
#include <expected>
#include <filesystem>
#include <string>

namespace kestrel {

/// An invented history of messages. The same five values give the same rows on every machine.
///
/// It has what a history of years on a Mac has: people and groups of uneven popularity, conversations that
/// come in runs, busy weekends and evenings, livelier weeks with late nights, quiet weeks and days of
/// silence; messages in two chats and in none, with attachments and reactions, with no text, an empty one, a
/// long one, in ten scripts and languages. The messages of the first fifth of the days are dated in whole
/// seconds, as older systems did, the later ones in nanoseconds. The names, numbers and texts are made up;
/// the numbers are from ranges reserved for fiction.
struct SampleHistory {
  static constexpr std::int64_t mostMessages = 10'000'000;
  static constexpr std::int64_t mostDays = 7'300;
  /// The first day must not begin before this, one day after the reference date: a time in nanoseconds can be
  /// told from one in seconds only from a quarter of an hour after the reference date on.
  static constexpr Instant earliest = instantSinceReferenceDate(86'400);
  /// The history must not end after this, which is in the year 2286: nanoseconds beyond 2293 leave 64 bits.
  static constexpr Instant latest = instantSinceReferenceDate(9e9);

  std::int64_t messages = 0;  ///< How many messages, 0 to mostMessages.
  std::int64_t days = 0;      ///< How many days of 24 hours it spans, 1 to mostDays.
  std::uint64_t seed = 0;     ///< Another seed is another history.
  Instant end;          ///< Where it ends: every message is before it. A fraction of a second is dropped.
  Seconds utcOffset{};  ///< What the clock on the wall shows beyond UTC; gives the rhythm its mornings and
                        ///< nights.
};

/// Writes `history` to a new Messages database at `path`, with the tables, columns and indexes of a current
/// release, in WAL mode and checkpointed: no side file stays. The triggers, which only the Messages
/// application can run, are left out.
///
/// The rows are written to a file in a folder of its own beside `path`, which takes the name `path` when it
/// is complete; nothing that stands there by then is replaced, and nothing but that folder is removed. Needs
/// a file system with hard links. Fails with one line that says why where `path` exists or cannot be written.
/// A value of `history` outside its range is a programming error. Any thread.
[[nodiscard]] std::expected<void, std::string> writeSampleHistory(const std::filesystem::path& path,
                                                                  const SampleHistory& history);

}  // namespace kestrel
