#include <KestrelKit/foundation/MemoryDefaults.h>
#include <KestrelKit/foundation/SharedDefaults.h>
#include <KestrelKit/foundation/SqliteDefaults.h>
#include <support/TemporaryFolder.h>

#include <gtest/gtest.h>
#include <rapidcheck.h>

#include <cmath>
#include <functional>
#include <limits>
#include <map>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace kestrel {
namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();

/// Both kinds of shared defaults keep the same promises.
class SharedDefaultsTest : public ::testing::TestWithParam<const char*> {
 protected:
  std::shared_ptr<SharedDefaults> made() {
    if (GetParam() == std::string("Memory")) {
      return std::make_shared<MemoryDefaults>();
    }
    return SqliteDefaults::open(folder_ / "suite.sqlite").value();
  }

 private:
  testing::TemporaryFolder folder_;
};

INSTANTIATE_TEST_SUITE_P(Each, SharedDefaultsTest, ::testing::Values("Memory", "Sqlite"),
                         [](const auto& row) { return row.param; });

bool set(SharedDefaults& defaults, std::string_view key, std::optional<PropertyValue> value) {
  const SharedDefaults::Change changes[] = {{key, std::move(value)}};
  return defaults.write(changes);
}

TEST_P(SharedDefaultsTest, haveNothingAtFirst) {
  const auto defaults = made();
  EXPECT_EQ(defaults->value("key"), std::nullopt);
  EXPECT_EQ(defaults->get<std::string>("key"), std::nullopt);
}

TEST_P(SharedDefaultsTest, keepEachKindOfValueAsItWas) {
  const auto defaults = made();
  const std::pair<const char*, PropertyValue> rows[] = {
      {"text", "Mania"},
      {"empty text", ""},
      {"text with a zero", std::string("a\0b", 3)},
      {"text outside ASCII", "Nähe 🌊"},
      {"text of digits", "42"},
      {"bytes as text", "\xff\xfe"},
      {"date", instantSinceReferenceDate(736'000'000.123456)},
      {"date without a fraction", instantSinceReferenceDate(5)},
      {"reference date", instantSinceReferenceDate(0)},
      {"date before it", instantSinceReferenceDate(-1.5)},
      {"largest date", instantSinceReferenceDate(std::numeric_limits<double>::max())},
      {"smallest date", instantSinceReferenceDate(std::numeric_limits<double>::denorm_min())},
      {"distant future", instantSinceReferenceDate(infinity)},
      {"distant past", instantSinceReferenceDate(-infinity)},
      {"data", Data{"{\"a\":1}"}},
      {"empty data", Data{""}},
      {"data with every byte", Data{[] {
         std::string bytes;
         for (int byte = 0; byte < 256; ++byte) {
           bytes += static_cast<char>(byte);
         }
         return bytes;
       }()}},
      {"a megabyte", Data{std::string(1U << 20U, 'x')}},
  };
  for (const auto& [key, value] : rows) {
    EXPECT_TRUE(set(*defaults, key, value)) << key;
  }
  for (const auto& [key, value] : rows) {
    EXPECT_EQ(defaults->value(key), value) << key;
  }
}

TEST_P(SharedDefaultsTest, keepADateThatIsNegativeZeroAsZero) {
  const auto defaults = made();
  ASSERT_TRUE(set(*defaults, "date", instantSinceReferenceDate(-0.0)));
  const auto date = defaults->get<Instant>("date");
  ASSERT_TRUE(date);
  EXPECT_EQ(secondsSinceReferenceDate(*date), 0);
}

TEST_P(SharedDefaultsTest, refuseADateThatIsNotANumberAndWhatIsWrittenWithIt) {
  const auto defaults = made();
  ASSERT_TRUE(set(*defaults, "date", instantSinceReferenceDate(1)));
  const SharedDefaults::Change changes[] = {
      {"text", "new"}, {"date", instantSinceReferenceDate(std::nan(""))}, {"more", "new"}};
  EXPECT_FALSE(defaults->write(changes));
  EXPECT_EQ(defaults->value("text"), std::nullopt);
  EXPECT_EQ(defaults->get<Instant>("date"), instantSinceReferenceDate(1));
  EXPECT_EQ(defaults->value("more"), std::nullopt);
  EXPECT_FALSE(defaults->update("date", [](const auto&) { return instantSinceReferenceDate(std::nan("")); }));
  EXPECT_EQ(defaults->get<Instant>("date"), instantSinceReferenceDate(1));
}

TEST_P(SharedDefaultsTest, giveAValueOnlyAsWhatItIs) {
  const auto defaults = made();
  const SharedDefaults::Change changes[] = {
      {"text", "1"}, {"date", instantSinceReferenceDate(1)}, {"data", Data{"1"}}};
  ASSERT_TRUE(defaults->write(changes));
  EXPECT_EQ(defaults->get<std::string>("text"), "1");
  EXPECT_EQ(defaults->get<Instant>("text"), std::nullopt);
  EXPECT_EQ(defaults->get<Data>("text"), std::nullopt);
  EXPECT_EQ(defaults->get<std::string>("date"), std::nullopt);
  EXPECT_EQ(defaults->get<Instant>("date"), instantSinceReferenceDate(1));
  EXPECT_EQ(defaults->get<Data>("date"), std::nullopt);
  EXPECT_EQ(defaults->get<std::string>("data"), std::nullopt);
  EXPECT_EQ(defaults->get<Instant>("data"), std::nullopt);
  EXPECT_EQ(defaults->get<Data>("data"), Data{"1"});
}

TEST_P(SharedDefaultsTest, replaceAValueByOneOfAnotherKind) {
  const auto defaults = made();
  for (const PropertyValue& value : {PropertyValue("text"), PropertyValue(Data{"data"}),
                                     PropertyValue(instantSinceReferenceDate(7)), PropertyValue("again")}) {
    ASSERT_TRUE(set(*defaults, "key", value));
    EXPECT_EQ(defaults->value("key"), value);
  }
}

TEST_P(SharedDefaultsTest, tellKeysApartByTheirBytes) {
  const auto defaults = made();
  const std::string keys[] = {"key", "Key", "key ", "", std::string("key\0", 4), "k%", "k_y", "ключ"};
  for (const std::string& key : keys) {
    ASSERT_TRUE(set(*defaults, key, "of " + key));
  }
  for (const std::string& key : keys) {
    EXPECT_EQ(defaults->value(key), PropertyValue("of " + key));
  }
}

TEST_P(SharedDefaultsTest, removeAKeyAndOnlyThat) {
  const auto defaults = made();
  EXPECT_TRUE(set(*defaults, "absent", std::nullopt));
  const SharedDefaults::Change both[] = {{"one", "1"}, {"two", "2"}};
  ASSERT_TRUE(defaults->write(both));
  EXPECT_TRUE(set(*defaults, "one", std::nullopt));
  EXPECT_EQ(defaults->value("one"), std::nullopt);
  EXPECT_EQ(defaults->value("two"), PropertyValue("2"));
  EXPECT_TRUE(set(*defaults, "one", std::nullopt));
}

TEST_P(SharedDefaultsTest, makeNoChangeWhereNoneIsGiven) { EXPECT_TRUE(made()->write({})); }

TEST_P(SharedDefaultsTest, updateAKeyByWhatItHas) {
  const auto defaults = made();
  const auto append = [](const std::optional<PropertyValue>& stored) {
    return PropertyValue(stored ? std::get<std::string>(*stored) + "x" : "first");
  };
  EXPECT_TRUE(defaults->update("key", append));
  EXPECT_TRUE(defaults->update("key", append));
  EXPECT_EQ(defaults->value("key"), PropertyValue("firstx"));
}

TEST_P(SharedDefaultsTest, leaveAKeyAsItIsWhereAnUpdateGivesNothing) {
  const auto defaults = made();
  ASSERT_TRUE(set(*defaults, "key", "value"));
  int asked = 0;
  const auto look = [&](const auto&) -> std::optional<PropertyValue> {
    ++asked;
    return std::nullopt;
  };
  EXPECT_TRUE(defaults->update("key", look));
  EXPECT_TRUE(defaults->update("absent", look));
  EXPECT_EQ(asked, 2);
  EXPECT_EQ(defaults->value("key"), PropertyValue("value"));
  EXPECT_EQ(defaults->value("absent"), std::nullopt);
}

TEST_P(SharedDefaultsTest, goOnAfterAnUpdateThatThrows) {
  const auto defaults = made();
  ASSERT_TRUE(set(*defaults, "key", "value"));
  EXPECT_THROW(defaults->update("key",
                                [](const auto&) -> std::optional<PropertyValue> {
                                  throw std::runtime_error("a change of mind");
                                }),
               std::runtime_error);
  EXPECT_EQ(defaults->value("key"), PropertyValue("value"));
  EXPECT_TRUE(set(*defaults, "key", "next"));
  EXPECT_EQ(defaults->value("key"), PropertyValue("next"));
}

/// A value of any kind that is made from `text`; absent for some.
std::optional<PropertyValue> valueFrom(unsigned char choice, const std::string& text) {
  switch (choice % 4) {
    case 0:
      return std::nullopt;
    case 1:
      return text;
    case 2:
      return Data{text};
    default:
      return instantSinceReferenceDate(static_cast<double>(text.size()) / 3);
  }
}

TEST_P(SharedDefaultsTest, areAMapFromKeysToValuesThatManyChangesAtATimeChangeInOrder) {
  const auto defaults = made();
  std::map<std::string, PropertyValue> model;
  int number = 0;
  rc::check([&](const std::vector<std::pair<unsigned char, std::string>>& steps) {
    if (GetParam() == std::string("Sqlite") && ++number % 20 != 0) {
      return;  // Each write there is flushed to the disk.
    }
    std::vector<std::string> keys;  // Few, so that one comes again.
    for (const auto& [choice, text] : steps) {
      keys.push_back(text.substr(0, 1));
    }
    std::vector<SharedDefaults::Change> changes;
    for (std::size_t step = 0; step < steps.size(); ++step) {
      const auto value = valueFrom(steps[step].first, steps[step].second);
      changes.push_back({keys[step], value});
      value ? void(model.insert_or_assign(keys[step], *value)) : void(model.erase(keys[step]));
    }
    RC_ASSERT(defaults->write(changes));
    for (const std::string& key : keys) {
      const auto expected = model.find(key);
      RC_ASSERT(defaults->value(key) ==
                (expected == model.end() ? std::nullopt : std::optional(expected->second)));
    }
  });
  for (const auto& [key, value] : model) {
    EXPECT_EQ(defaults->value(key), value);
  }
}

TEST(StandardDefaults, areOneOfAProcess) {
  const SharedDefaults::Change changes[] = {{"StandardDefaults", "kept"}};
  ASSERT_TRUE(SharedDefaults::standard()->write(changes));
  EXPECT_EQ(SharedDefaults::standard()->get<std::string>("StandardDefaults"), "kept");
}

}  // namespace
}  // namespace kestrel
