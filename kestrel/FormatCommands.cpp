#include <KestrelKit/formats/AggregateRecordV2.h>
#include <KestrelKit/formats/BundledSignalProcessingContract.h>
#include <KestrelKit/formats/IOSAggregateSignalContract.h>
#include <KestrelKit/foundation/DateStrategy.h>
#include <KestrelKit/foundation/JsonError.h>
#include <KestrelKit/foundation/JsonField.h>
#include <KestrelKit/foundation/JsonReader.h>
#include <KestrelKit/foundation/Record.h>
#include <KestrelKit/model/JSONCoders.h>
#include <kestrel/FormatCommands.h>
#include <kestrel/JsonCommand.h>

#include <cstdint>
#include <expected>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace kestrel {
namespace {

/// Which of the two forms an element of `identity` has.
struct IdentityForm {
  std::optional<bool> deleted{};

  static JsonFields jsonFields() {
    using R = IdentityForm;
    static constexpr JsonField fields[] = {
        field<&R::deleted>("deleted"),
    };
    return fields;
  }
};

struct ValueContent {
  std::string date{};
  AggregateRecordV2::DataType dataType = AggregateRecordV2::DataType::motionActiveMinutesDaily;
  double value = 0;
  std::string unit{};
  std::optional<std::int64_t> sampleCount{};
  std::optional<double> quality{};
  std::optional<std::string> replacesUpstreamRecordId{};

  static JsonFields jsonFields() {
    using R = ValueContent;
    static constexpr JsonField fields[] = {
        field<&R::date>("date"),
        field<&R::dataType>("dataType"),
        field<&R::value>("value"),
        field<&R::unit>("unit"),
        field<&R::sampleCount>("sampleCount"),
        field<&R::quality>("quality"),
        field<&R::replacesUpstreamRecordId>("replacesUpstreamRecordId"),
    };
    return fields;
  }

  std::string identity() const {
    return AggregateRecordV2::dailyIdentity(date, dataType, value, unit, sampleCount, quality,
                                            replacesUpstreamRecordId);
  }
};

struct DeletionContent {
  std::string date{};
  AggregateRecordV2::DataType dataType = AggregateRecordV2::DataType::motionActiveMinutesDaily;
  std::optional<std::string> replacesUpstreamRecordId{};

  static JsonFields jsonFields() {
    using R = DeletionContent;
    static constexpr JsonField fields[] = {
        field<&R::date>("date"),
        field<&R::dataType>("dataType"),
        field<&R::replacesUpstreamRecordId>("replacesUpstreamRecordId"),
    };
    return fields;
  }

  std::string identity() const {
    return AggregateRecordV2::dailyDeletionIdentity(date, dataType, replacesUpstreamRecordId);
  }
};

/// Has `read` read each element of the list `json`.
template <class Read>
std::expected<void, JsonError> readEach(std::string_view json, Read read) {
  return readJson(json, DateStrategy::iso8601, /*dropped=*/nullptr, &read, [](void* state, JsonReader& list) {
    list.forEachElement([state](JsonReader& element) { (*static_cast<Read*>(state))(element); });
  });
}

/// The identities of the list `json`. Which form an element has may be said after its other fields, and what
/// that form does not need is not judged: so the list is read for the forms first.
std::expected<std::vector<std::string>, JsonError> identitiesIn(std::string_view json) {
  std::vector<std::optional<bool>> deletes;  // what each element does; absent where that is wrong
  auto read = readEach(json, [&](JsonReader& element) {
    const auto form = JsonForm<IdentityForm>::read(element);
    deletes.push_back(form ? std::optional(form->deleted.value_or(false)) : std::nullopt);
    if (!form) {
      element.drop();  // refused in its turn, below
    }
  });
  if (!read) {
    return std::unexpected(std::move(read).error());
  }
  std::vector<std::string> identities;
  identities.reserve(deletes.size());
  const auto add = [&](const auto& content) {
    identities.push_back(content ? content->identity() : std::string());
  };
  read = readEach(json, [&](JsonReader& element) {
    const auto isDeletion = deletes[identities.size()];
    if (!isDeletion) {
      JsonForm<IdentityForm>::read(element);
      identities.emplace_back();
    } else if (*isDeletion) {
      add(JsonForm<DeletionContent>::read(element));
    } else {
      add(JsonForm<ValueContent>::read(element));
    }
  });
  if (!read) {
    return std::unexpected(std::move(read).error());
  }
  return identities;
}

void addIdentity(Command& program) {
  Command& command = program.addCommand({
      .name = "identity",
      .purpose = "name daily values by their content",
      .details = R"(Reads a list of daily values, each {"date", "dataType", "value", "unit", )"
                 R"("sampleCount", "quality", "replacesUpstreamRecordId"}, of which the last three may be )"
                 R"(absent, or a deletion: {"date", "dataType", "deleted": true, )"
                 R"("replacesUpstreamRecordId"}. Both may stand in one list. Prints the list of their )"
                 "identities, as a batch of aggregates carries them in upstreamRecordId."
                 "\n\n"
                 "An identity holds the SHA-256 of the record's content, values by their bits: the same "
                 "value has the same identity wherever it is computed, and one that differs in the last "
                 "digit, or in the sign of a zero, has another.",
      .example = R"(echo '[{"date": "2024-05-01", "dataType": "photo_count_daily",
  "value": 12, "unit": "count"}]' | kestrel identity)",
      .exampleDoes = "Prints one identity, daily:2024-05-01:photo_count_daily: and 64 hexadecimal digits.",
  });
  const auto file = std::make_shared<InputFile>(command.arguments(), "A list of daily values and deletions.");
  command.setAction([&command, file] {
    return printedFrom(*file, identitiesIn, [&](const std::vector<std::string>& identities) {
      return printed(command, identities);
    });
  });
}

std::expected<std::string, Failure> findingsIn(const Command& command,
                                               const SignalProcessingContract& contract) {
  const std::vector<std::string> findings = IOSAggregateSignalContract::validate(contract);
  auto text = printed(command, findings);
  if (text && !findings.empty()) {
    return std::unexpected(
        Failure{.status = ExitStatus::refused, .message = {}, .findings = *std::move(text)});
  }
  return text;
}

std::expected<std::string, Failure> findingsInBundle(const Command& command) {
  using Bundled = BundledSignalProcessingContract;
  const auto contract = Bundled::load();
  if (!contract) {
    const auto& [fault, message] = contract.error();
    return std::unexpected(
        Failure{fault == Bundled::Fault::noResource ? ExitStatus::fileFailed : ExitStatus::refused, message});
  }
  return findingsIn(command, *contract);
}

void addContract(Command& program) {
  Command& command = program.addCommand({
      .name = "contract",
      .purpose = "check the policy of every signal",
      .details = "Reads a signal-processing contract, which says of every signal how it may be collected, "
                 "kept, synced, processed and erased, and prints the list of what is wrong with it, one text "
                 "a finding. A contract without findings prints an empty list. With findings the exit status "
                 "is 1."
                 "\n\n"
                 "missing: no policy; retention: kept beyond the erasure of its source; "
                 "unexpected_production: used in production classification without being on the list of "
                 "those that may be; missing_collector_emission: not among what the phone says it emits. "
                 "A data type with two policies ends with status 4.",
      .example = "kestrel contract",
      .exampleDoes = "Checks the contract that Tidewell comes with, and prints the empty list.",
  });
  const auto file =
      std::make_shared<InputFile>(command.arguments(), "A signal-processing contract; - is standard input.",
                                  "the one that Tidewell comes with");
  command.setAction([&command, file] {
    if (!file->isNamed()) {
      return findingsInBundle(command);
    }
    return printedFrom(
        *file,
        [](std::string_view text) { return JSONCoders::decoder.decode<SignalProcessingContract>(text); },
        [&](const SignalProcessingContract& contract) { return findingsIn(command, contract); });
  });
}

}  // namespace

void addFormatCommands(Command& program) {
  addIdentity(program);
  addContract(program);
}

}  // namespace kestrel
