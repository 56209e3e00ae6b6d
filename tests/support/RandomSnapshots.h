#pragma once

#include <KestrelKit/circadian/ActivityRhythm.h>
#include <KestrelKit/circadian/CircadianFeatures.h>
#include <KestrelKit/circadian/SleepSession.h>
#include <KestrelKit/formats/DashboardSnapshot.h>
#include <KestrelKit/formats/SelfReportData.h>
#include <KestrelKit/formats/SnapshotSelfReportList.h>
#include <KestrelKit/foundation/JsonText.h>
#include <KestrelKit/model/Baseline.h>
#include <KestrelKit/model/DailyMetrics.h>
#include <KestrelKit/model/JSONCoders.h>
#include <KestrelKit/model/Prediction.h>
#include <KestrelKit/model/StateClassification.h>
#include <support/RandomFields.h>

#include <rapidcheck.h>

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

// Random records of a day, a night and a dashboard snapshot, with optional fields present and absent: what
// rc::gen::arbitrary gives.

namespace kestrel::testing {

inline rc::Gen<std::int64_t> anyInteger() { return rc::gen::arbitrary<std::int64_t>(); }

inline rc::Gen<HrvInput> anyHrv() {
  return rc::gen::oneOf(rc::gen::just(HrvInput::notProvided), rc::gen::just(HrvInput::missing),
                        rc::gen::map(anyFloat(), HrvInput::measured));
}

/// JSON of any form but `null`, which is absent where it is optional.
inline rc::Gen<JsonText> anyJson() {
  return rc::gen::map(
      rc::gen::element<std::string>("[]", "{}", "0.10", "1e400", "true", "\"a b\"", "\"\\u00e9\\\"\"",
                                    R"({"b":[1,2],"a":null,"b":{}})", R"([{"date":"2024-05-01","value":-0}])"),
      [](const std::string& json) { return JSONCoders::decoder.decode<JsonText>(json).value(); });
}

template <class T>
rc::Gen<LossyArray<T>> lossy() {
  return rc::gen::map(listOf(rc::gen::arbitrary<T>()),
                      [](std::vector<T> elements) { return LossyArray<T>{std::move(elements)}; });
}

}  // namespace kestrel::testing

namespace rc {

template <>
struct Arbitrary<kestrel::DailyMetrics> {
  static Gen<kestrel::DailyMetrics> arbitrary() {
    using namespace kestrel::testing;
    using R = kestrel::DailyMetrics;
    return gen::build<R>(gen::set(&R::date, anyText()), gen::set(&R::sleep_hours, anyFloat()),
                         gen::set(&R::posts), gen::set(&R::sentiment, anyFloat()), gen::set(&R::steps),
                         gen::set(&R::sentiment_stdev, orNone(anyFloat())), gen::set(&R::avg_hrv, anyHrv()));
  }
};

template <>
struct Arbitrary<kestrel::Baseline> {
  static Gen<kestrel::Baseline> arbitrary() {
    using namespace kestrel::testing;
    using R = kestrel::Baseline;
    return gen::build<R>(gen::set(&R::avgSleep, anyFloat()), gen::set(&R::avgPosts, anyFloat()),
                         gen::set(&R::avgSentiment, anyFloat()));
  }
};

template <>
struct Arbitrary<kestrel::StateClassification> {
  static Gen<kestrel::StateClassification> arbitrary() {
    using namespace kestrel::testing;
    using R = kestrel::StateClassification;
    return gen::build<R>(
        gen::set(&R::date, anyText()), gen::set(&R::predictedState, anyCase<kestrel::KestrelState>()),
        gen::set(&R::confidence, anyFloat()), gen::set(&R::reasons, listOf(anyText())),
        gen::set(&R::source, anyCase<kestrel::ClassificationSource>()),
        gen::set(&R::isConfirmed, orNone(gen::arbitrary<bool>())),
        gen::set(&R::selfReportConfidence, orNone(anyFloat())),
        gen::set(&R::selfReportNotes, orNone(anyText())),
        gen::set(&R::isValidated, orNone(gen::arbitrary<bool>())));
  }
};

template <>
struct Arbitrary<kestrel::Prediction> {
  static Gen<kestrel::Prediction> arbitrary() {
    using namespace kestrel::testing;
    using R = kestrel::Prediction;
    return gen::build<R>(gen::set(&R::date, anyText()),
                         gen::set(&R::predictedState, anyCase<kestrel::KestrelState>()),
                         gen::set(&R::probability, anyFloat()));
  }
};

template <>
struct Arbitrary<kestrel::SleepSession> {
  static Gen<kestrel::SleepSession> arbitrary() {
    using namespace kestrel::testing;
    using R = kestrel::SleepSession;
    return gen::build<R>(gen::set(&R::date, anyText()), gen::set(&R::midSleepMinutes, anyFloat()),
                         gen::set(&R::asleepMinutes, anyFloat()));
  }
};

template <>
struct Arbitrary<kestrel::ActivityRhythm> {
  static Gen<kestrel::ActivityRhythm> arbitrary() {
    using namespace kestrel::testing;
    using R = kestrel::ActivityRhythm;
    return gen::build<R>(gen::set(&R::m10OnsetHour, anyFloat()), gen::set(&R::m10, anyFloat()),
                         gen::set(&R::l5, anyFloat()), gen::set(&R::mesor, anyFloat()),
                         gen::set(&R::relativeAmplitude, anyFloat()));
  }
};

template <>
struct Arbitrary<kestrel::CircadianFeatures> {
  static Gen<kestrel::CircadianFeatures> arbitrary() {
    using namespace kestrel::testing;
    using R = kestrel::CircadianFeatures;
    return gen::build<R>(gen::set(&R::date, anyText()), gen::set(&R::phaseDeviationHours, orNone(anyFloat())),
                         gen::set(&R::sleepRegularitySDMinutes, orNone(anyFloat())),
                         gen::set(&R::durationSDMinutes, orNone(anyFloat())),
                         gen::set(&R::activity, orNone(gen::arbitrary<kestrel::ActivityRhythm>())),
                         gen::set(&R::stepVariabilityCV, orNone(anyFloat())),
                         gen::set(&R::restingHRDeviationBpm, orNone(anyFloat())),
                         gen::set(&R::coverageNights, anyFloat()), gen::set(&R::daysObserved));
  }
};

template <>
struct Arbitrary<kestrel::SelfReportData> {
  static Gen<kestrel::SelfReportData> arbitrary() {
    using namespace kestrel::testing;
    using R = kestrel::SelfReportData;
    return gen::build<R>(gen::set(&R::state, anyCase<kestrel::KestrelState>()), gen::set(&R::confidence),
                         gen::set(&R::notes, orNone(anyText())),
                         gen::set(&R::source, anyCase<kestrel::SelfReportSource>()),
                         gen::set(&R::keyword, orNone(anyText())));
  }
};

template <>
struct Arbitrary<kestrel::SnapshotSelfReport> {
  static Gen<kestrel::SnapshotSelfReport> arbitrary() {
    using namespace kestrel::testing;
    using R = kestrel::SnapshotSelfReport;
    return gen::build<R>(gen::set(&R::date, anyText()), gen::set(&R::state, anyText()),
                         gen::set(&R::confidence, orNone(anyInteger())),
                         gen::set(&R::source, orNone(anyText())), gen::set(&R::notes, orNone(anyText())),
                         gen::set(&R::observedAt, orNone(anyInstant())));
  }
};

template <>
struct Arbitrary<kestrel::SnapshotSelfReportList> {
  static Gen<kestrel::SnapshotSelfReportList> arbitrary() {
    using namespace kestrel::testing;
    using R = kestrel::SnapshotSelfReportList;
    return gen::build<R>(gen::set(&R::reports, listOf(gen::arbitrary<kestrel::SnapshotSelfReport>())));
  }
};

template <>
struct Arbitrary<kestrel::VizDay> {
  static Gen<kestrel::VizDay> arbitrary() {
    using namespace kestrel::testing;
    using R = kestrel::VizDay;
    return gen::build<R>(
        gen::set(&R::date, anyText()), gen::set(&R::posts, orNone(anyInteger())),
        gen::set(&R::avgSentiment, orNone(anyFloat())), gen::set(&R::sentimentStdev, orNone(anyFloat())),
        gen::set(&R::replyCount, orNone(anyInteger())), gen::set(&R::quoteCount, orNone(anyInteger())),
        gen::set(&R::repostCount, orNone(anyInteger())), gen::set(&R::likeCount, orNone(anyInteger())),
        gen::set(&R::followCount, orNone(anyInteger())), gen::set(&R::mentionCount, orNone(anyInteger())),
        gen::set(&R::linkCount, orNone(anyInteger())), gen::set(&R::hashtagCount, orNone(anyInteger())),
        gen::set(&R::avgPostLength, orNone(anyFloat())), gen::set(&R::absolutistRate, orNone(anyFloat())),
        gen::set(&R::lateNightPosts, orNone(anyInteger())),
        gen::set(&R::postsByHour, orNone(listOf(anyInteger()))));
  }
};

template <>
struct Arbitrary<kestrel::VizSummary> {
  static Gen<kestrel::VizSummary> arbitrary() {
    using namespace kestrel::testing;
    using R = kestrel::VizSummary;
    return gen::build<R>(gen::set(&R::totalPosts, orNone(anyInteger())),
                         gen::set(&R::totalDays, orNone(anyInteger())),
                         gen::set(&R::avgSentiment, orNone(anyFloat())));
  }
};

template <>
struct Arbitrary<kestrel::HealthDay> {
  static Gen<kestrel::HealthDay> arbitrary() {
    using namespace kestrel::testing;
    using R = kestrel::HealthDay;
    return gen::build<R>(
        gen::set(&R::date, anyText()), gen::set(&R::steps, orNone(anyInteger())),
        gen::set(&R::sleepHours, orNone(anyFloat())), gen::set(&R::avgHrv, orNone(anyFloat())),
        gen::set(&R::hrvAvg, orNone(anyFloat())), gen::set(&R::avgHeartRate, orNone(anyFloat())),
        gen::set(&R::heartRateAvg, orNone(anyFloat())), gen::set(&R::spo2Avg, orNone(anyFloat())),
        gen::set(&R::source, orNone(anyText())));
  }
};

template <>
struct Arbitrary<kestrel::OnDeviceAggregate> {
  static Gen<kestrel::OnDeviceAggregate> arbitrary() {
    using namespace kestrel::testing;
    using R = kestrel::OnDeviceAggregate;
    return gen::build<R>(
        gen::set(&R::date, anyText()), gen::set(&R::dataType, anyText()), gen::set(&R::value, anyFloat()),
        gen::set(&R::unit, anyText()), gen::set(&R::sourceType, anyText()),
        gen::set(&R::sourceInstanceKey, anyText()), gen::set(&R::capturedAt, orNone(anyText())),
        gen::set(&R::displayName, orNone(anyText())), gen::set(&R::lastSuccessfulAt, orNone(anyText())),
        gen::set(&R::freshnessDeadline, orNone(anyText())),
        gen::set(&R::stale, orNone(gen::arbitrary<bool>())),
        gen::set(&R::classifierStatus, orNone(anyText())));
  }
};

template <>
struct Arbitrary<kestrel::DashboardSnapshot> {
  static Gen<kestrel::DashboardSnapshot> arbitrary() {
    using namespace kestrel;
    using namespace kestrel::testing;
    const auto viz = gen::build<VizTier>(gen::set(&VizTier::summary, orNone(gen::arbitrary<VizSummary>())),
                                         gen::set(&VizTier::dailyRaw, orNone(lossy<VizDay>())));
    const auto communication =
        gen::build<CommunicationTier>(gen::set(&CommunicationTier::dailySentiment, orNone(anyJson())),
                                      gen::set(&CommunicationTier::dailyAbsolutist, orNone(anyJson())));
    const auto essential =
        gen::build<EssentialTier>(gen::set(&EssentialTier::viz, orNone(viz)),
                                  gen::set(&EssentialTier::communication, orNone(communication)));
    const auto health = gen::build<HealthTier>(
        gen::set(&HealthTier::healthRaw, orNone(lossy<HealthDay>())),
        gen::set(&HealthTier::onDeviceAggregatesRaw, orNone(lossy<OnDeviceAggregate>())));
    using C = CorrelationCoefficients;
    const auto coefficients = gen::build<C>(
        gen::set(&C::postsVsSleep, orNone(anyFloat())), gen::set(&C::sentimentVsSleep, orNone(anyFloat())),
        gen::set(&C::stepsVsPosts, orNone(anyFloat())), gen::set(&C::stepsVsSentiment, orNone(anyFloat())));
    using S = CorrelationSummary;
    const auto summary = gen::build<S>(gen::set(&S::totalOverlappingDays, orNone(anyInteger())),
                                       gen::set(&S::highRiskDays, orNone(anyInteger())),
                                       gen::set(&S::correlations, orNone(coefficients)));
    const auto correlation =
        gen::build<CorrelationTier>(gen::set(&CorrelationTier::summary, orNone(summary)));
    const auto optional = gen::build<OptionalTier>(gen::set(&OptionalTier::correlation, orNone(correlation)));
    return gen::build<DashboardSnapshot>(gen::set(&DashboardSnapshot::essential, orNone(essential)),
                                         gen::set(&DashboardSnapshot::health, orNone(health)),
                                         gen::set(&DashboardSnapshot::optional, orNone(optional)));
  }
};

}  // namespace rc
