#include <KestrelKit/formats/AggregateRecordV2.h>
#include <KestrelKit/formats/IOSAggregateSignalContract.h>
#include <KestrelKit/foundation/ProgrammingError.h>
#include <KestrelKit/foundation/QuotedText.h>

#include <algorithm>
#include <string_view>
#include <unordered_map>
#include <unordered_set>

namespace kestrel {
namespace {

constexpr std::int64_t supportedVersion = 2;
constexpr const char* collector = "ios";
constexpr std::string_view requiredRetention = "until_source_erasure";
constexpr std::string_view production = "production";

/// The signals that may feed production classification.
constexpr std::string_view productionSignals[] = {"steps_daily", "sleep_minutes_daily", "hrv_ms_daily_avg"};

using Entries = std::unordered_map<std::string_view, const SignalProcessingContractEntry*>;

Entries entriesOf(const SignalProcessingContract& contract) {
  Entries entries;
  for (const SignalProcessingContractEntry& entry : contract.signals) {
    if (!entries.emplace(entry.dataType, &entry).second) {
      programmingError("the contract has two entries of the data type " + quoted(entry.dataType));
    }
  }
  return entries;
}

/// What the collector emits; null where the contract does not say.
const std::vector<std::string>* emissionSetOf(const SignalProcessingContract& contract) {
  if (!contract.collectorEmissionSets) {
    return nullptr;
  }
  const auto set = contract.collectorEmissionSets->find(collector);
  return set == contract.collectorEmissionSets->end() ? nullptr : &set->second;
}

/// What is wrong with the entry of one data type, empty for nothing.
std::string_view faultOf(const SignalProcessingContractEntry& entry) {
  if (entry.retention != requiredRetention) {
    return "retention:";
  }
  if (entry.classifierPosture == production &&
      std::ranges::find(productionSignals, entry.dataType) == std::ranges::end(productionSignals)) {
    return "unexpected_production:";
  }
  return {};
}

}  // namespace

std::vector<std::string> IOSAggregateSignalContract::validate(const SignalProcessingContract& contract) {
  if (contract.schemaVersion != supportedVersion) {
    return {"unsupported_schema_version"};
  }
  const Entries entries = entriesOf(contract);
  const std::vector<std::string>* emissionSet = emissionSetOf(contract);
  if (emissionSet == nullptr) {
    return {"missing_ios_collector_emission_set"};
  }
  std::vector<std::string> errors;
  const auto add = [&](std::string_view fault, std::string_view dataType) {
    errors.push_back(std::string(fault).append(dataType));
  };
  for (const auto dataType : AggregateRecordV2::DataType::allCases) {
    const auto entry = entries.find(dataType.rawValue());
    const std::string_view fault = entry == entries.end() ? "missing:" : faultOf(*entry->second);
    if (!fault.empty()) {
      add(fault, dataType.rawValue());
    }
  }
  const std::unordered_set<std::string_view> emitted(emissionSet->begin(), emissionSet->end());
  for (const auto dataType : AggregateRecordV2::DataType::allCases) {
    if (!emitted.contains(dataType.rawValue())) {
      add("missing_collector_emission:", dataType.rawValue());
    }
  }
  return errors;
}

}  // namespace kestrel
