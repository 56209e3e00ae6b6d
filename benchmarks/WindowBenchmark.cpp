// Measures the window from within, once a run; benchmarks/window runs it and says what the figures are held to.
//
//   window_benchmark show    milliseconds from the start of the process to the first picture on the screen
//   window_benchmark scan    the longest gap between two ticks of the main thread during a scan of a year, and the
//                            scan, in milliseconds

#include <KestrelTrackerMac/DiskCaches.h>
#include <KestrelTrackerMac/MainWindow.h>
#include <KestrelTrackerMac/MessagesCompanionCoordinator.h>
#include <KestrelTrackerMac/MessagesDatabaseReader.h>

#include <QApplication>
#include <QObject>
#include <QQmlApplicationEngine>
#include <QQuickWindow>
#include <QTimer>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <ctime>
#include <fstream>
#include <memory>
#include <string>
#include <string_view>

#include <unistd.h>

using namespace kestrel::companion;
using namespace std::chrono_literals;

namespace {

using Milliseconds = std::chrono::duration<double, std::milli>;
using SteadyClock = std::chrono::steady_clock;

/// How long this process has been running, to a clock tick of the kernel (10 ms).
Milliseconds sinceStart() {
  static constexpr int startTimeField = 22;  // of proc(5), in clock ticks since the boot
  std::ifstream stat{"/proc/self/stat"};
  std::string field;
  for (int number = 1; number <= startTimeField; ++number) {
    stat >> field;
  }
  timespec now{};
  clock_gettime(CLOCK_BOOTTIME, &now);
  const double seconds = static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
  return Milliseconds{(seconds - std::stod(field) / static_cast<double>(sysconf(_SC_CLK_TCK))) * 1e3};
}

/// Calls back when the scan has ended, with the longest time for which the event loop did not come round.
class Ticks : public QObject {
 public:
  explicit Ticks(MessagesCompanionCoordinator& coordinator) : coordinator_(coordinator) {
    timer_.setTimerType(Qt::PreciseTimer);
    connect(&timer_, &QTimer::timeout, this, &Ticks::tick);
    connect(&coordinator_, &MessagesCompanionCoordinator::accessStateChanged, this, &Ticks::begin);
    connect(&coordinator_, &MessagesCompanionCoordinator::isScanningChanged, this, &Ticks::end);
  }

 private:
  void begin() {
    if (coordinator_.accessState() == MessagesCompanionCoordinator::AccessState::Ready && !timer_.isActive()) {
      // The first second paints the window; what is measured is a window that stands.
      QTimer::singleShot(1s, this, [this] {
        last_ = scanStart_ = SteadyClock::now();
        timer_.start(1ms);
        coordinator_.setSelectedDays(365);
        coordinator_.scan();
      });
    }
  }
  void tick() {
    const auto now = SteadyClock::now();
    longest_ = std::max(longest_, Milliseconds{now - last_});
    last_ = now;
  }
  void end() {
    if (!coordinator_.isScanning()) {
      const Milliseconds scan = SteadyClock::now() - scanStart_;
      // The views of the result are part of what a person waits for.
      QTimer::singleShot(200ms, this, [this, scan] {
        std::printf("%.1f %.1f\n", longest_.count(), scan.count());
        QApplication::exit(coordinator_.hasSummary() ? 0 : 1);
      });
    }
  }

  MessagesCompanionCoordinator& coordinator_;
  QTimer timer_;
  SteadyClock::time_point last_;
  SteadyClock::time_point scanStart_;
  Milliseconds longest_{};
};

}  // namespace

int main(int argc, char* argv[]) {
  const std::string_view what = argc == 2 ? argv[1] : "";
  if (what != "show" && what != "scan") {
    std::fputs("window_benchmark show|scan\n", stderr);
    return 2;
  }
  switchOffDiskCaches();
  QApplication application{argc, argv};
  MessagesCompanionCoordinator coordinator{std::make_unique<MessagesDatabaseReader>()};
  QQmlApplicationEngine engine;
  const std::unique_ptr<Ticks> ticks = what == "scan" ? std::make_unique<Ticks>(coordinator) : nullptr;
  QQuickWindow& window = loadMainWindow(engine, coordinator);
  if (what == "show") {
    QObject::connect(
        &window, &QQuickWindow::frameSwapped, &application,
        [] {
          std::printf("%.1f\n", sinceStart().count());
          QApplication::quit();
        },
        Qt::QueuedConnection);
  }
  return QApplication::exec();
}
