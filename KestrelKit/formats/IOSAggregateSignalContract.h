#pragma once

#include <KestrelKit/formats/SignalProcessingContract.h>

#include <string>
#include <vector>

namespace kestrel {

/// What a contract must say of the daily values that the phone's collectors produce, which are all cases of
/// AggregateRecordV2::DataType: a policy for each, none kept beyond the erasure of its source, none used in
/// production that is not on the short list of those that may be.
struct IOSAggregateSignalContract {
  IOSAggregateSignalContract() = delete;

  /// What is wrong with `contract`; empty when it is valid. Either one of these alone,
  ///
  ///     unsupported_schema_version           its version is not 2
  ///     missing_ios_collector_emission_set   it does not say what the collector "ios" emits
  ///
  /// or, in the declaration order of the data types, at most one of the first three for each, then the last:
  ///
  ///     missing:TYPE                      has no entry
  ///     retention:TYPE                    may be kept otherwise than until_source_erasure
  ///     unexpected_production:TYPE        feeds production classification and is not on the list
  ///     missing_collector_emission:TYPE   is not among what the collector "ios" emits
  ///
  /// Two entries of one data type, in a contract of version 2, are a programming error.
  static std::vector<std::string> validate(const SignalProcessingContract& contract);
};

}  // namespace kestrel
