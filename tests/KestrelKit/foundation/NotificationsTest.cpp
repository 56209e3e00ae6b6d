#include <KestrelKit/foundation/Notifications.h>

#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace kestrel {
namespace {

TEST(Notifications, reachTheObserversOfTheirNameAndObject) {
  const NotificationObject object;
  const NotificationObject other;
  std::string heard;
  const auto first = Notifications::observe("change", object, [&] { heard += "1"; });
  const auto second = Notifications::observe("change", object, [&] { heard += "2"; });
  const auto ofAnotherName = Notifications::observe("end", object, [&] { heard += "e"; });
  const auto ofAnotherObject = Notifications::observe("change", other, [&] { heard += "o"; });
  Notifications::post("change", object);
  EXPECT_EQ(heard, "12");
  Notifications::post("change", other);
  EXPECT_EQ(heard, "12o");
  Notifications::post("end", object);
  EXPECT_EQ(heard, "12oe");
  Notifications::post("chang", object);
  Notifications::post("", object);
  EXPECT_EQ(heard, "12oe");
}

TEST(Notifications, keepTheNameThatWasObserved) {
  const NotificationObject object;
  int heard = 0;
  auto name = std::make_unique<std::string>("a name that its observer does not keep");
  const auto observation = Notifications::observe(*name, object, [&] { ++heard; });
  name.reset();
  Notifications::post("a name that its observer does not keep", object);
  EXPECT_EQ(heard, 1);
}

TEST(Notifications, endWithTheObservation) {
  const NotificationObject object;
  int heard = 0;
  {
    const auto observation = Notifications::observe("change", object, [&] { ++heard; });
    Notifications::post("change", object);
  }
  Notifications::post("change", object);
  EXPECT_EQ(heard, 1);
}

TEST(Notifications, anObserverMayRemoveItself) {
  const NotificationObject object;
  int heard = 0;
  NotificationObservation observation;
  observation = Notifications::observe("change", object, [&] {
    ++heard;
    observation.disconnect();
  });
  Notifications::post("change", object);
  Notifications::post("change", object);
  EXPECT_EQ(heard, 1);
}

TEST(Notifications, anObserverMayRemoveTheNextAndAddAnother) {
  const NotificationObject object;
  std::string heard;
  NotificationObservation second;
  std::optional<NotificationObservation> third;
  const auto first = Notifications::observe("change", object, [&] {
    heard += "1";
    second.disconnect();
    if (!third) {
      third.emplace(Notifications::observe("change", object, [&] { heard += "3"; }));
    }
  });
  second = Notifications::observe("change", object, [&] { heard += "2"; });
  Notifications::post("change", object);
  EXPECT_EQ(heard, "1");
  Notifications::post("change", object);
  EXPECT_EQ(heard, "113");
}

TEST(Notifications, anObserverMayPost) {
  const NotificationObject object;
  std::string heard;
  const auto first = Notifications::observe("change", object, [&] {
    heard += "c";
    Notifications::post("echo", object);
  });
  const auto second = Notifications::observe("echo", object, [&] { heard += "e"; });
  Notifications::post("change", object);
  EXPECT_EQ(heard, "ce");
}

TEST(Notifications, anObserverThatOutlivesItsObjectHearsOfNoOther) {
  // The next object stands where the first one stood.
  std::optional<NotificationObject> object;
  object.emplace();
  int heard = 0;
  const auto observation = Notifications::observe("change", *object, [&] { ++heard; });
  object.reset();
  object.emplace();
  Notifications::post("change", *object);
  EXPECT_EQ(heard, 0);
}

TEST(Notifications, areCalledOnTheThreadThatPosts) {
  const NotificationObject object;
  std::thread::id heardOn;
  const auto observation =
      Notifications::observe("change", object, [&] { heardOn = std::this_thread::get_id(); });
  std::thread::id poster;
  std::thread([&] {
    poster = std::this_thread::get_id();
    Notifications::post("change", object);
  }).join();
  EXPECT_EQ(heardOn, poster);
}

TEST(Notifications, mayComeAndGoOnManyThreads) {
  const NotificationObject object;
  std::atomic<int> heard = 0;
  const auto always = Notifications::observe("change", object, [&] { ++heard; });
  constexpr int threads = 4;
  constexpr int rounds = 500;
  {
    std::vector<std::jthread> posters;
    for (int thread = 0; thread < threads; ++thread) {
      posters.emplace_back([&] {
        for (int round = 0; round < rounds; ++round) {
          const auto heardHere = std::make_shared<std::atomic<int>>(0);
          const auto passing = Notifications::observe("change", object, [heardHere] { ++*heardHere; });
          Notifications::post("change", object);
          EXPECT_GE(*heardHere, 1);
        }
      });
    }
  }
  EXPECT_EQ(heard, threads * rounds);
}

}  // namespace
}  // namespace kestrel
