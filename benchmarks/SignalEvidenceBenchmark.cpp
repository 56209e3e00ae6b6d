// What the evidence of signals and their pairs cost, beside the same figures computed with pandas and SciPy.
//
//   signal_evidence_benchmark SCRIPT [ROUNDS]
//
// SCRIPT is benchmarks/signal_evidence.py. Evidence: 10 sources of 20 signals over 3,650 days, all lags and
// comparisons; beside it a checksum over the same observations in memory, which reads every text and every
// value once. Pairs: 300 signals over 3,650 days, with a tenth of the values missing and with none. Each
// round takes them in turns and checks that both sides give the same figures. Then ours alone at several
// sizes. Prints medians, and the medians of the rounds' ratios. Takes 5 ROUNDS at least, which is also what
// it takes by default.

#include <KestrelKit/analytics/SignalEvidenceAnalyzer.h>
#include <KestrelKit/foundation/CivilDay.h>
#include <fmt/format.h>

#include <algorithm>
#include <bit>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <limits>
#include <random>
#include <string>
#include <string_view>
#include <tuple>
#include <utility>
#include <vector>

#include "Timing.h"

namespace {

using kestrel::KestrelState;
using kestrel::SignalEvidenceAnalyzer;
using kestrel::SignalEvidenceLabel;
using kestrel::SignalEvidenceObservation;
using kestrel::SignalEvidenceResult;
using kestrel::SignalPairAssociation;
using kestrel::benchmark::median;

constexpr std::size_t signalsOfSource = 20;
constexpr double none = std::numeric_limits<double>::quiet_NaN();

[[noreturn]] void fail(std::string_view what) {
  fmt::print(stderr, "signal_evidence_benchmark: {}\n", what);
  std::exit(1);
}

/// Milliseconds.
struct Cost {
  double clock = 0;
  double processor = 0;
};

template <class Work>
Cost costOf(const Work& work) {
  const auto begin = std::chrono::steady_clock::now();
  const double processor = kestrel::benchmark::processorMilliseconds(work);
  return {
      .clock = std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - begin).count(),
      .processor = processor};
}

double medianOf(const std::vector<Cost>& costs, double Cost::*figure) {
  std::vector<double> figures(costs.size());
  std::ranges::transform(costs, figures.begin(), figure);
  return median(std::move(figures));
}

/// The median of the rounds' ratios.
double ratio(const std::vector<Cost>& over, const std::vector<Cost>& under, double Cost::*figure) {
  std::vector<double> ratios;
  for (std::size_t round = 0; round < over.size(); ++round) {
    ratios.push_back(over[round].*figure / under[round].*figure);
  }
  return median(std::move(ratios));
}

std::string dayKey(std::size_t day) {
  constexpr std::chrono::local_days first{std::chrono::year{2010} / std::chrono::January / 1};
  return kestrel::civilDayText(first + std::chrono::days{day}).value();
}

/// What one person measured, day by day.
struct Measured {
  std::size_t days;
  std::size_t signals;
  std::vector<double> values{};        ///< A row a day, NaN for none.
  std::vector<std::int32_t> states{};  ///< The label of each day, -1 for none.

  std::string sourceID(std::size_t signal) const {
    return fmt::format("source-{:03}", signal / signalsOfSource);
  }
  std::string signalID(std::size_t signal) const { return fmt::format("signal-{:04}", signal); }

  /// Every second signal in whole numbers, with values that occur again and again.
  static Measured of(std::size_t days, std::size_t signals, double missing) {
    std::mt19937_64 random(1);
    std::normal_distribution normal;
    std::bernoulli_distribution isMissing(missing);
    std::bernoulli_distribution isLabelled(0.7);
    std::bernoulli_distribution changes(0.05);
    std::uniform_int_distribution<std::int32_t> anyState(0, 7);
    Measured measured{.days = days, .signals = signals};
    std::int32_t state = anyState(random);
    for (std::size_t day = 0; day < days; ++day) {
      state = changes(random) ? anyState(random) : state;
      measured.states.push_back(isLabelled(random) ? state : -1);
      for (std::size_t signal = 0; signal < signals; ++signal) {
        const double value = normal(random) + 0.02 * static_cast<double>(signal % 5) * state;
        measured.values.push_back(isMissing(random) ? none
                                  : signal % 2 == 0 ? value
                                                    : static_cast<double>(std::int64_t(60 + 10 * value)));
      }
    }
    return measured;
  }

  SignalEvidenceObservation observation(std::size_t day, std::size_t signal) const {
    return {.date = dayKey(day),
            .sourceID = sourceID(signal),
            .signalID = signalID(signal),
            .value = values[day * signals + signal]};
  }

  std::vector<SignalEvidenceObservation> dayByDay() const {
    std::vector<SignalEvidenceObservation> observations;
    observations.reserve(days * signals);
    for (std::size_t day = 0; day < days; ++day) {
      for (std::size_t signal = 0; signal < signals; ++signal) {
        observations.push_back(observation(day, signal));
      }
    }
    std::erase_if(observations, [](const auto& each) { return each.value != each.value; });
    return observations;
  }

  std::vector<SignalEvidenceLabel> labels() const {
    std::vector<SignalEvidenceLabel> all;
    for (std::size_t day = 0; day < days; ++day) {
      if (states[day] >= 0) {
        all.push_back(
            {.date = dayKey(day), .state = KestrelState::allCases[static_cast<std::size_t>(states[day])]});
      }
    }
    return all;
  }

  std::vector<std::string> sources() const {
    std::vector<std::string> all;
    for (std::size_t signal = 0; signal < signals; signal += signalsOfSource) {
      all.push_back(sourceID(signal));
    }
    return all;
  }
};

/// Reads every byte of every text, and every value.
std::uint64_t checksum(const std::vector<SignalEvidenceObservation>& observations) {
  std::uint64_t sum = 0;
  for (const SignalEvidenceObservation& observation : observations) {
    for (const std::string* text : {&observation.date, &observation.sourceID, &observation.signalID}) {
      for (const char byte : *text) {
        sum += static_cast<unsigned char>(byte);
      }
    }
    sum += std::bit_cast<std::uint64_t>(observation.value);
  }
  return sum;
}

template <class Number>
void write(const std::filesystem::path& path, const std::vector<Number>& numbers) {
  std::ofstream(path, std::ios::binary)
      .write(reinterpret_cast<const char*>(numbers.data()),
             static_cast<std::streamsize>(numbers.size() * sizeof(Number)));
}

/// What the script reads.
void writeMeasured(const std::filesystem::path& folder, const Measured& measured) {
  write(folder / "values", measured.values);
  write(folder / "states", measured.states);
  std::ofstream names(folder / "names");
  for (std::size_t signal = 0; signal < measured.signals; ++signal) {
    names << measured.sourceID(signal) << ' ' << measured.signalID(signal) << '\n';
  }
}

/// Our figures, in the order in which the script has its own.
std::vector<double> figuresOf(const std::vector<SignalEvidenceResult>& results) {
  std::vector<double> figures;
  for (const auto& result : results) {
    for (const auto& each : result.associations) {
      figures.insert(figures.end(),
                     {static_cast<double>(each.referenceDays), static_cast<double>(each.comparisonDays),
                      each.standardizedDifference, each.confidenceInterval.lower,
                      each.confidenceInterval.upper, each.pValue, each.adjustedPValue});
    }
  }
  return figures;
}

std::vector<double> figuresOf(const std::vector<SignalPairAssociation>& pairs) {
  std::vector<double> figures(pairs.size());
  std::ranges::transform(pairs, figures.begin(), &SignalPairAssociation::spearmanRho);
  return figures;
}

/// Has the script compute the same and compare it.
Cost askPython(const std::string& script, std::string_view task, const std::filesystem::path& folder,
               const Measured& measured) {
  const auto command = fmt::format("/usr/bin/python3 -B '{}' {} '{}' {} {}", script, task, folder.string(),
                                   measured.days, measured.signals);
  Cost cost;
  std::FILE* pipe = popen(command.c_str(), "r");
  const bool answered = pipe != nullptr && std::fscanf(pipe, "%lf %lf", &cost.clock, &cost.processor) == 2;
  if (pipe == nullptr || pclose(pipe) != 0 || !answered) {
    fail(
        "the script failed: it needs Debian's python3-pandas, python3-scipy and python3-statsmodels, and "
        "figures that agree");
  }
  return cost;
}

std::vector<SignalEvidenceResult> analyze(const std::vector<std::string>& sources,
                                          const std::vector<SignalEvidenceObservation>& observations,
                                          const std::vector<SignalEvidenceLabel>& labels) {
  return SignalEvidenceAnalyzer::analyze(sources, observations, labels,
                                         SignalEvidenceAnalyzer::usualMinimumDays,
                                         SignalEvidenceAnalyzer::usualMinimumEffect);
}

std::vector<SignalPairAssociation> relate(const std::vector<SignalEvidenceObservation>& observations) {
  return SignalEvidenceAnalyzer::pairs(observations, SignalEvidenceAnalyzer::usualMinimumDays);
}

/// Keeps a result from being optimized away.
void use(std::uint64_t sum) {
  if (sum == 0) {
    fail("nothing was observed");
  }
}

void measureEvidence(const std::string& script, int rounds, const std::filesystem::path& folder) {
  constexpr std::size_t days = 3'650;
  constexpr std::size_t signals = 10 * signalsOfSource;
  const auto measured = Measured::of(days, signals, 0);
  writeMeasured(folder, measured);
  const auto sources = measured.sources();
  const auto labels = measured.labels();
  const auto dayByDay = measured.dayByDay();
  auto signalBySignal = dayByDay;
  std::ranges::sort(signalBySignal, {}, [](const auto& each) { return std::tie(each.signalID, each.date); });
  auto shuffled = dayByDay;
  std::ranges::shuffle(shuffled, std::mt19937_64(1));

  struct Order {
    const char* name;
    std::vector<SignalEvidenceObservation> observations;
    std::vector<Cost> ours{};
    std::vector<Cost> sum{};
  } orders[] = {
      {"day by day", dayByDay},
      {"signal by signal", signalBySignal},
      {"shuffled", shuffled},
  };
  std::vector<Cost> python;
  for (int round = 0; round < rounds; ++round) {
    for (Order& order : orders) {
      order.sum.push_back(costOf([&] { use(checksum(order.observations)); }));
      std::vector<SignalEvidenceResult> results;
      order.ours.push_back(costOf([&] { results = analyze(sources, order.observations, labels); }));
      write(folder / "figures", figuresOf(results));
    }
    python.push_back(askPython(script, "evidence", folder, measured));
  }

  fmt::print("| observations | ours, ms | pandas and SciPy, ms | ratio | checksum, ms | ratio |\n");
  fmt::print("|---|--:|--:|--:|--:|--:|\n");
  for (const Order& order : orders) {
    fmt::print("| {} | {:.1f} | {:.0f} | {:.0f} | {:.1f} | {:.2f} |\n", order.name,
               medianOf(order.ours, &Cost::processor), medianOf(python, &Cost::processor),
               ratio(python, order.ours, &Cost::processor), medianOf(order.sum, &Cost::processor),
               ratio(order.ours, order.sum, &Cost::processor));
  }
  std::fflush(stdout);
}

void measurePairs(const std::string& script, int rounds, const std::filesystem::path& folder) {
  constexpr std::size_t days = 3'650;
  constexpr std::size_t signals = 300;
  fmt::print(
      "\n| values | ours, ms by the clock | pandas, ms | ratio | ours, ms of processor time | pandas, ms "
      "| ratio | ours, µs a pair |\n");
  fmt::print("|---|--:|--:|--:|--:|--:|--:|--:|\n");
  for (const auto& [name, missing] : {std::pair("a tenth missing", 0.1), std::pair("none missing", 0.0)}) {
    const auto measured = Measured::of(days, signals, missing);
    writeMeasured(folder, measured);
    const auto observations = measured.dayByDay();
    std::vector<Cost> ours;
    std::vector<Cost> python;
    for (int round = 0; round < rounds; ++round) {
      std::vector<SignalPairAssociation> pairs;
      ours.push_back(costOf([&] { pairs = relate(observations); }));
      write(folder / "figures", figuresOf(pairs));
      python.push_back(askPython(script, "pairs", folder, measured));
    }
    const double clock = medianOf(ours, &Cost::clock);
    fmt::print("| {} | {:.0f} | {:.0f} | {:.1f} | {:.0f} | {:.0f} | {:.1f} | {:.2f} |\n", name, clock,
               medianOf(python, &Cost::clock), ratio(python, ours, &Cost::clock),
               medianOf(ours, &Cost::processor), medianOf(python, &Cost::processor),
               ratio(python, ours, &Cost::processor), clock * 1e3 / (signals * (signals - 1) / 2));
    std::fflush(stdout);
  }
}

void measureGrowth(int rounds) {
  fmt::print("\n| signals | days | observations | evidence, ms | ns an observation | checksum, ns |\n");
  fmt::print("|--:|--:|--:|--:|--:|--:|\n");
  for (const auto& [signals, days] : {std::pair<std::size_t, std::size_t>(200, 365),
                                      {200, 3'650},
                                      {200, 36'500},
                                      {20, 3'650},
                                      {2'000, 3'650}}) {
    const auto measured = Measured::of(days, signals, 0);
    const auto sources = measured.sources();
    const auto labels = measured.labels();
    const auto observations = measured.dayByDay();
    std::vector<Cost> ours;
    std::vector<Cost> sum;
    for (int round = 0; round < rounds; ++round) {
      ours.push_back(costOf([&] { analyze(sources, observations, labels); }));
      sum.push_back(costOf([&] { use(checksum(observations)); }));
    }
    const double nanoseconds = 1e6 / static_cast<double>(observations.size());
    const double cost = medianOf(ours, &Cost::processor);
    fmt::print("| {} | {} | {} | {:.1f} | {:.1f} | {:.1f} |\n", signals, days, observations.size(), cost,
               cost * nanoseconds, medianOf(sum, &Cost::processor) * nanoseconds);
    std::fflush(stdout);
  }
  for (const auto& [name, missing] : {std::pair("a tenth missing", 0.1), std::pair("none missing", 0.0)}) {
    fmt::print("\n| pairs, {} | days | processor time, ms | µs a pair | ns a pair and day |\n", name);
    fmt::print("|--:|--:|--:|--:|--:|\n");
    for (const auto& [days, signals] : {std::pair<std::size_t, std::size_t>(3'650, 100),
                                        {3'650, 300},
                                        {3'650, 900},
                                        {1'000, 300},
                                        {10'000, 300}}) {
      const auto observations = Measured::of(days, signals, missing).dayByDay();
      std::vector<Cost> costs;
      for (int round = 0; round < rounds; ++round) {
        costs.push_back(costOf([&] { relate(observations); }));
      }
      const double cost = medianOf(costs, &Cost::processor);
      const auto pairs = static_cast<double>(signals * (signals - 1) / 2);
      fmt::print("| {} | {} | {:.0f} | {:.2f} | {:.2f} |\n", pairs, days, cost, cost * 1e3 / pairs,
                 cost * 1e6 / pairs / static_cast<double>(days));
      std::fflush(stdout);
    }
  }
}

}  // namespace

int main(int count, char** arguments) {
  constexpr int fewestRounds = 5;
  const int rounds =
      count > 2 ? std::atoi(arguments[2]) : fewestRounds;  // NOLINT(cert-err34-c): 0 is refused below
  if (count < 2 || rounds < fewestRounds) {
    fail("usage: signal_evidence_benchmark SCRIPT [ROUNDS], with 5 rounds at least");
  }
  const auto folder =
      std::filesystem::temp_directory_path() / fmt::format("signal-evidence-{}", std::random_device()());
  std::filesystem::create_directory(folder);
  measureEvidence(arguments[1], rounds, folder);
  measurePairs(arguments[1], rounds, folder);
  measureGrowth(rounds);
  std::filesystem::remove_all(folder);
}
