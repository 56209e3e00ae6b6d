#pragma once

#include <KestrelTrackerMac/reading/MessagesScanSummary.h>

#include <string>
#include <string_view>

namespace kestrel::companion {

/// `summary` as a table for people: a line that names the window, a line a day and one of totals, columns
/// aligned, ended by a line feed. The window's days are named in the user's current calendar.
///
/// `locale` is the name that the environment gives to the way of writing numbers (`de_CH.UTF-8`); `C`,
/// `POSIX` and an empty name write them without grouping.
std::string scanTable(const MessagesScanSummary& summary, std::string_view locale);

}  // namespace kestrel::companion
