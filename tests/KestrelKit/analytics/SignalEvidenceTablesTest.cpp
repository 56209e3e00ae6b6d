// Small tables whose results were worked out by hand, each with its working.

#include <KestrelKit/analytics/SignalEvidenceAnalyzer.h>
#include <KestrelKit/foundation/JsonField.h>
#include <KestrelKit/foundation/Record.h>
#include <KestrelKit/model/JSONCoders.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

namespace kestrel {
namespace {

struct EvidenceTable {
  std::vector<std::string> working{};  // for people
  std::vector<std::string> sources{};
  std::vector<SignalEvidenceObservation> observations{};
  std::vector<SignalEvidenceLabel> labels{};
  std::int64_t minimumDays = 0;
  double minimumEffect = 0;
  std::vector<SignalEvidenceResult> results{};
  std::vector<SignalPairAssociation> pairs{};

  static JsonFields jsonFields() {
    using R = EvidenceTable;
    static constexpr JsonField fields[] = {
        field<&R::working>("working"),           field<&R::sources>("sources"),
        field<&R::observations>("observations"), field<&R::labels>("labels"),
        field<&R::minimumDays>("minimumDays"),   field<&R::minimumEffect>("minimumEffect"),
        field<&R::results>("results"),           field<&R::pairs>("pairs"),
    };
    return fields;
  }
};

TEST(SignalEvidenceTables, areAsWorkedOutByHand) {
  int tables = 0;
  for (const auto& entry : std::filesystem::directory_iterator(EVIDENCE_TABLES)) {
    std::ostringstream text;
    text << std::ifstream(entry.path()).rdbuf();
    const auto table = JSONCoders::decoder.decode<EvidenceTable>(text.str());
    ASSERT_TRUE(table) << entry.path() << ": " << table.error().text();
    const auto results = SignalEvidenceAnalyzer::analyze(table->sources, table->observations, table->labels,
                                                         table->minimumDays, table->minimumEffect);
    EXPECT_EQ(JSONCoders::encoder.encode(results).value_or(""),
              JSONCoders::encoder.encode(table->results).value_or(""))
        << entry.path();
    const auto pairs = SignalEvidenceAnalyzer::pairs(table->observations, table->minimumDays);
    EXPECT_EQ(JSONCoders::encoder.encode(pairs).value_or(""),
              JSONCoders::encoder.encode(table->pairs).value_or(""))
        << entry.path();
    tables += 1;
  }
  EXPECT_EQ(tables, 3);
}

}  // namespace
}  // namespace kestrel
