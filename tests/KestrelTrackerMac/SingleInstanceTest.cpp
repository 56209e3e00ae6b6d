#include <KestrelTrackerMac/SingleInstance.h>

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QEventLoop>
#include <QString>
#include <QTemporaryDir>
#include <QThread>

#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <chrono>
#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <sys/socket.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

namespace kestrel::companion {
namespace {

using namespace std::chrono_literals;

constexpr auto patience = 60s;  // on a slow and busy machine

/// A start on a thread stands in the place of one in a process of its own.
std::unique_ptr<QThread> inThread(const std::function<void()>& start) {
  std::unique_ptr<QThread> thread{QThread::create(start)};
  thread->start();
  return thread;
}

/// Every case has a runtime folder of its own, so that it meets no other process.
class SingleInstanceTest : public testing::Test {
 protected:
  void SetUp() override { qputenv("XDG_RUNTIME_DIR", runtime_.path().toUtf8()); }

  QString runtimeFolder() const { return runtime_.path(); }

  /// Starts the application once more, while this thread handles its events.
  static bool claimsElsewhere() {
    std::atomic<bool> done = false;
    bool claimed = false;
    const auto other = inThread([&] {
      SingleInstance instance;
      claimed = instance.claim(patience);
      done = true;
    });
    while (!done) {
      QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
    }
    other->wait();
    return claimed;
  }

 private:
  static inline int argumentCount = 1;
  static inline std::string programName = "test";
  static inline std::array<char*, 2> arguments{programName.data(), nullptr};

  QCoreApplication application_{argumentCount, arguments.data()};
  QTemporaryDir runtime_;
};

TEST_F(SingleInstanceTest, theFirstStartRuns) {
  SingleInstance first;
  EXPECT_TRUE(first.claim());
}

TEST_F(SingleInstanceTest, aSecondStartCallsTheFirstAndDoesNotRun) {
  SingleInstance first;
  ASSERT_TRUE(first.claim());
  int calls = 0;
  QObject::connect(&first, &SingleInstance::startedAgain, [&calls] { ++calls; });
  EXPECT_FALSE(claimsElsewhere());
  EXPECT_FALSE(claimsElsewhere());
  EXPECT_EQ(calls, 2);
}

TEST_F(SingleInstanceTest, aRuntimeFolderWithALongPathIsAsGood) {
  qputenv("XDG_RUNTIME_DIR", (runtimeFolder() + QStringLiteral("/x").repeated(60)).toUtf8());
  SingleInstance first;
  ASSERT_TRUE(first.claim());
  EXPECT_FALSE(claimsElsewhere());
}

TEST_F(SingleInstanceTest, theNameIsFreeWhenTheFirstHasEnded) {
  std::optional<SingleInstance> first{std::in_place};
  ASSERT_TRUE(first->claim());
  first.reset();
  EXPECT_TRUE(claimsElsewhere());
}

TEST_F(SingleInstanceTest, oneThatEndsWhileItIsAskedIsSucceeded) {
  std::optional<SingleInstance> first{std::in_place};
  ASSERT_TRUE(first->claim());
  bool claimed = false;
  const auto other = inThread([&claimed] {
    SingleInstance instance;
    claimed = instance.claim(patience);
  });
  first.reset();  // it has answered nobody
  other->wait();
  EXPECT_TRUE(claimed);
}

TEST_F(SingleInstanceTest, oneThatDoesNotAnswerFindsTheRequestLater) {
  SingleInstance first;
  ASSERT_TRUE(first.claim());
  bool claimed = true;
  inThread([&claimed] {
    SingleInstance instance;
    claimed = instance.claim(50ms);
  })->wait();
  EXPECT_FALSE(claimed);
  bool called = false;
  QObject::connect(&first, &SingleInstance::startedAgain, [&called] { called = true; });
  for (const QDeadlineTimer deadline{patience}; !called && !deadline.hasExpired();) {
    QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
  }
  EXPECT_TRUE(called);
}

TEST_F(SingleInstanceTest, ofSimultaneousStartsOneRuns) {
  constexpr int starts = 8;
  std::atomic<int> claimed = 0;
  std::atomic<int> ended = 0;
  std::vector<std::unique_ptr<QThread>> threads;
  for (int start = 0; start < starts; ++start) {
    threads.push_back(inThread([&] {
      SingleInstance instance;
      const bool runs = instance.claim(patience);
      claimed += runs ? 1 : 0;
      ++ended;
      QEventLoop events;
      while (runs && ended < starts) {
        events.processEvents(QEventLoop::AllEvents, 10);
      }
    }));
  }
  for (const auto& thread : threads) {
    thread->wait();
  }
  EXPECT_EQ(claimed, 1);
}

TEST_F(SingleInstanceTest, aNameThatAnotherUserSitsOnIsAsIfItDidNotExist) {
  if (geteuid() != 0) {
    GTEST_SKIP() << "only root can be two users";
  }
  constexpr uid_t nobody = 65534;
  const std::string name = (runtimeFolder() + QStringLiteral("/tidewell")).toStdString();
  std::array<int, 2> ready{};
  ASSERT_EQ(pipe(ready.data()), 0);
  const pid_t squatter = fork();
  if (squatter == 0) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    name.copy(&address.sun_path[1], sizeof address.sun_path - 1);
    const auto size = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + 1 + name.size());
    const int server = socket(AF_UNIX, SOCK_STREAM, 0);
    const bool sits = setuid(nobody) == 0 && bind(server, reinterpret_cast<sockaddr*>(&address), size) == 0 &&
                      listen(server, 8) == 0;
    const ssize_t written = write(ready[1], sits ? "1" : "0", 1);
    pause();
    _exit(written == 1 ? 0 : 1);
  }
  char sits = '0';
  EXPECT_EQ(read(ready[0], &sits, 1), 1);
  EXPECT_EQ(sits, '1');

  SingleInstance first;
  EXPECT_TRUE(first.claim(patience));

  kill(squatter, SIGKILL);
  waitpid(squatter, nullptr, 0);
  close(ready[0]);
  close(ready[1]);
}

}  // namespace
}  // namespace kestrel::companion
