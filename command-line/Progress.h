#pragma once

#include <condition_variable>
#include <mutex>
#include <thread>

namespace kestrel {

/// Says on standard error that a program is at work and for how long, while it lives: first after a second,
/// then every second, in one line that it wipes at its end. Only where standard error is a terminal.
class Progress {
 public:
  Progress();
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;
  ~Progress();

 private:
  void tell();

  std::mutex mutex_;
  std::condition_variable ended_;
  bool isEnded_ = false;
  std::thread teller_;
};

}  // namespace kestrel
