#include <KestrelKit/formats/AggregateRecordV2.h>
#include <KestrelKit/formats/BundledSignalProcessingContract.h>
#include <KestrelKit/formats/IOSAggregateSignalContract.h>
#include <KestrelKit/foundation/JsonField.h>
#include <KestrelKit/foundation/Record.h>
#include <KestrelKit/model/JSONCoders.h>
#include <kestrel/FormatCommands.h>
#include <kestrel/JsonCommand.h>

#include <cstddef>
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

/// A list whose elements fail each by itself; an element that did is absent.
template <class T>
struct EachOf {
  std::vector<std::optional<T>> elements{};
};

}  // namespace

template <class T>
struct JsonForm<EachOf<T>> {
  static std::optional<EachOf<T>> read(JsonReader& value) {
    EachOf<T> list;
    const bool isList = value.forEachElement([&](JsonReader& element) {
      list.elements.push_back(JsonForm<T>::read(element));
      if (!list.elements.back()) {
        element.drop();
      }
    });
    if (!isList) {
      return std::nullopt;
    }
    return list;
  }
};

namespace {

/// The elements of the list `json`, or what is wrong with each.
template <class T>
std::expected<std::vector<std::expected<T, JsonError>>, JsonError> eachOf(std::string_view json) {
  std::vector<JsonError> wrong;
  auto list = JSONCoders::decoder.decode<EachOf<T>>(json, &wrong);
  if (!list) {
    return std::unexpected(list.error());
  }
  std::vector<std::expected<T, JsonError>> each;
  each.reserve(list->elements.size());
  auto error = wrong.begin();
  for (auto& element : list->elements) {
    if (element) {
      each.push_back(*std::move(element));
    } else {
      each.push_back(std::unexpected(std::move(*error++)));
    }
  }
  return each;
}

/// The identities of the list `json`. Which form an element has may be said after its other fields, and what
/// that form does not need is not judged: so the list is read as each of them.
std::expected<std::vector<std::string>, JsonError> identitiesIn(std::string_view json) {
  const auto forms = eachOf<IdentityForm>(json);
  if (!forms) {
    return std::unexpected(forms.error());
  }
  const auto values = eachOf<ValueContent>(json);
  const auto deletions = eachOf<DeletionContent>(json);
  std::vector<std::string> identities;
  identities.reserve(forms->size());
  const auto add = [&](const auto& content) -> std::expected<void, JsonError> {
    if (!content) {
      return std::unexpected(content.error());
    }
    identities.push_back(content->identity());
    return {};
  };
  for (std::size_t index = 0; index < forms->size(); ++index) {
    const auto& form = (*forms)[index];
    if (!form) {
      return std::unexpected(form.error());
    }
    const auto added = form->deleted.value_or(false) ? add((*deletions)[index]) : add((*values)[index]);
    if (!added) {
      return std::unexpected(added.error());
    }
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
