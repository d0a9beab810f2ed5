#pragma once

#include <condition_variable>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <utility>

#include "tests/OxMacAddressBookSDK/fixtures.hpp"

namespace ox::test {

// Records the reports of load and save workers and waits for a finished one. What the callbacks
// write to lives as long as they do.
class Reports {
 public:
  ProgressCallback loadCallback() {
    return [state = state_](double value, bool finished) {
      note(*state, support::shortest(value), finished, nullptr);
    };
  }

  SaveCallback saveCallback() {
    return [state = state_](bool finished, const Data& data, double value) {
      note(*state, support::shortest(value) + (data ? " data" : ""), finished, data);
    };
  }

  // The reports since the last call, once a finished one is among them; the data is that one's.
  std::string wait() {
    std::unique_lock lock(state_->mutex);
    state_->changed.wait(lock, [this] { return state_->finished; });
    state_->finished = false;
    return std::exchange(state_->text, {});
  }

  std::string text() const {
    const std::lock_guard lock(state_->mutex);
    return state_->text;
  }
  Data data() const {
    const std::lock_guard lock(state_->mutex);
    return state_->data;
  }
  std::thread::id worker() const {
    const std::lock_guard lock(state_->mutex);
    return state_->worker;
  }

 private:
  struct State {
    std::mutex mutex;
    std::condition_variable changed;
    std::string text;
    bool finished = false;
    Data data;
    std::thread::id worker;
  };

  static void note(State& state, const std::string& report, bool finished, const Data& data) {
    const std::lock_guard lock(state.mutex);
    state.worker = std::this_thread::get_id();
    state.text += (state.text.empty() ? "" : " ") + report + (finished ? "!" : "");
    if (data) state.data = data;
    state.finished = state.finished || finished;
    state.changed.notify_all();
  }

  std::shared_ptr<State> state_ = std::make_shared<State>();
};

inline Data savedData(const std::shared_ptr<OxMacAddressBook>& book) {
  Reports run;
  book->saveDataBlock(run.saveCallback());
  run.wait();
  return run.data();
}

inline std::string loaded(const std::shared_ptr<OxMacAddressBook>& book, const Data& data) {
  Reports run;
  book->loadWithData_progressBlock(data, run.loadCallback());
  return run.wait();
}

}  // namespace ox::test
