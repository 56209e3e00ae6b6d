#include <KestrelKit/DogfoodLog.h>
#include <KestrelKit/SharedAppGroup.h>
#include <KestrelKit/foundation/AtomicFile.h>
#include <KestrelKit/foundation/JsonLinesFile.h>
#include <KestrelKit/foundation/Record.h>
#include <KestrelKit/model/JSONCoders.h>
#include <fmt/format.h>

#include <algorithm>
#include <cstdio>
#include <utility>

namespace kestrel {
namespace {

using Event = DogfoodLog::Event;

constexpr std::string_view fileName = "dogfood-log.jsonl";
constexpr std::string_view unreadableSuffix = ".unreadable";

/// Reports and verdicts that were logged further apart have nothing to do with one another.
constexpr Seconds farthestApart{172'800};

bool isElevatedOrMixed(KestrelState state) {
  return state == KestrelState::mixedEpisode || state == KestrelState::mania ||
         state == KestrelState::hypomania;
}

bool isEuthymia(KestrelState state) { return state == KestrelState::euthymia; }

/// When the events of `kind` were logged whose state `isWanted`.
std::vector<Instant> timesOf(std::span<const Event> events, Event::Kind kind,
                             bool (*isWanted)(KestrelState)) {
  std::vector<Instant> times;
  for (const Event& event : events) {
    if (event.kind == kind && isWanted(KestrelState::fromStoredValue(event.stateRaw))) {
      times.push_back(event.timestamp);
    }
  }
  return times;
}

/// The classifier and the shadow predictor have one word a day.
bool isOfSameKindAndDay(const Event& old, const Event& by) {
  return old.kind == by.kind && old.date == by.date;
}

bool isNever(const Event&, const Event&) { return false; }

/// Whether what cannot be read for `reason` is no log of this user, now or later. Anything else, an error of
/// the disk or too many open files, may be over the next time, and the log readable.
bool isNoLog(std::error_code reason) {
  return reason == std::errc::illegal_byte_sequence || reason == std::errc::permission_denied ||
         reason == std::errc::not_supported;
}

}  // namespace

JsonFields DogfoodLog::Event::jsonFields() {
  using R = Event;
  static constexpr JsonField fields[] = {
      field<&R::timestamp>("timestamp"),
      field<&R::kind>("kind"),
      field<&R::date>("date"),
      field<&R::stateRaw>("stateRaw"),
      field<&R::confidence>("confidence"),
      field<&R::source>("source"),
  };
  return fields;
}

DogfoodLog::DogfoodLog(Clock clock)
    : container_(AppGroupContainer::of(sharedAppGroup)), clock_(std::move(clock)) {
  if (container_) {
    fileURL_ = container_->folder() / fileName;
    removeAbandonedReplacements(*fileURL_);
  }
}

DogfoodLog::DogfoodLog(std::optional<std::filesystem::path> file, Clock clock)
    : fileURL_(std::move(file)), clock_(std::move(clock)) {
  if (fileURL_) {
    removeAbandonedReplacements(*fileURL_);
  }
}

bool DogfoodLog::logClassification(std::string_view date, KestrelState state, std::int64_t confidence) {
  return log({.timestamp = {},
              .kind = Event::Kind::classifier,
              .date = std::string(date),
              .stateRaw = std::string(state.rawValue()),
              .confidence = confidence,
              .source = {}},
             isOfSameKindAndDay);
}

bool DogfoodLog::logShadowPrediction(std::string_view date, KestrelState state, std::int64_t confidence) {
  return log({.timestamp = {},
              .kind = Event::Kind::shadow,
              .date = std::string(date),
              .stateRaw = std::string(state.rawValue()),
              .confidence = confidence,
              .source = {}},
             isOfSameKindAndDay);
}

bool DogfoodLog::logSelfReport(std::string_view date, KestrelState state, SelfReportSource source) {
  return log({.timestamp = {},
              .kind = Event::Kind::selfReport,
              .date = std::string(date),
              .stateRaw = std::string(state.rawValue()),
              .confidence = {},
              .source = std::string(source.rawValue())},
             isNever);
}

bool DogfoodLog::log(Event event, bool (*isReplaced)(const Event& old, const Event& by)) {
  const std::scoped_lock lock(oneAtATime_);
  if (!fileURL_) {
    return false;
  }
  std::vector<Event> events = read();
  std::erase_if(events, [&](const Event& old) { return isReplaced(old, event); });
  event.timestamp = clock_();
  events.push_back(std::move(event));
  const auto written = write(events, *fileURL_);
  if (!written) {
    std::fputs(fmt::format("[DogfoodLog] write failed: {}\n", written.error()).c_str(), stdout);
    std::fflush(stdout);
  }
  return written.has_value();
}

std::vector<Event> DogfoodLog::read() const {
  unreadable_.reset();
  if (!fileURL_) {
    return {};
  }
  auto events = readJsonLines<Event>(*fileURL_, JSONCoders::decoder);
  if (events) {
    return *std::move(events);
  }
  const std::error_code reason = events.error().reason;
  if (reason != std::errc::no_such_file_or_directory && reason != std::errc::not_a_directory) {
    unreadable_ = std::move(events.error());
  }
  return {};
}

std::expected<void, std::string> DogfoodLog::write(std::span<const Event> events,
                                                   const std::filesystem::path& file) const {
  const auto text = JSONCoders::encoder.encodeLines(events);
  if (!text) {
    return std::unexpected(text.error().text());
  }
  if (container_) {
    if (const auto error = container_->create()) {
      return std::unexpected(FileError{container_->folder(), error}.text());
    }
  }
  std::optional<std::filesystem::path> aside;
  if (unreadable_) {
    if (!isNoLog(unreadable_->reason)) {
      return std::unexpected(unreadable_->text());
    }
    // It is no log that could be added to, but it may be all that is left of one.
    auto name = setAside(file, unreadableSuffix);
    if (!name) {
      return std::unexpected(name.error().text());
    }
    aside = *std::move(name);
  }
  if (const auto replaced = replaceFile(file, *text); !replaced) {
    if (aside) {
      putBack(*aside, file);
    }
    return std::unexpected(replaced.error().text());
  }
  return {};
}

std::vector<Event> DogfoodLog::allEvents() const {
  const std::scoped_lock lock(oneAtATime_);
  return read();
}

std::map<std::string, Event> DogfoodLog::latestEventsByDate(Event::Kind kind) const {
  std::map<std::string, Event> latest;
  for (Event& event : allEvents()) {
    if (event.kind != kind) {
      continue;
    }
    const auto [kept, isFirst] = latest.try_emplace(event.date, event);
    if (!isFirst && event.timestamp >= kept->second.timestamp) {
      kept->second = std::move(event);
    }
  }
  return latest;
}

std::string DogfoodLog::exportText() const {
  const std::vector<Event> events = allEvents();
  // What has been read has a JSON form.
  std::string text = JSONCoders::encoder.encodeLines(std::span<const Event>(events)).value();
  if (!text.empty()) {
    text.pop_back();
  }
  return text;
}

std::int64_t DogfoodLog::missedElevatedReports() const {
  const std::vector<Event> events = allEvents();
  const auto reports = timesOf(events, Event::Kind::selfReport, isElevatedOrMixed);
  auto verdicts = timesOf(events, Event::Kind::classifier, isEuthymia);
  std::ranges::sort(verdicts);
  std::int64_t pairs = 0;
  for (const Instant report : reports) {
    const auto first = std::ranges::partition_point(
        verdicts, [&](Instant verdict) { return report - verdict > farthestApart; });
    const auto behindLast = std::ranges::partition_point(
        verdicts, [&](Instant verdict) { return verdict - report <= farthestApart; });
    pairs += behindLast - first;
  }
  return pairs;
}

std::expected<void, FileError> DogfoodLog::clear() {
  const std::scoped_lock lock(oneAtATime_);
  unreadable_.reset();
  return fileURL_ ? removeFile(*fileURL_) : std::expected<void, FileError>();
}

std::optional<FileError> DogfoodLog::unreadable() const {
  const std::scoped_lock lock(oneAtATime_);
  return unreadable_;
}

}  // namespace kestrel
