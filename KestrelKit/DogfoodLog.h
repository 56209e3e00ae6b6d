#pragma once

#include <KestrelKit/foundation/AppGroupContainer.h>
#include <KestrelKit/foundation/FileError.h>
#include <KestrelKit/foundation/Instant.h>
#include <KestrelKit/foundation/JsonField.h>
#include <KestrelKit/foundation/RawEnumeration.h>
#include <KestrelKit/model/KestrelState.h>
#include <KestrelKit/model/SelfReportSource.h>

#include <cstdint>
#include <expected>
#include <filesystem>
#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace kestrel {

/// The log of mood-state events that the applications keep on the device: what the daily classifier said,
/// what the user reported, what the shadow predictor said. One event a line in a JSON Lines file; see
/// docs/reference/event-log.md for the format.
///
/// It is meant to stay small, a few events a day: every change reads the whole file and replaces it whole
/// (see replaceFile()), so that a crash at any instant loses at most the change under way. Any thread; the
/// operations of one log run one at a time. Two logs on one file, in one process or two, can lose each
/// other's changes, but never damage it.
///
/// Without a file that can be named every operation does nothing, and reading yields nothing.
class DogfoodLog {
 public:
  struct Event {
    class Kind : public RawEnumeration<Kind> {
     public:
      enum Case : std::uint8_t { classifier, selfReport, shadow };

      static constexpr RawValue<Case> rawValues[] = {
          {classifier, "classifier"},
          {selfReport, "selfReport"},
          {shadow, "shadow"},
      };

      constexpr Kind(Case value) noexcept : value_(value) {}
      constexpr operator Case() const noexcept { return value_; }

     private:
      Case value_;
    };

    Instant timestamp{};  ///< When the event was logged; whole seconds once it has been written.
    Kind kind = Kind::classifier;
    std::string date{};  ///< The day that the event is about, a day key, as the caller gives it; not checked.
    std::string stateRaw{};  ///< The state's raw value; an older log may hold a name of an earlier release.
    std::optional<std::int64_t> confidence{};  ///< Percent; absent for a self-report.
    std::optional<std::string> source{};       ///< How a self-report was made; absent for the other kinds.

    bool operator==(const Event&) const = default;

    static JsonFields jsonFields();
  };

  using Clock = std::function<Instant()>;

  /// The log of the shared application group: `dogfood-log.jsonl` in its container. `clock` gives the instant
  /// at which an event is logged.
  explicit DogfoodLog(Clock clock = ReferenceClock::now);

  /// The log in `file`, in a folder that exists; absent: none.
  explicit DogfoodLog(std::optional<std::filesystem::path> file, Clock clock = ReferenceClock::now);

  DogfoodLog(const DogfoodLog&) = delete;
  DogfoodLog& operator=(const DogfoodLog&) = delete;

  const std::optional<std::filesystem::path>& fileURL() const noexcept { return fileURL_; }

  // The recording operations give whether the log was written. Where it was not, a line on standard output
  // has said why, unless there is no file that can be named.

  /// Records what the daily classifier said of the day `date`, in place of what it said of that day before.
  bool logClassification(std::string_view date, KestrelState state, std::int64_t confidence);

  /// Records what the shadow predictor said of the day `date`, in place of what it said of that day before.
  bool logShadowPrediction(std::string_view date, KestrelState state, std::int64_t confidence);

  /// Records a report of the user on the day `date`. Every report is kept.
  bool logSelfReport(std::string_view date, KestrelState state, SelfReportSource source);

  /// Every event, in file order. A line that is no event is passed over; a file that is not UTF-8 as a whole,
  /// or that cannot be read, is an empty log.
  std::vector<Event> allEvents() const;

  /// For each day the event of `kind` with the latest timestamp; of equal ones the last in file order.
  std::map<std::string, Event> latestEventsByDate(Event::Kind kind) const;

  /// The events as JSON Lines text, without a line feed after the last.
  std::string exportText() const;

  /// How many pairs there are of a report of an elevated or mixed state and a euthymia that the classifier
  /// said, logged at most two days apart.
  std::int64_t missedElevatedReports() const;

  /// Deletes the file. Fails with the file system's reason, also where there is no file to delete.
  [[nodiscard]] std::expected<void, FileError> clear();

  /// Why the last operation read the log as empty although it is there; absent where it read it, or where it
  /// is not there.
  std::optional<FileError> unreadable() const;

 private:
  std::vector<Event> read() const;
  bool log(Event event, bool (*isReplaced)(const Event& old, const Event& by));
  std::expected<void, std::string> write(std::span<const Event> events,
                                         const std::filesystem::path& file) const;

  std::optional<AppGroupContainer> container_;  // to be made before the file is written
  std::optional<std::filesystem::path> fileURL_;
  Clock clock_;
  mutable std::mutex oneAtATime_;  // guards what follows, and the file
  mutable std::optional<FileError> unreadable_;
};

}  // namespace kestrel
