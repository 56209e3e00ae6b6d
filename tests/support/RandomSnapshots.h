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
                                    R"({"b":[1,2],"a":null,"b":{}})",
                                    R"([{"date":"2024-05-01","value":-0}])"),
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
    return gen::exec([] {
      R record;
      record.date = *anyText();
      record.sleep_hours = *anyFloat();
      record.posts = *anyInteger();
      record.sentiment = *anyFloat();
      record.steps = *anyInteger();
      record.sentiment_stdev = *orNone(anyFloat());
      record.avg_hrv = *anyHrv();
      return record;
    });
  }
};

template <>
struct Arbitrary<kestrel::Baseline> {
  static Gen<kestrel::Baseline> arbitrary() {
    using namespace kestrel::testing;
    using R = kestrel::Baseline;
    return gen::exec([] {
      R record;
      record.avgSleep = *anyFloat();
      record.avgPosts = *anyFloat();
      record.avgSentiment = *anyFloat();
      return record;
    });
  }
};

template <>
struct Arbitrary<kestrel::StateClassification> {
  static Gen<kestrel::StateClassification> arbitrary() {
    using namespace kestrel::testing;
    using R = kestrel::StateClassification;
    return gen::exec([] {
      R record;
      record.date = *anyText();
      record.predictedState = *anyCase<kestrel::KestrelState>();
      record.confidence = *anyFloat();
      record.reasons = *listOf(anyText());
      record.source = *anyCase<kestrel::ClassificationSource>();
      record.isConfirmed = *orNone(gen::arbitrary<bool>());
      record.selfReportConfidence = *orNone(anyFloat());
      record.selfReportNotes = *orNone(anyText());
      record.isValidated = *orNone(gen::arbitrary<bool>());
      return record;
    });
  }
};

template <>
struct Arbitrary<kestrel::Prediction> {
  static Gen<kestrel::Prediction> arbitrary() {
    using namespace kestrel::testing;
    using R = kestrel::Prediction;
    return gen::exec([] {
      R record;
      record.date = *anyText();
      record.predictedState = *anyCase<kestrel::KestrelState>();
      record.probability = *anyFloat();
      return record;
    });
  }
};

template <>
struct Arbitrary<kestrel::SleepSession> {
  static Gen<kestrel::SleepSession> arbitrary() {
    using namespace kestrel::testing;
    using R = kestrel::SleepSession;
    return gen::exec([] {
      R record;
      record.date = *anyText();
      record.midSleepMinutes = *anyFloat();
      record.asleepMinutes = *anyFloat();
      return record;
    });
  }
};

template <>
struct Arbitrary<kestrel::ActivityRhythm> {
  static Gen<kestrel::ActivityRhythm> arbitrary() {
    using namespace kestrel::testing;
    using R = kestrel::ActivityRhythm;
    return gen::exec([] {
      R record;
      record.m10OnsetHour = *anyFloat();
      record.m10 = *anyFloat();
      record.l5 = *anyFloat();
      record.mesor = *anyFloat();
      record.relativeAmplitude = *anyFloat();
      return record;
    });
  }
};

template <>
struct Arbitrary<kestrel::CircadianFeatures> {
  static Gen<kestrel::CircadianFeatures> arbitrary() {
    using namespace kestrel::testing;
    using R = kestrel::CircadianFeatures;
    return gen::exec([] {
      R record;
      record.date = *anyText();
      record.phaseDeviationHours = *orNone(anyFloat());
      record.sleepRegularitySDMinutes = *orNone(anyFloat());
      record.durationSDMinutes = *orNone(anyFloat());
      record.activity = *orNone(gen::arbitrary<kestrel::ActivityRhythm>());
      record.stepVariabilityCV = *orNone(anyFloat());
      record.restingHRDeviationBpm = *orNone(anyFloat());
      record.coverageNights = *anyFloat();
      record.daysObserved = *anyInteger();
      return record;
    });
  }
};

template <>
struct Arbitrary<kestrel::SelfReportData> {
  static Gen<kestrel::SelfReportData> arbitrary() {
    using namespace kestrel::testing;
    using R = kestrel::SelfReportData;
    return gen::exec([] {
      R record;
      record.state = *anyCase<kestrel::KestrelState>();
      record.confidence = *anyInteger();
      record.notes = *orNone(anyText());
      record.source = *anyCase<kestrel::SelfReportSource>();
      record.keyword = *orNone(anyText());
      return record;
    });
  }
};

template <>
struct Arbitrary<kestrel::SnapshotSelfReport> {
  static Gen<kestrel::SnapshotSelfReport> arbitrary() {
    using namespace kestrel::testing;
    using R = kestrel::SnapshotSelfReport;
    return gen::exec([] {
      R record;
      record.date = *anyText();
      record.state = *anyText();
      record.confidence = *orNone(anyInteger());
      record.source = *orNone(anyText());
      record.notes = *orNone(anyText());
      record.observedAt = *orNone(anyInstant());
      return record;
    });
  }
};

template <>
struct Arbitrary<kestrel::SnapshotSelfReportList> {
  static Gen<kestrel::SnapshotSelfReportList> arbitrary() {
    using namespace kestrel::testing;
    using R = kestrel::SnapshotSelfReportList;
    return gen::exec([] {
      R record;
      record.reports = *listOf(gen::arbitrary<kestrel::SnapshotSelfReport>());
      return record;
    });
  }
};

template <>
struct Arbitrary<kestrel::VizDay> {
  static Gen<kestrel::VizDay> arbitrary() {
    using namespace kestrel::testing;
    using R = kestrel::VizDay;
    return gen::exec([] {
      R record;
      record.date = *anyText();
      record.posts = *orNone(anyInteger());
      record.avgSentiment = *orNone(anyFloat());
      record.sentimentStdev = *orNone(anyFloat());
      record.replyCount = *orNone(anyInteger());
      record.quoteCount = *orNone(anyInteger());
      record.repostCount = *orNone(anyInteger());
      record.likeCount = *orNone(anyInteger());
      record.followCount = *orNone(anyInteger());
      record.mentionCount = *orNone(anyInteger());
      record.linkCount = *orNone(anyInteger());
      record.hashtagCount = *orNone(anyInteger());
      record.avgPostLength = *orNone(anyFloat());
      record.absolutistRate = *orNone(anyFloat());
      record.lateNightPosts = *orNone(anyInteger());
      record.postsByHour = *orNone(listOf(anyInteger()));
      return record;
    });
  }
};

template <>
struct Arbitrary<kestrel::VizSummary> {
  static Gen<kestrel::VizSummary> arbitrary() {
    using namespace kestrel::testing;
    using R = kestrel::VizSummary;
    return gen::exec([] {
      R record;
      record.totalPosts = *orNone(anyInteger());
      record.totalDays = *orNone(anyInteger());
      record.avgSentiment = *orNone(anyFloat());
      return record;
    });
  }
};

template <>
struct Arbitrary<kestrel::HealthDay> {
  static Gen<kestrel::HealthDay> arbitrary() {
    using namespace kestrel::testing;
    using R = kestrel::HealthDay;
    return gen::exec([] {
      R record;
      record.date = *anyText();
      record.steps = *orNone(anyInteger());
      record.sleepHours = *orNone(anyFloat());
      record.avgHrv = *orNone(anyFloat());
      record.hrvAvg = *orNone(anyFloat());
      record.avgHeartRate = *orNone(anyFloat());
      record.heartRateAvg = *orNone(anyFloat());
      record.spo2Avg = *orNone(anyFloat());
      record.source = *orNone(anyText());
      return record;
    });
  }
};

template <>
struct Arbitrary<kestrel::OnDeviceAggregate> {
  static Gen<kestrel::OnDeviceAggregate> arbitrary() {
    using namespace kestrel::testing;
    using R = kestrel::OnDeviceAggregate;
    return gen::exec([] {
      R record;
      record.date = *anyText();
      record.dataType = *anyText();
      record.value = *anyFloat();
      record.unit = *anyText();
      record.sourceType = *anyText();
      record.sourceInstanceKey = *anyText();
      record.capturedAt = *orNone(anyText());
      record.displayName = *orNone(anyText());
      record.lastSuccessfulAt = *orNone(anyText());
      record.freshnessDeadline = *orNone(anyText());
      record.stale = *orNone(gen::arbitrary<bool>());
      record.classifierStatus = *orNone(anyText());
      return record;
    });
  }
};

template <>
struct Arbitrary<kestrel::CorrelationSummary> {
  static Gen<kestrel::CorrelationSummary> arbitrary() {
    using namespace kestrel::testing;
    return gen::exec([] {
      kestrel::CorrelationCoefficients coefficients;
      coefficients.postsVsSleep = *orNone(anyFloat());
      coefficients.sentimentVsSleep = *orNone(anyFloat());
      coefficients.stepsVsPosts = *orNone(anyFloat());
      coefficients.stepsVsSentiment = *orNone(anyFloat());
      kestrel::CorrelationSummary record;
      record.totalOverlappingDays = *orNone(anyInteger());
      record.highRiskDays = *orNone(anyInteger());
      record.correlations = *orNone(gen::just(coefficients));
      return record;
    });
  }
};

template <>
struct Arbitrary<kestrel::DashboardSnapshot> {
  static Gen<kestrel::DashboardSnapshot> arbitrary() {
    using namespace kestrel;
    using namespace kestrel::testing;
    return gen::exec([] {
      VizTier viz;
      viz.summary = *orNone(gen::arbitrary<VizSummary>());
      viz.dailyRaw = *orNone(lossy<VizDay>());
      CommunicationTier communication;
      communication.dailySentiment = *orNone(anyJson());
      communication.dailyAbsolutist = *orNone(anyJson());
      EssentialTier essential;
      essential.viz = *orNone(gen::just(viz));
      essential.communication = *orNone(gen::just(communication));
      HealthTier health;
      health.healthRaw = *orNone(lossy<HealthDay>());
      health.onDeviceAggregatesRaw = *orNone(lossy<OnDeviceAggregate>());
      CorrelationTier correlation;
      correlation.summary = *orNone(gen::arbitrary<CorrelationSummary>());
      OptionalTier optional;
      optional.correlation = *orNone(gen::just(correlation));
      DashboardSnapshot record;
      record.essential = *orNone(gen::just(essential));
      record.health = *orNone(gen::just(health));
      record.optional = *orNone(gen::just(optional));
      return record;
    });
  }
};

}  // namespace rc
