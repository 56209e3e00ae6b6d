#include <KestrelKit/DogfoodLog.h>
#include <KestrelKit/WatchConnectionEvidence.h>
#include <KestrelKit/WatchStateAcknowledgement.h>
#include <KestrelKit/WatchStateSnapshot.h>
#include <KestrelKit/circadian/CircadianFeatures.h>
#include <KestrelKit/circadian/SleepSession.h>
#include <KestrelKit/formats/AggregateBatchV2.h>
#include <KestrelKit/formats/AggregateBatchV2Response.h>
#include <KestrelKit/formats/AggregateSourceDeleteResponse.h>
#include <KestrelKit/formats/DashboardSnapshot.h>
#include <KestrelKit/formats/SelfReportData.h>
#include <KestrelKit/formats/SignalProcessingContract.h>
#include <KestrelKit/formats/SnapshotSelfReportList.h>
#include <KestrelKit/formats/SyncRequest.h>
#include <KestrelKit/formats/SyncResponse.h>
#include <KestrelKit/foundation/JsonError.h>
#include <KestrelKit/model/Baseline.h>
#include <KestrelKit/model/DailyMetrics.h>
#include <KestrelKit/model/JSONCoders.h>
#include <KestrelKit/model/Prediction.h>
#include <KestrelKit/model/StateClassification.h>
#include <command-line/InputFile.h>
#include <command-line/StandardStreams.h>
#include <command-line/ValueOption.h>
#include <fmt/format.h>
#include <fmt/ranges.h>
#include <kestrel/CheckCommand.h>
#include <kestrel/JsonCommand.h>

#include <algorithm>
#include <expected>
#include <iterator>
#include <memory>
#include <optional>
#include <ranges>
#include <string>
#include <string_view>
#include <vector>

namespace kestrel {
namespace {

/// The `Record` in `file`, written again; on standard error what it lost.
template <class Record>
std::expected<std::string, Failure> checked(const Command& command, const InputFile& file) {
  std::vector<JsonError> dropped;
  return printedFrom(
      file, [&](std::string_view text) { return JSONCoders::decoder.decode<Record>(text, &dropped); },
      [&](const Record& record) {
        auto output = printed(command, record);
        if (output) {
          for (const JsonError& error : dropped) {
            writeErrorLine(command.parent()->description().name, error.text());
          }
        }
        return output;
      });
}

struct Kind {
  std::string_view name;
  std::expected<std::string, Failure> (*check)(const Command& command, const InputFile& file);
};

// clang-format off
constexpr Kind kinds[] = {
    {"daily-metrics",          checked<DailyMetrics>},
    {"baseline",               checked<Baseline>},
    {"classification",         checked<StateClassification>},
    {"prediction",             checked<Prediction>},
    {"sleep-session",          checked<SleepSession>},
    {"circadian-features",     checked<CircadianFeatures>},
    {"aggregate-batch",        checked<AggregateBatchV2>},
    {"aggregate-response",     checked<AggregateBatchV2Response>},
    {"source-delete-response", checked<AggregateSourceDeleteResponse>},
    {"sync-request",           checked<SyncRequest>},
    {"sync-response",          checked<SyncResponse>},
    {"dashboard-snapshot",     checked<DashboardSnapshot>},
    {"contract",               checked<SignalProcessingContract>},
    {"self-report",            checked<SelfReportData>},
    {"snapshot-self-reports",  checked<SnapshotSelfReportList>},
    {"log-event",              checked<DogfoodLog::Event>},
    {"watch-state",            checked<WatchStateSnapshot>},
    {"watch-receipt",          checked<WatchStateAcknowledgement>},
    {"watch-evidence",         checked<WatchConnectionEvidence>},
};
// clang-format on

std::optional<Kind> kindNamed(std::string_view name) {
  const auto* const kind = std::ranges::find(kinds, name, &Kind::name);
  return kind == std::end(kinds) ? std::nullopt : std::optional(*kind);
}

}  // namespace

void addCheckCommand(Command& program) {
  const std::string names = fmt::format("{}", fmt::join(kinds | std::views::transform(&Kind::name), ", "));
  Command& command = program.addCommand({
      .name = "check",
      .purpose = "tell whether a document is a record of some kind",
      .details = "Reads one record of that kind, and prints it as it was understood: its fields in their "
                 "order, without those that the record does not have. A document that is none is refused, "
                 "with the place of what is wrong first."
                 "\n\n"
                 "The lists of days, aggregates and reports in dashboard-snapshot and snapshot-self-reports "
                 "lose the elements that do not fit, and keep the others. Each that was lost is named on "
                 "standard error, a line each, with what was wrong with it; the exit status is 0 then."
                 "\n\n"
                 "The kinds: " +
                 names + ".",
      .example = R"(echo '{"essential": {"viz": {"daily": [
  {"date": "2024-05-01", "posts": 3}, {"posts": 4}]}}}' |
  kestrel check dashboard-snapshot 2>/dev/null)",
      .exampleDoes = "Prints a snapshot with one day. Without 2>/dev/null it says, too, that the other one "
                     "lacks its date.",
  });
  const auto kind = std::make_shared<std::optional<Kind>>();
  addValueOption(command.arguments(), "KIND", *kind, kindNamed, "one of " + names,
                 "What the document should be, by one of the names above.")
      ->type_name("KIND")
      ->required();
  const auto file = std::make_shared<InputFile>(command.arguments(), "The record.");
  command.setAction([&command, kind, file] { return (*kind)->check(command, *file); });
}

}  // namespace kestrel
