#pragma once

#include <KestrelKit/formats/AggregateBatchV2.h>
#include <KestrelKit/formats/AggregateBatchV2Response.h>
#include <KestrelKit/formats/AggregateRecordV2.h>
#include <KestrelKit/formats/AggregateSourceDeleteResponse.h>
#include <KestrelKit/formats/SignalProcessingContract.h>
#include <KestrelKit/formats/SyncRequest.h>
#include <KestrelKit/formats/SyncResponse.h>
#include <support/RandomFields.h>

#include <rapidcheck.h>

#include <cstdint>
#include <map>
#include <string>
#include <vector>

// Random aggregates, sync records and contracts, with optional fields present and absent: what
// rc::gen::arbitrary gives.

namespace rc {

template <>
struct Arbitrary<kestrel::AggregateRecordV2> {
  static Gen<kestrel::AggregateRecordV2> arbitrary() {
    using namespace kestrel::testing;
    using R = kestrel::AggregateRecordV2;
    return gen::build<R>(
        gen::set(&R::upstreamRecordId, anyText()), gen::set(&R::date, anyText()),
        gen::set(&R::capturedAt, anyInstant()), gen::set(&R::dataType, anyCase<R::DataType>()),
        gen::set(&R::value, orNone(anyFloat())), gen::set(&R::unit, orNone(anyText())),
        gen::set(&R::sampleCount, orNone(gen::arbitrary<std::int64_t>())),
        gen::set(&R::quality, orNone(anyFloat())), gen::set(&R::replacesUpstreamRecordId, orNone(anyText())),
        gen::set(&R::deleted, orNone(gen::arbitrary<bool>())), gen::set(&R::schemaVersion),
        gen::set(&R::originKind, anyText()), gen::set(&R::originId, anyText()));
  }
};

template <>
struct Arbitrary<kestrel::AggregateBatchV2> {
  static Gen<kestrel::AggregateBatchV2> arbitrary() {
    using namespace kestrel::testing;
    using R = kestrel::AggregateBatchV2;
    return gen::build<R>(gen::set(&R::batchId, anyUuid()), gen::set(&R::sourceType, anyCase<R::SourceType>()),
                         gen::set(&R::sourceInstanceKey, anyText()), gen::set(&R::platform, anyText()),
                         gen::set(&R::capturedTimezone, anyText()),
                         gen::set(&R::records, listOf(gen::arbitrary<kestrel::AggregateRecordV2>())));
  }
};

template <>
struct Arbitrary<kestrel::AggregateBatchV2Response> {
  static Gen<kestrel::AggregateBatchV2Response> arbitrary() {
    using R = kestrel::AggregateBatchV2Response;
    return gen::build<R>(gen::set(&R::accepted), gen::set(&R::batchId, kestrel::testing::anyUuid()),
                         gen::set(&R::schemaVersion));
  }
};

template <>
struct Arbitrary<kestrel::AggregateSourceDeleteResponse> {
  static Gen<kestrel::AggregateSourceDeleteResponse> arbitrary() {
    using R = kestrel::AggregateSourceDeleteResponse;
    return gen::build<R>(gen::set(&R::deleted), gen::set(&R::sourceInstanceKey, kestrel::testing::anyText()));
  }
};

template <>
struct Arbitrary<kestrel::SyncRecord> {
  static Gen<kestrel::SyncRecord> arbitrary() {
    using namespace kestrel::testing;
    using R = kestrel::SyncRecord;
    using Metadata = std::map<std::string, std::string>;
    return gen::build<R>(
        gen::set(&R::dataType, anyCase<R::DataType>()), gen::set(&R::value, orNone(anyFloat())),
        gen::set(&R::stringValue, orNone(anyText())), gen::set(&R::unit, orNone(anyText())),
        gen::set(&R::source, anyCase<R::Origin>()), gen::set(&R::deviceId, anyText()),
        gen::set(&R::sampleUuid, anyText()), gen::set(&R::capturedAt, anyInstant()),
        gen::set(&R::tzIdentifier, anyText()), gen::set(&R::metadata, orNone(mapOf<Metadata>(anyText()))));
  }
};

template <>
struct Arbitrary<kestrel::SyncRequest> {
  static Gen<kestrel::SyncRequest> arbitrary() {
    using R = kestrel::SyncRequest;
    return gen::build<R>(
        gen::set(&R::records, kestrel::testing::listOf(gen::arbitrary<kestrel::SyncRecord>())));
  }
};

template <>
struct Arbitrary<kestrel::SyncResponse::SyncRecordError> {
  static Gen<kestrel::SyncResponse::SyncRecordError> arbitrary() {
    using R = kestrel::SyncResponse::SyncRecordError;
    return gen::build<R>(gen::set(&R::index), gen::set(&R::reason, kestrel::testing::anyText()));
  }
};

template <>
struct Arbitrary<kestrel::SyncResponse> {
  static Gen<kestrel::SyncResponse> arbitrary() {
    using R = kestrel::SyncResponse;
    return gen::build<R>(
        gen::set(&R::accepted),
        gen::set(&R::rejected, kestrel::testing::listOf(gen::arbitrary<R::SyncRecordError>())));
  }
};

template <>
struct Arbitrary<kestrel::SignalProcessingContractEntry> {
  static Gen<kestrel::SignalProcessingContractEntry> arbitrary() {
    using namespace kestrel::testing;
    using R = kestrel::SignalProcessingContractEntry;
    using Postures = std::map<std::string, std::string>;
    return gen::build<R>(gen::set(&R::dataType, anyText()), gen::set(&R::displayName, anyText()),
                         gen::set(&R::sources, listOf(anyText())), gen::set(&R::valueKind, anyText()),
                         gen::set(&R::unit, anyText()), gen::set(&R::minimum, orNone(anyFloat())),
                         gen::set(&R::maximum, orNone(anyFloat())), gen::set(&R::integer),
                         gen::set(&R::consentTier, anyText()), gen::set(&R::retention, anyText()),
                         gen::set(&R::backfill, anyText()), gen::set(&R::localProcessing, anyText()),
                         gen::set(&R::cloudSync, anyText()), gen::set(&R::serverProcessing, anyText()),
                         gen::set(&R::classifierPosture, anyText()),
                         gen::set(&R::classifierPostureBySource, mapOf<Postures>(anyText())),
                         gen::set(&R::eraseScope, anyText()),
                         gen::set(&R::unevaluatedReason, orNone(anyText())));
  }
};

template <>
struct Arbitrary<kestrel::SignalProcessingContract> {
  static Gen<kestrel::SignalProcessingContract> arbitrary() {
    using namespace kestrel::testing;
    using R = kestrel::SignalProcessingContract;
    using Sets = std::map<std::string, std::vector<std::string>>;
    return gen::build<R>(
        gen::set(&R::schemaVersion),
        gen::set(&R::signals, listOf(gen::arbitrary<kestrel::SignalProcessingContractEntry>())),
        gen::set(&R::collectorEmissionSets, orNone(mapOf<Sets>(listOf(anyText())))));
  }
};

}  // namespace rc
